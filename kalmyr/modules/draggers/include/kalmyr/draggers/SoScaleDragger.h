#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Base of draggers that scale.
class KALMYR_VISIBLE SoScaleDragger : public SoMotionDragger {
    SO_KIT_HEADER(SoScaleDragger)

public:
    static void initClass();

    SoSFVec3f scaleFactor;
    SoSFFloat minScaleFactor; ///< 0.001
    SoSFFloat maxScaleFactor; ///< 0; below the other: none

protected:
    SoScaleDragger();
    ~SoScaleDragger() override;

    /// Adds the edges of the box from -1 to 1 with knobs at its corners that scale evenly.
    void addBox();
};
