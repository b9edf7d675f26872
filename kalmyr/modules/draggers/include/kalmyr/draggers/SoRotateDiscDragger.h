#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Turns about its own z axis, taken at the rim of a disc. Shift turns in steps of 15 degrees.
class KALMYR_VISIBLE SoRotateDiscDragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoRotateDiscDragger)

public:
    SoRotateDiscDragger();
    static void initClass();

    SoSFRotation rotation;
    SoSFFloat minAngle; ///< 0; of the rotation about the axis, unless it is above the other
    SoSFFloat maxAngle; ///< -1

protected:
    ~SoRotateDiscDragger() override;
    bool isRound() const override { return true; }
};
