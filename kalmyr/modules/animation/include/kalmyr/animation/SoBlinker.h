#pragma once

#include <kalmyr/animation/SoClockwork.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoSwitch.h>

/// A switch that goes through its children in real time. A single child is shown and hidden.
class KALMYR_VISIBLE SoBlinker final : public SoSwitch {
    SO_NODE_HEADER(SoBlinker)

public:
    SoBlinker();
    static void initClass();

    SoSFFloat speed; ///< rounds a second; negative ones run backwards
    SoSFBool on;     ///< TRUE; while FALSE the switch stands still

    /// One that stands still at its defaults, unless it is made a copy.
    SoFieldContainer* createTwin() const override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoBlinker() override;

private:
    void advance(double seconds);

    double m_phase = 0; ///< in rounds
    kalmyr::detail::Clockwork m_clockwork;
};
