#include "HandleOutlines.h"

#include <cmath>
#include <numbers>

namespace kalmyr::detail {

namespace {

constexpr int kSegments = 48;

SbVec3f onAxes(int axis, float height, float first, float second)
{
    SbVec3f point;
    point[axis] = height;
    point[(axis + 1) % 3] = first;
    point[(axis + 2) % 3] = second;
    return point;
}

} // namespace

Polyline closed(Polyline polygon)
{
    polygon.push_back(polygon.front());
    return polygon;
}

Polyline square(int axis, float height, float half)
{
    return {onAxes(axis, height, -half, -half), onAxes(axis, height, half, -half),
            onAxes(axis, height, half, half), onAxes(axis, height, -half, half)};
}

Polyline cornerSquare(int axis, float from, float to)
{
    return {onAxes(axis, 0, from, from), onAxes(axis, 0, to, from), onAxes(axis, 0, to, to),
            onAxes(axis, 0, from, to)};
}

Polyline circle(int axis, float radius, float height)
{
    Polyline points;
    for (int i = 0; i <= kSegments; ++i) {
        const float angle =
            2 * std::numbers::pi_v<float> * static_cast<float>(i % kSegments) / kSegments;
        points.push_back(onAxes(axis, height, radius * std::cos(angle), radius * std::sin(angle)));
    }
    return points;
}

std::vector<Polyline> band(float halfHeight)
{
    const Polyline top = circle(1, 1, halfHeight), bottom = circle(1, 1, -halfHeight);
    std::vector<Polyline> faces;
    for (std::size_t i = 0; i + 1 < top.size(); ++i)
        faces.push_back({bottom[i], bottom[i + 1], top[i + 1], top[i]});
    return faces;
}

std::vector<Polyline> annulus(float innerRadius)
{
    const Polyline outer = circle(2), inner = circle(2, innerRadius);
    std::vector<Polyline> faces;
    for (std::size_t i = 0; i + 1 < outer.size(); ++i)
        faces.push_back({inner[i], outer[i], outer[i + 1], inner[i + 1]});
    return faces;
}

SbVec3f boxCorner(int i)
{
    return {i & 1 ? 1.0f : -1.0f, i & 2 ? 1.0f : -1.0f, i & 4 ? 1.0f : -1.0f};
}

std::vector<Polyline> boxEdges(int axis)
{
    std::vector<Polyline> edges;
    for (const SbVec3f& corner : square(axis, -1, 1)) {
        SbVec3f other = corner;
        other[axis] = 1;
        edges.push_back({corner, other});
    }
    return edges;
}

std::vector<Polyline> boxEdges()
{
    std::vector<Polyline> all;
    for (int axis = 0; axis < 3; ++axis)
        for (Polyline& edge : boxEdges(axis))
            all.push_back(std::move(edge));
    return all;
}

} // namespace kalmyr::detail
