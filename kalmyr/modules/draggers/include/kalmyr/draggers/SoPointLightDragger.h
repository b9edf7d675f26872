#pragma once

#include <kalmyr/draggers/SoPlacedDragger.h>

/// Moves a point light: across the line of sight by the ball, along the axes by the arrows. Shift
/// keeps the ball to the axis in which the pointer has gone furthest.
class KALMYR_VISIBLE SoPointLightDragger final : public SoPlacedDragger {
    SO_KIT_HEADER(SoPointLightDragger)

public:
    SoPointLightDragger();
    static void initClass();

    SoSFVec3f location; ///< 0 0 1

protected:
    ~SoPointLightDragger() override;
    SbVec3f getPlace() const override { return location.getValue(); }
    void setPlace(const SbVec3f& place) override { put(location, place); }
};
