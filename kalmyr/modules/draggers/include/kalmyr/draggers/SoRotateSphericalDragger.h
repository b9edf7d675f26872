#pragma once

#include <kalmyr/draggers/SoDragger.h>

/// Turns about its centre, as a ball under the hand.
class KALMYR_VISIBLE SoRotateSphericalDragger final : public SoDragger {
    SO_KIT_HEADER(SoRotateSphericalDragger)

public:
    SoRotateSphericalDragger();
    static void initClass();

    SoSFRotation rotation;

    SbMatrix getMotionMatrix() const override;

protected:
    ~SoRotateSphericalDragger() override;
    void begin(const SbVec3f& hit, const Pointer& pointer) override;
    void follow(const Pointer& pointer) override;

private:
    SbVec3f m_hit;
    SbRotation m_before;
};
