#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Scales along its own x and y axes: both by the corners, one by the sides. Shift keeps a corner
/// to that one of the axes in which the pointer has gone further.
class KALMYR_VISIBLE SoScale2Dragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoScale2Dragger)

public:
    SoScale2Dragger();
    static void initClass();

    SoSFVec3f scaleFactor;
    SoSFFloat minScaleFactor; ///< 0.001
    SoSFFloat maxScaleFactor; ///< 0; below the other: none

protected:
    ~SoScale2Dragger() override;
};
