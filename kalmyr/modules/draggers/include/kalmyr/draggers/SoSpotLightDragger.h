#pragma once

#include <kalmyr/draggers/SoPlacedDragger.h>

/// Moves a spot light across the line of sight by the ball, turns its direction by the arrow, and
/// opens its cone by the rim. Shift keeps the ball to an axis, and takes the axis nearest to the
/// direction, or whole steps of 5 degrees for the cone.
class KALMYR_VISIBLE SoSpotLightDragger final : public SoPlacedDragger {
    SO_KIT_HEADER(SoSpotLightDragger)

public:
    SoSpotLightDragger();
    static void initClass();

    SoSFVec3f location;    ///< 0 0 1
    SoSFVec3f direction;   ///< 0 0 -1
    SoSFFloat cutOffAngle; ///< pi / 4; from 0.01 to pi / 2

protected:
    ~SoSpotLightDragger() override;
    void begin(const SoDragHandle& handle, const SoDragPointer& pointer) override;
    SbMatrix getHandleSpace(const SoDragHandle& handle) const override;
    SbVec3f getPlace() const override { return location.getValue(); }
    void setPlace(const SbVec3f& place) override { put(location, place); }
    SbVec3f getDirection() const override { return direction.getValue(); }
    void setDirection(const SbVec3f& value) override { put(direction, value); }
    void followOther(const SoDragHandle& handle, const SoDragPointer& pointer) override;

private:
    float m_angle = 0; ///< of the cone when it was taken
};
