#include "VisibleParts.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

/// Pieces that are narrower, in millimetres, are no more than rounding between neighbours.
constexpr double kSliver = 2e-4;
/// Lines are seen on the surfaces on which they lie: they may be farther away by so many times what
/// counts as equal.
constexpr double kLineLift = 10;

Bounds boundsOf(const CornerList& corners)
{
    Bounds b{corners[0].x, corners[0].y, corners[0].x, corners[0].y};
    for (const Corner& corner : corners) {
        b.minX = std::min(b.minX, corner.x);
        b.minY = std::min(b.minY, corner.y);
        b.maxX = std::max(b.maxX, corner.x);
        b.maxY = std::max(b.maxY, corner.y);
    }
    return b;
}

bool isSliver(const CornerList& piece)
{
    const Bounds b = boundsOf(piece);
    const double length = std::max(b.maxX - b.minX, b.maxY - b.minY);
    if (piece.size() < 2)
        return false;
    if (piece.size() == 2)
        return length <= kSliver;
    return std::abs(doubleArea(piece)) <= kSliver * length;
}

} // namespace

double VisibleParts::slackAt(const Corner& corner, const DepthPlane& plane) const
{
    constexpr double kPlaceError = 1e-5;
    const double slack =
        m_tolerance.at(corner.z) + (std::abs(plane.a) + std::abs(plane.b)) * kPlaceError;
    return m_isThin ? slack * kLineLift : slack;
}

void VisibleParts::begin(const FacetShape& facet)
{
    m_order = facet.order;
    m_isThin = facet.corners.size() < 3;
    m_hidden.clear();
    m_pieces.resize(1);
    m_pieces[0].assign(facet.corners.begin(), facet.corners.end());
}

bool VisibleParts::hidesPlace(const FacetShape& occluder, std::uint32_t order,
                              const Corner& place) const
{
    if (!contains(occluder.corners, place.x, place.y, kSliver))
        return false;
    const double nearer = occluder.plane.at(place.x, place.y) - place.z;
    const double slack = slackAt(place, occluder.plane);
    return nearer > slack || (nearer >= -slack && occluder.order > order);
}

/// Splits off what lies outside of each side in turn, then what is in front. Convex pieces stay in
/// m_outside; false when nothing of the piece is hidden, which then stays as it is.
bool VisibleParts::cut(const CornerList& piece, const FacetShape& occluder)
{
    const auto sides = occluder.corners;
    const auto distancesTo = [&](std::size_t side, const CornerList& corners) {
        const Corner& p = sides[side];
        const Corner& q = sides[side + 1 < sides.size() ? side + 1 : 0];
        const double length = std::hypot(q.x - p.x, q.y - p.y);
        const double dx = length > 0 ? (q.x - p.x) / length : 0;
        const double dy = length > 0 ? (q.y - p.y) / length : 0;
        m_distances.clear();
        for (const Corner& c : corners)
            m_distances.push_back(dx * (c.y - p.y) - dy * (c.x - p.x));
        return std::minmax_element(m_distances.begin(), m_distances.end());
    };
    m_crossed.clear();
    for (std::size_t i = 0; i < sides.size(); ++i) {
        const auto [low, high] = distancesTo(i, piece);
        if (*high <= kSliver && !(*low == 0 && *high == 0))
            return false;
        if (*low < 0)
            m_crossed.push_back(i);
    }
    const std::size_t before = m_outside.size();
    m_inside = piece;
    const auto splitInside = [this] {
        split(m_inside, m_distances, m_front, m_back);
        if (!m_back.empty() && !isSliver(m_back))
            m_outside.push_back(m_back);
        m_inside.swap(m_front);
    };
    for (std::size_t k = 0; k < m_crossed.size() && !m_inside.empty(); ++k) {
        distancesTo(m_crossed[k], m_inside);
        splitInside();
    }
    bool isHidden = !m_inside.empty() && !isSliver(m_inside);
    if (isHidden) {
        double low = 0, high = 0;
        m_distances.clear();
        for (const Corner& c : m_inside) {
            const double nearer = occluder.plane.at(c.x, c.y) - c.z;
            const double slack = slackAt(c, occluder.plane);
            m_distances.push_back(nearer);
            low = nearer < -slack ? std::min(low, nearer) : low;
            high = nearer > slack ? std::max(high, nearer) : high;
        }
        if (low == 0 && high == 0)
            isHidden = !m_isThin && occluder.order > m_order;
        else if (high == 0)
            isHidden = false;
        else if (low < 0)
            splitInside();
    }
    if (isHidden)
        m_hidden.push_back(m_inside);
    else
        m_outside.resize(before);
    return isHidden;
}

void VisibleParts::hide(const FacetShape& occluder)
{
    m_kept.clear();
    m_outside.clear();
    for (CornerList& piece : m_pieces)
        if (!boundsOf(piece).touches(occluder.bounds) || !cut(piece, occluder))
            m_kept.push_back(std::move(piece));
    m_pieces.swap(m_kept);
    std::move(m_outside.begin(), m_outside.end(), std::back_inserter(m_pieces));
}

} // namespace kalmyr::detail
