#include "Facets.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kalmyr::detail {

Bounds FacetList::boundsOf(const Facet& facet) const
{
    constexpr double kFar = std::numeric_limits<double>::infinity();
    Bounds bounds{kFar, kFar, -kFar, -kFar};
    for (const Corner& corner : cornersOf(facet)) {
        bounds.minX = std::min(bounds.minX, corner.x);
        bounds.minY = std::min(bounds.minY, corner.y);
        bounds.maxX = std::max(bounds.maxX, corner.x);
        bounds.maxY = std::max(bounds.maxY, corner.y);
    }
    return bounds;
}

double doubleArea(std::span<const Corner> corners)
{
    double sum = 0;
    for (std::size_t i = 2; i < corners.size(); ++i)
        sum += (corners[i - 1].x - corners[0].x) * (corners[i].y - corners[0].y)
               - (corners[i].x - corners[0].x) * (corners[i - 1].y - corners[0].y);
    return sum;
}

/// From the two longest sides at a corner, by the method of Newell for more than three corners.
DepthPlane planeOf(std::span<const Corner> corners)
{
    constexpr double kSteepest = 1e5;
    double nx = 0, ny = 0, nz = 0, x = 0, y = 0, z = 0;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Corner& p = corners[i];
        const Corner& q = corners[(i + 1) % corners.size()];
        nx += (p.y - q.y) * (p.z + q.z - 2 * corners[0].z);
        ny += (p.z - q.z) * (p.x + q.x - 2 * corners[0].x);
        nz += (p.x - q.x) * (p.y + q.y - 2 * corners[0].y);
        x += p.x;
        y += p.y;
        z += p.z;
    }
    const double n = 1.0 / static_cast<double>(std::max<std::size_t>(corners.size(), 1));
    DepthPlane plane;
    if (std::hypot(nx, ny) > kSteepest * std::abs(nz)) {
        plane.isSteep = true;
        return plane;
    }
    plane.a = nz == 0 ? 0 : -nx / nz;
    plane.b = nz == 0 ? 0 : -ny / nz;
    plane.c = z * n - plane.a * x * n - plane.b * y * n;
    return plane;
}

Corner interpolate(const Corner& a, const Corner& b, double t)
{
    const auto s = static_cast<float>(t);
    Corner out{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t, {}};
    for (std::size_t c = 0; c < 3; ++c)
        out.color[c] = a.color[c] + (b.color[c] - a.color[c]) * s;
    return out;
}

void split(std::span<const Corner> corners, std::span<const double> distances, CornerList& front,
           CornerList& back)
{
    front.clear();
    back.clear();
    const std::size_t n = corners.size();
    for (std::size_t i = 0; i < n; ++i) {
        const double d = distances[i];
        if (d >= 0)
            front.push_back(corners[i]);
        if (d <= 0)
            back.push_back(corners[i]);
        const std::size_t next = (i + 1) % n;
        if (n < 2 || (n == 2 && next == 0))
            continue;
        const double e = distances[next];
        if ((d > 0 && e < 0) || (d < 0 && e > 0)) {
            const Corner between = interpolate(corners[i], corners[next], d / (d - e));
            front.push_back(between);
            back.push_back(between);
        }
    }
    const std::size_t least = std::min<std::size_t>(n, 3);
    if (front.size() < least)
        front.clear();
    if (back.size() < least)
        back.clear();
}

} // namespace kalmyr::detail
