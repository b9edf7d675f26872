#pragma once

#include <kalmyr/animation/SoAnimated.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoRotation.h>

/// A rotation that goes round and round about its own axis, in real time.
///
/// Turns on from whatever `rotation` is set to; a rotation by nothing turns about the last axis,
/// at first z. `speed` counts turns a second; negative ones run backwards.
class KALMYR_VISIBLE SoRotor final : public kalmyr::detail::Animated<SoRotation> {
    SO_NODE_HEADER(SoRotor)

public:
    SoRotor();
    static void initClass();

protected:
    ~SoRotor() override;

private:
    void advance(double seconds) override;

    SbVec3f m_axis{0, 0, 1};
};
