#pragma once

#include <kalmyr/base/SbPlane.h>
#include <kalmyr/draggers/SoDragger.h>

/// Moves across the line of sight; with Shift it turns about its centre, with Ctrl it grows and
/// shrinks.
class KALMYR_VISIBLE SoTransformDragger final : public SoDragger {
    SO_KIT_HEADER(SoTransformDragger)

public:
    SoTransformDragger();
    static void initClass();

    SoSFVec3f translation;
    SoSFRotation rotation;
    SoSFVec3f scaleFactor;

    SbMatrix getMotionMatrix() const override;

protected:
    ~SoTransformDragger() override;
    void begin(const SbVec3f& hit, const Pointer& pointer) override;
    void follow(const Pointer& pointer) override;

private:
    SbVec3f m_hit;
    SbPlane m_plane; ///< across the line of sight, through the point where it was taken
    SbVec3f m_moved;
    SbRotation m_turned;
    SbVec3f m_scaled;
};
