#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Moves in its own xy plane by the plate, along x or y by the arrows. Shift keeps the plate to
/// that one of the two axes in which the pointer has gone further.
class KALMYR_VISIBLE SoTranslate2Dragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoTranslate2Dragger)

public:
    SoTranslate2Dragger();
    static void initClass();

    SoSFVec3f translation;
    SoSFVec3f minTranslation; ///< 0 0 0; holds where it is not above the other
    SoSFVec3f maxTranslation; ///< -1 -1 -1

protected:
    ~SoTranslate2Dragger() override;
    bool isRound() const override { return true; }
};
