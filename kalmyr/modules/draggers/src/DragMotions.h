#pragma once

#include <kalmyr/base/SbLine.h>
#include <kalmyr/base/SbPlane.h>
#include <kalmyr/base/SbRotation.h>

namespace kalmyr::detail {

/// How far a point that was taken at `from` has been moved in a plane; nothing for a line of sight
/// along the plane.
SbVec3f moveInPlane(const SbPlane& plane, const SbVec3f& from, const SbLine& line);

/// How far a ball has been turned that was taken at `from`. Beside the ball its nearest point
/// counts.
SbRotation turnBall(const SbVec3f& center, const SbVec3f& from, const SbLine& line);

/// By what a thing has been scaled about its centre that was taken at `from`; never below
/// kSmallestScale.
inline constexpr float kSmallestScale = 0.001f;
float scaleAbout(const SbVec3f& center, const SbPlane& plane, const SbVec3f& from,
                 const SbLine& line);

} // namespace kalmyr::detail
