#pragma once

#include <kalmyr/animation/SoAnimated.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoRotation.h>

/// A rotation that swings to and fro between two, in real time. `speed` counts swings, there and
/// back, a second.
class KALMYR_VISIBLE SoPendulum final : public kalmyr::detail::Animated<SoRotation> {
    SO_NODE_HEADER(SoPendulum)

public:
    SoPendulum();
    static void initClass();

    SoSFRotation rotation0; ///< where a swing begins
    SoSFRotation rotation1; ///< and where it turns back

protected:
    ~SoPendulum() override;

private:
    void advance(double seconds) override;

    double m_phase = 0; ///< in swings
};
