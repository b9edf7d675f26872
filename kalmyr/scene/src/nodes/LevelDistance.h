#pragma once

#include <kalmyr/base/SbVec.h>

class SoState;

namespace kalmyr::detail {

/// How far the eye is from a point, both in object space, in which the ranges of levels of detail
/// are given; in the world where the model matrix has no inverse.
float eyeDistance(SoState* state, const SbVec3f& point);

} // namespace kalmyr::detail
