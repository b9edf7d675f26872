#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Turns about its own y axis, taken at the side of a cylinder. Shift turns in steps of 15 degrees.
class KALMYR_VISIBLE SoRotateCylindricalDragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoRotateCylindricalDragger)

public:
    SoRotateCylindricalDragger();
    static void initClass();

    SoSFRotation rotation;
    SoSFFloat minAngle; ///< 0; of the rotation about the axis, unless it is above the other
    SoSFFloat maxAngle; ///< -1

protected:
    ~SoRotateCylindricalDragger() override;
    bool isRound() const override { return true; }
};
