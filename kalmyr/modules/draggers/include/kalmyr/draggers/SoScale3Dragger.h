#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Scales evenly by the corners, along one axis by the arms. Shift keeps a corner to that one of
/// the axes in which the pointer has gone furthest.
class KALMYR_VISIBLE SoScale3Dragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoScale3Dragger)

public:
    SoScale3Dragger();
    static void initClass();

    SoSFVec3f scaleFactor;
    SoSFFloat minScaleFactor; ///< 0.001
    SoSFFloat maxScaleFactor; ///< 0; below the other: none

protected:
    ~SoScale3Dragger() override;
};
