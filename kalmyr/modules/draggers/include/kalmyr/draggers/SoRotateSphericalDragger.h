#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Turns any way as a ball under the hand, and about its own axes by the rings. Shift turns the
/// ball about the axis that the turn is nearest to, and the rings in steps of 15 degrees.
class KALMYR_VISIBLE SoRotateSphericalDragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoRotateSphericalDragger)

public:
    SoRotateSphericalDragger();
    static void initClass();

    SoSFRotation rotation;

protected:
    ~SoRotateSphericalDragger() override;
    bool isRound() const override { return true; }
};
