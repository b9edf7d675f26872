#include "DragMotions.h"

#include <kalmyr/base/SbSphere.h>

#include <algorithm>

namespace kalmyr::detail {

SbVec3f moveInPlane(const SbPlane& plane, const SbVec3f& from, const SbLine& line)
{
    SbVec3f to;
    return plane.intersect(line, to) ? to - from : SbVec3f();
}

SbRotation turnBall(const SbVec3f& center, const SbVec3f& from, const SbLine& line)
{
    const SbSphere ball(center, (from - center).length());
    SbVec3f to, behind;
    if (!ball.intersect(line, to, behind))
        to = line.getClosestPoint(center);
    return {from - center, to - center};
}

float scaleAbout(const SbVec3f& center, const SbPlane& plane, const SbVec3f& from,
                 const SbLine& line)
{
    SbVec3f to;
    const float before = (from - center).length();
    if (before == 0 || !plane.intersect(line, to))
        return 1;
    return std::max(kSmallestScale, (to - center).length() / before);
}

} // namespace kalmyr::detail
