#pragma once

#include <kalmyr/animation/SoAnimated.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoSwitch.h>

/// A switch that goes through its children in real time. A single child is shown and hidden.
/// `speed` counts rounds a second; negative ones run backwards.
class KALMYR_VISIBLE SoBlinker final : public kalmyr::detail::Animated<SoSwitch> {
    SO_NODE_HEADER(SoBlinker)

public:
    SoBlinker();
    static void initClass();

protected:
    ~SoBlinker() override;

private:
    void advance(double seconds) override;

    double m_phase = 0; ///< in rounds
};
