#include "Turntable.h"

#include <kalmyr/base/SbMatrix.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr float kQuarterTurn = 1.5707963f;
constexpr float kLeast = 1e-4f; // length of what says which way is level

} // namespace

SbRotation turnedOnTable(const SbRotation& orientation, const SbVec3f& up, float aroundUp,
                         float aroundRight)
{
    const SbVec3f seen = orientation.inverse().rotated(up);
    // Above the horizon the eye looks down: the up direction leans towards the eye.
    const float height = std::atan2(seen[2], seen[1]);
    const float highest = std::max(kQuarterTurn, height);
    const float lowest = std::min(-kQuarterTurn, height);
    const float after = std::clamp(height - aroundRight, lowest, highest);
    return SbRotation(SbVec3f(1, 0, 0), height - after) * orientation * SbRotation(up, aroundUp);
}

SbRotation levelled(const SbRotation& orientation, const SbVec3f& up)
{
    const SbVec3f back = orientation.rotated(SbVec3f(0, 0, 1));
    SbVec3f right = up.cross(back);
    if (right.normalize() < kLeast)
        return orientation;
    const SbVec3f above = back.cross(right);
    return SbRotation(SbMatrix(right[0], right[1], right[2], 0, above[0], above[1], above[2], 0,
                               back[0], back[1], back[2], 0, 0, 0, 0, 1));
}
