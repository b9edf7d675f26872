#pragma once

#include <kalmyr/draggers/SoPlacedDragger.h>

/// Turns the direction of a light by the arrow; Shift takes the axis that it is nearest to. The
/// ball moves the dragger itself, which no such light has a place for.
class KALMYR_VISIBLE SoDirectionalLightDragger final : public SoPlacedDragger {
    SO_KIT_HEADER(SoDirectionalLightDragger)

public:
    SoDirectionalLightDragger();
    static void initClass();

    SoSFVec3f direction; ///< 0 0 -1
    SoSFVec3f location;  ///< where the dragger stands

protected:
    ~SoDirectionalLightDragger() override;
    SbVec3f getPlace() const override { return location.getValue(); }
    void setPlace(const SbVec3f& place) override { put(location, place); }
    SbVec3f getDirection() const override { return direction.getValue(); }
    void setDirection(const SbVec3f& value) override { put(direction, value); }
};
