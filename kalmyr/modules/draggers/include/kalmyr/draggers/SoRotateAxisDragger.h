#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Base of draggers that turn about one axis.
class KALMYR_VISIBLE SoRotateAxisDragger : public SoMotionDragger {
    SO_KIT_HEADER(SoRotateAxisDragger)

public:
    static void initClass();

    SoSFRotation rotation;
    SoSFFloat minAngle; ///< 0; of the rotation about the axis, unless it is above the other
    SoSFFloat maxAngle; ///< -1

protected:
    SoRotateAxisDragger();
    ~SoRotateAxisDragger() override;
    bool isRound() const override { return true; }
};
