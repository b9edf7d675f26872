#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Scales along its own x axis.
class KALMYR_VISIBLE SoScale1Dragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoScale1Dragger)

public:
    SoScale1Dragger();
    static void initClass();

    SoSFVec3f scaleFactor;
    SoSFFloat minScaleFactor; ///< 0.001
    SoSFFloat maxScaleFactor; ///< 0; below the other: none

protected:
    ~SoScale1Dragger() override;
};
