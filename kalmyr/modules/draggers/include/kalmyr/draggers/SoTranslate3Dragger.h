#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Moves along its axes by the arrows, in its planes by the plates between them, and across the
/// line of sight by the ball in the middle. Shift keeps a plate or the ball to one axis.
class KALMYR_VISIBLE SoTranslate3Dragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoTranslate3Dragger)

public:
    SoTranslate3Dragger();
    static void initClass();

    SoSFVec3f translation;
    SoSFVec3f minTranslation; ///< 0 0 0; holds where it is not above the other
    SoSFVec3f maxTranslation; ///< -1 -1 -1

protected:
    ~SoTranslate3Dragger() override;
    bool isRound() const override { return true; }
};
