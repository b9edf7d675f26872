#pragma once

#include <kalmyr/animation/SoClockwork.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/nodes/SoTranslation.h>

/// A translation that goes to and fro between two, in real time.
class KALMYR_VISIBLE SoShuttle final : public SoTranslation {
    SO_NODE_HEADER(SoShuttle)

public:
    SoShuttle();
    static void initClass();

    SoSFVec3f translation0; ///< where a trip begins
    SoSFVec3f translation1; ///< and where it turns back
    SoSFFloat speed;        ///< trips, there and back, a second
    SoSFBool on;            ///< TRUE; while FALSE the translation stands still

    /// One that stands still at its defaults, unless it is made a copy.
    SoFieldContainer* createTwin() const override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoShuttle() override;

private:
    void advance(double seconds);

    double m_phase = 0; ///< in trips
    kalmyr::detail::Clockwork m_clockwork;
};
