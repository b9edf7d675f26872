#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Scales evenly.
class KALMYR_VISIBLE SoScaleUniformDragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoScaleUniformDragger)

public:
    SoScaleUniformDragger();
    static void initClass();

    SoSFVec3f scaleFactor;
    SoSFFloat minScaleFactor; ///< 0.001
    SoSFFloat maxScaleFactor; ///< 0; below the other: none

protected:
    ~SoScaleUniformDragger() override;
};
