#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Moves along its own x axis.
class KALMYR_VISIBLE SoTranslate1Dragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoTranslate1Dragger)

public:
    SoTranslate1Dragger();
    static void initClass();

    SoSFVec3f translation;
    SoSFVec3f minTranslation; ///< 0 0 0; holds where it is not above the other
    SoSFVec3f maxTranslation; ///< -1 -1 -1

protected:
    ~SoTranslate1Dragger() override;
    bool isRound() const override { return true; }
};
