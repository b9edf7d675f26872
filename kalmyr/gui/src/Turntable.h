#pragma once

#include <kalmyr/base/SbRotation.h>
#include <kalmyr/base/SbVec.h>

// How a camera turns on a turntable.

/// Turns about `up`, and about the camera's axis to the right, in radians. Does not go on over a
/// pole, where the camera looks straight down or up.
SbRotation turnedOnTable(const SbRotation& orientation, const SbVec3f& up, float aroundUp,
                         float aroundRight);

/// The orientation with the same direction of view and a level horizon. Looking straight up or down
/// all are level.
SbRotation levelled(const SbRotation& orientation, const SbVec3f& up);
