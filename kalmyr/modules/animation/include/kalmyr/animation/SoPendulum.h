#pragma once

#include <kalmyr/animation/SoClockwork.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoRotation.h>

/// A rotation that swings to and fro between two, in real time.
class KALMYR_VISIBLE SoPendulum final : public SoRotation {
    SO_NODE_HEADER(SoPendulum)

public:
    SoPendulum();
    static void initClass();

    SoSFRotation rotation0; ///< where a swing begins
    SoSFRotation rotation1; ///< and where it turns back
    SoSFFloat speed;        ///< swings, there and back, a second
    SoSFBool on;            ///< TRUE; while FALSE the rotation stands still

    /// One that stands still at its defaults, unless it is made a copy.
    SoFieldContainer* createTwin() const override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoPendulum() override;

private:
    void advance(double seconds);

    double m_phase = 0; ///< in swings
    kalmyr::detail::Clockwork m_clockwork;
};
