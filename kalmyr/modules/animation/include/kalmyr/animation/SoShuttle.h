#pragma once

#include <kalmyr/animation/SoAnimated.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoTranslation.h>

/// A translation that goes to and fro between two, in real time. `speed` counts trips, there and
/// back, a second.
class KALMYR_VISIBLE SoShuttle final : public kalmyr::detail::Animated<SoTranslation> {
    SO_NODE_HEADER(SoShuttle)

public:
    SoShuttle();
    static void initClass();

    SoSFVec3f translation0; ///< where a trip begins
    SoSFVec3f translation1; ///< and where it turns back

protected:
    ~SoShuttle() override;

private:
    void advance(double seconds) override;

    double m_phase = 0; ///< in trips
};
