#pragma once

#include <kalmyr/draggers/SoMotionDragger.h>

/// Moves, turns and scales as a transform with the same fields does, by a box with handles.
///
/// The faces move in their planes; with Shift along one of their sides, with Ctrl towards their
/// normals. The edges, and the balls on them, turn about the axis that runs as they do; with Shift
/// in steps of 15 degrees. The corners scale evenly about the centre; with Ctrl about the opposite
/// corner, with Shift along one axis only.
class KALMYR_VISIBLE SoTransformDragger final : public SoMotionDragger {
    SO_KIT_HEADER(SoTransformDragger)

public:
    SoTransformDragger();
    static void initClass();

    SoSFVec3f translation;
    SoSFVec3f minTranslation; ///< 0 0 0; holds where it is not above the other
    SoSFVec3f maxTranslation; ///< -1 -1 -1
    SoSFRotation rotation;
    SoSFVec3f scaleFactor;
    SoSFFloat minScaleFactor;      ///< 0.001
    SoSFFloat maxScaleFactor;      ///< 0; below the other: none
    SoSFRotation scaleOrientation; ///< axes of the scale, as of a transform
    SoSFVec3f center;              ///< what turning and scaling leave where it is

protected:
    ~SoTransformDragger() override;
};
