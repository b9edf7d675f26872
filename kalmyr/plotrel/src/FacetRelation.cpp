#include "FacetRelation.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

/// Facets that overlap by less, in millimetres, only touch: neighbours in a mesh.
constexpr double kTouch = 1e-5;
/// How far off a place on the page may be, in millimetres: corners come from single precision.
constexpr double kPlaceError = 1e-5;

double sideOf(const Corner& p, const Corner& q, double x, double y)
{
    return (q.x - p.x) * (y - p.y) - (q.y - p.y) * (x - p.x);
}

/// Whether a side of the polygon has all of the others on its outer side.
bool isSeparatedBySide(std::span<const Corner> polygon, std::span<const Corner> others)
{
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Corner& p = polygon[i];
        const Corner& q = polygon[i + 1 < polygon.size() ? i + 1 : 0];
        const double limit = kTouch * (std::abs(q.x - p.x) + std::abs(q.y - p.y));
        if (std::all_of(others.begin(), others.end(), [&](const Corner& corner) {
                return sideOf(p, q, corner.x, corner.y) <= limit;
            }))
            return true;
    }
    return false;
}

/// Whether the line through a segment has the polygon on one of its sides.
bool isSeparatedByLine(std::span<const Corner> segment, std::span<const Corner> polygon)
{
    const Corner& p = segment[0];
    const Corner& q = segment[1];
    const double limit = kTouch * (std::abs(q.x - p.x) + std::abs(q.y - p.y));
    double low = 0, high = 0;
    for (const Corner& corner : polygon) {
        const double side = sideOf(p, q, corner.x, corner.y);
        low = std::min(low, side);
        high = std::max(high, side);
    }
    return low >= -limit || high <= limit;
}

bool areApart(std::span<const Corner> a, std::span<const Corner> b)
{
    if ((a.size() > 2 && isSeparatedBySide(a, b)) || (b.size() > 2 && isSeparatedBySide(b, a)))
        return true;
    return (a.size() == 2 && isSeparatedByLine(a, b)) || (b.size() == 2 && isSeparatedByLine(b, a));
}

/// Greatest and least of how much nearer some corners are than a plane, each beyond what counts as
/// equal.
struct Range {
    double high = 0;
    double low = 0;

    void add(const Corner& corner, const DepthPlane& plane, const DepthTolerance& tolerance)
    {
        const double d = corner.z - plane.at(corner.x, corner.y);
        const double slack =
            tolerance.at(corner.z) + (std::abs(plane.a) + std::abs(plane.b)) * kPlaceError;
        if (d > slack)
            high = std::max(high, d);
        else if (d < -slack)
            low = std::min(low, d);
    }
    bool isCrossing() const { return high > 0 && low < 0; }
    bool isEqual() const { return high == 0 && low == 0; }
};

Range rangeOf(std::span<const Corner> corners, const DepthPlane& plane,
              const DepthTolerance& tolerance)
{
    Range range;
    for (const Corner& corner : corners)
        range.add(corner, plane, tolerance);
    return range;
}

bool isInside(const Corner& corner, std::span<const Corner> polygon)
{
    return contains(polygon, corner.x, corner.y, 0);
}

/// How much nearer `a` is than `b` at all corners of the part of the page that both cover.
Range rangeOfOverlap(const FacetShape& a, const FacetShape& b, const DepthTolerance& tolerance)
{
    Range range;
    for (const Corner& corner : a.corners)
        if (isInside(corner, b.corners))
            range.add(corner, b.plane, tolerance);
    for (std::size_t j = 0; j < b.corners.size(); ++j) {
        const Corner& r = b.corners[j];
        const Corner& s = b.corners[j + 1 < b.corners.size() ? j + 1 : 0];
        if (a.corners.size() > 2 && isInside(r, a.corners)) {
            Corner onA = r;
            onA.z = a.plane.at(r.x, r.y);
            range.add(onA, b.plane, tolerance);
        }
        for (std::size_t i = 0; i + 1 < a.corners.size() + (a.corners.size() > 2); ++i) {
            const Corner& p = a.corners[i];
            const Corner& q = a.corners[i + 1 < a.corners.size() ? i + 1 : 0];
            const double dp = sideOf(r, s, p.x, p.y), dq = sideOf(r, s, q.x, q.y);
            const double dr = sideOf(p, q, r.x, r.y), ds = sideOf(p, q, s.x, s.y);
            if ((dp < 0) != (dq < 0) && (dr < 0) != (ds < 0)) {
                const double t = dp / (dp - dq);
                const Corner cross{
                    p.x + (q.x - p.x) * t, p.y + (q.y - p.y) * t, p.z + (q.z - p.z) * t, {}};
                range.add(cross, b.plane, tolerance);
            }
        }
    }
    return range;
}

double sizeOf(const Bounds& bounds)
{
    return std::max(bounds.maxX - bounds.minX, bounds.maxY - bounds.minY);
}

Relation fromRange(const Range& range, bool laterIsFirst)
{
    if (range.isEqual())
        return laterIsFirst ? Relation::IN_FRONT : Relation::BEHIND;
    return range.high > 0 ? Relation::IN_FRONT : Relation::BEHIND;
}

Relation opposite(Relation relation)
{
    switch (relation) {
    case Relation::BEHIND:
        return Relation::IN_FRONT;
    case Relation::IN_FRONT:
        return Relation::BEHIND;
    default:
        return relation;
    }
}

} // namespace

FacetShape shapeOf(const FacetList& list, const Facet& facet)
{
    const auto corners = list.cornersOf(facet);
    const auto [low, high] = std::minmax_element(
        corners.begin(), corners.end(), [](const Corner& p, const Corner& q) { return p.z < q.z; });
    return {corners,
            facet.isPolygon() ? planeOf(corners) : DepthPlane(),
            list.boundsOf(facet),
            facet.order,
            low->z,
            high->z};
}

Relation compare(const FacetShape& a, const FacetShape& b, const DepthTolerance& tolerance)
{
    if (b.corners.size() < 3)
        return a.corners.size() < 3 ? Relation::APART : opposite(compare(b, a, tolerance));
    if (areApart(a.corners, b.corners))
        return Relation::APART;
    if (a.minZ > b.maxZ + tolerance.at(b.maxZ))
        return Relation::IN_FRONT;
    if (a.maxZ < b.minZ - tolerance.at(b.minZ))
        return Relation::BEHIND;
    // Against the plane of the larger one: that of a small one is not known well far away.
    const bool isLarger = a.corners.size() > 2 && sizeOf(a.bounds) > sizeOf(b.bounds);
    const Range range =
        isLarger ? rangeOf(b.corners, a.plane, tolerance) : rangeOf(a.corners, b.plane, tolerance);
    if (!range.isCrossing())
        return isLarger ? opposite(fromRange(range, b.order > a.order))
                        : fromRange(range, a.order > b.order);
    const Range overlap = rangeOfOverlap(a, b, tolerance);
    return overlap.isCrossing() ? Relation::CROSSING : fromRange(overlap, a.order > b.order);
}

bool contains(std::span<const Corner> polygon, double x, double y, double slack)
{
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Corner& p = polygon[i];
        const Corner& q = polygon[i + 1 < polygon.size() ? i + 1 : 0];
        if (sideOf(p, q, x, y) < -slack * std::hypot(q.x - p.x, q.y - p.y))
            return false;
    }
    return true;
}

} // namespace kalmyr::detail
