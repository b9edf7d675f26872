#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Base of draggers that move.
class KALMYR_VISIBLE SoTranslateDragger : public SoMotionDragger {
    SO_KIT_HEADER(SoTranslateDragger)

public:
    static void initClass();

    SoSFVec3f translation;
    SoSFVec3f minTranslation; ///< 0 0 0; holds where it is not above the other
    SoSFVec3f maxTranslation; ///< -1 -1 -1

protected:
    SoTranslateDragger();
    ~SoTranslateDragger() override;
    bool isRound() const override { return true; }
};
