#pragma once

#include <kalmyr/animation/SoClockwork.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoRotation.h>

/// A rotation that goes round and round about its own axis, in real time.
///
/// Turns on from whatever `rotation` is set to; a rotation by nothing turns about the last axis,
/// at first z.
class KALMYR_VISIBLE SoRotor final : public SoRotation {
    SO_NODE_HEADER(SoRotor)

public:
    SoRotor();
    static void initClass();

    SoSFFloat speed; ///< turns a second; negative ones run backwards
    SoSFBool on;     ///< TRUE; while FALSE the rotation stands still

    /// One that stands still at its defaults, unless it is made a copy.
    SoFieldContainer* createTwin() const override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoRotor() override;

private:
    void advance(double seconds);

    SbVec3f m_axis{0, 0, 1};
    kalmyr::detail::Clockwork m_clockwork;
};
