#include "SimplePolygon.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>

namespace kalmyr::detail {

namespace {

int signOf(double value)
{
    return (value > 0) - (value < 0);
}

/// The exact sign of a sum, by an expansion whose components do not overlap (Shewchuk, "Adaptive
/// precision floating-point arithmetic and fast robust geometric predicates").
int signOfSum(const std::array<double, 6>& terms)
{
    std::array<double, 6> sum;
    std::size_t size = 0;
    for (double carry : terms) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const double total = carry + sum[i];
            const double part = total - carry;
            const double error = (carry - (total - part)) + (sum[i] - part);
            if (error != 0)
                sum[kept++] = error;
            carry = total;
        }
        sum[kept++] = carry;
        size = kept;
    }
    for (std::size_t i = size; i-- > 0;)
        if (sum[i] != 0)
            return signOf(sum[i]);
    return 0;
}

/// Positive when a, b, c turn counter-clockwise, 0 when they lie on a line; exact.
int turnOf(const SbVec2f& a, const SbVec2f& b, const SbVec2f& c)
{
    const double ax = a[0], ay = a[1], bx = b[0], by = b[1], cx = c[0], cy = c[1];
    const double left = (ax - cx) * (by - cy), right = (ay - cy) * (bx - cx);
    const double turn = left - right;
    constexpr double kError = 8 * std::numeric_limits<double>::epsilon();
    if (std::abs(turn) > kError * (std::abs(left) + std::abs(right)))
        return signOf(turn);
    // Products of two floats are exact in doubles.
    return signOfSum({ax * by, -ay * bx, bx * cy, -by * cx, cx * ay, -cy * ax});
}

double twiceArea(const SbVec2f& a, const SbVec2f& b, const SbVec2f& c)
{
    return (double(b[0]) - a[0]) * (double(c[1]) - a[1])
           - (double(b[1]) - a[1]) * (double(c[0]) - a[0]);
}

/// Twice the area, counted from the first corner.
double twiceArea(std::span<const SbVec2f> polygon)
{
    double sum = 0;
    for (std::size_t i = 2; i < polygon.size(); ++i)
        sum += twiceArea(polygon[0], polygon[i - 1], polygon[i]);
    return sum;
}

} // namespace

int SimplePolygon::side(Index a, Index b, Index c) const
{
    return turnOf(m_corners[a], m_corners[b], m_corners[c]);
}

bool SimplePolygon::tessellate(std::span<const SbVec2f> polygon)
{
    m_triangles.clear();
    m_diagonals.clear();
    m_status.clear();
    if (prepare(polygon) && sweep() && cutPieces() && hasWholeArea()) {
        if (m_reversed)
            for (std::uint32_t& corner : m_triangles)
                corner = m_count - 1 - corner;
        return true;
    }
    m_triangles.clear();
    return false;
}

bool SimplePolygon::prepare(std::span<const SbVec2f> polygon)
{
    constexpr std::size_t kMaxCorners = std::numeric_limits<Index>::max() / 4;
    if (polygon.size() < 3 || polygon.size() > kMaxCorners)
        return false;
    const auto isFinite = [](const SbVec2f& p) {
        return std::isfinite(p[0]) && std::isfinite(p[1]);
    };
    if (!std::all_of(polygon.begin(), polygon.end(), isFinite))
        return false;
    m_count = static_cast<Index>(polygon.size());
    m_corners.assign(polygon.begin(), polygon.end());
    m_reversed = twiceArea(polygon) < 0;
    if (m_reversed)
        std::reverse(m_corners.begin(), m_corners.end());
    m_order.resize(m_count);
    std::iota(m_order.begin(), m_order.end(), Index(0));
    const auto isLeft = [this](Index a, Index b) {
        const SbVec2f &p = m_corners[a], &q = m_corners[b];
        return p[0] < q[0] || (p[0] == q[0] && p[1] < q[1]);
    };
    std::sort(m_order.begin(), m_order.end(), isLeft);
    m_rank.resize(m_count);
    for (Index i = 0; i < m_count; ++i) {
        if (i > 0 && m_corners[m_order[i - 1]] == m_corners[m_order[i]])
            return false;
        m_rank[m_order[i]] = i;
    }
    m_touches = false;
    m_places.resize(m_count);
    m_helpers.resize(m_count);
    m_merges.assign(m_count, false);
    return true;
}

// ---- the sweep

bool SimplePolygon::isBelow(Index a, Index b)
{
    const Index leftA = leftOf(a), leftB = leftOf(b);
    int turn;
    if (leftA == leftB)
        turn = side(leftA, rightOf(a), rightOf(b));
    else if (m_rank[leftA] < m_rank[leftB])
        turn = side(leftA, rightOf(a), leftB);
    else
        turn = -side(leftB, rightOf(b), leftA);
    m_touches |= turn == 0 && a != b;
    return turn > 0;
}

bool SimplePolygon::meet(Index a, Index b) const
{
    const Index a0 = leftOf(a), a1 = rightOf(a), b0 = leftOf(b), b1 = rightOf(b);
    if (a0 == b0 || a1 == b1)
        return side(a0, a1, a0 == b0 ? b1 : b0) == 0; // one folds back on the other
    if (a0 == b1 || a1 == b0)
        return false;
    const int sideB0 = side(a0, a1, b0), sideB1 = side(a0, a1, b1);
    const int sideA0 = side(b0, b1, a0), sideA1 = side(b0, b1, a1);
    if (sideB0 == 0 && sideB1 == 0)
        return std::max(m_rank[a0], m_rank[b0]) <= std::min(m_rank[a1], m_rank[b1]);
    return sideB0 * sideB1 <= 0 && sideA0 * sideA1 <= 0;
}

bool SimplePolygon::meetsNeighbours(Place place) const
{
    if (place != m_status.begin() && meet(std::prev(place)->edge, place->edge))
        return true;
    const auto next = std::next(place);
    return next != m_status.end() && meet(place->edge, next->edge);
}

/// A corner where two parts come together waits for the next one between the same two edges.
void SimplePolygon::replaceHelper(Index edge, Index corner, bool always)
{
    Index& helper = m_helpers[edge];
    if (always || m_merges[helper])
        m_diagonals.emplace_back(corner, helper);
    helper = corner;
}

bool SimplePolygon::begin(Index corner)
{
    const Index in = before(corner), out = corner;
    const int turn = side(in, corner, after(corner));
    if (turn == 0)
        return false;
    const Place lower = m_status.insert({turn > 0 ? out : in}).first;
    const Place upper = m_status.emplace_hint(std::next(lower), Met{turn > 0 ? in : out});
    m_places[lower->edge] = lower;
    m_places[upper->edge] = upper;
    if (m_touches || std::next(lower) != upper || meetsNeighbours(lower) || meetsNeighbours(upper))
        return false;
    const bool isInside = lower != m_status.begin() && isFloor(std::prev(lower)->edge);
    if (isInside == (turn > 0))
        return false;
    if (isInside)
        replaceHelper(std::prev(lower)->edge, corner, true);
    m_helpers[out] = corner;
    return true;
}

bool SimplePolygon::end(Index corner)
{
    const Index in = before(corner), out = corner;
    const bool isMerge = side(in, corner, after(corner)) < 0;
    const Place lower = m_places[isMerge ? out : in], upper = m_places[isMerge ? in : out];
    if (std::next(lower) != upper)
        return false;
    if (m_merges[m_helpers[in]])
        m_diagonals.emplace_back(corner, m_helpers[in]);
    const bool hasBelow = lower != m_status.begin();
    const Place below = hasBelow ? std::prev(lower) : lower;
    const Place above = std::next(upper);
    const bool touches = hasBelow && above != m_status.end() && meet(below->edge, above->edge);
    if (touches || (hasBelow && isFloor(below->edge)) != isMerge)
        return false;
    m_status.erase(lower);
    m_status.erase(upper);
    if (isMerge) {
        replaceHelper(below->edge, corner, false);
        m_merges[corner] = true;
    }
    return true;
}

bool SimplePolygon::pass(Index corner, Index done, Index next)
{
    const Place place = m_places[done];
    place->edge = next;
    m_places[next] = place;
    if (meetsNeighbours(place))
        return false;
    if (isFloor(next)) {
        if (m_merges[m_helpers[done]])
            m_diagonals.emplace_back(corner, m_helpers[done]);
        m_helpers[next] = corner;
        return true;
    }
    if (place == m_status.begin() || !isFloor(std::prev(place)->edge))
        return false;
    replaceHelper(std::prev(place)->edge, corner, false);
    return true;
}

bool SimplePolygon::sweep()
{
    for (const Index corner : m_order) {
        const Index in = before(corner), out = corner;
        const bool fromLeft = m_rank[in] < m_rank[corner];
        const bool toLeft = m_rank[after(corner)] < m_rank[corner];
        const bool isSound = fromLeft && toLeft ? end(corner)
                             : fromLeft         ? pass(corner, in, out)
                             : toLeft           ? pass(corner, out, in)
                                                : begin(corner);
        if (!isSound)
            return false;
    }
    return m_status.empty();
}

// ---- the pieces

/// Around each corner counter-clockwise: the next corner, the other ends of diagonals, the one
/// before.
void SimplePolygon::sortNeighbours()
{
    m_firstNeighbour.assign(m_count + 1, 2);
    m_firstNeighbour[0] = 0;
    for (const auto& [a, b] : m_diagonals) {
        ++m_firstNeighbour[a + 1];
        ++m_firstNeighbour[b + 1];
    }
    std::partial_sum(m_firstNeighbour.begin(), m_firstNeighbour.end(), m_firstNeighbour.begin());
    m_neighbours.resize(m_firstNeighbour.back());
    std::vector<Index> free(m_firstNeighbour.begin(), m_firstNeighbour.end() - 1);
    for (Index i = 0; i < m_count; ++i) {
        m_neighbours[free[i]++] = {after(i), 0};
        m_neighbours[m_firstNeighbour[i + 1] - 1] = {before(i), 0};
    }
    for (Index d = 0; d < m_diagonals.size(); ++d) {
        const auto [a, b] = m_diagonals[d];
        m_neighbours[free[a]++] = {b, 2 * d};
        m_neighbours[free[b]++] = {a, 2 * d + 1};
    }
    m_diagonalPlaces.resize(2 * m_diagonals.size());
    for (Index i = 0; i < m_count; ++i) {
        const Index first = m_firstNeighbour[i] + 1, last = m_firstNeighbour[i + 1] - 1;
        const auto isEarlier = [this, i](const Neighbour& p, const Neighbour& q) {
            const bool lowP = side(i, after(i), p.corner) > 0;
            const bool lowQ = side(i, after(i), q.corner) > 0;
            return lowP != lowQ ? lowP : side(i, p.corner, q.corner) > 0;
        };
        std::sort(m_neighbours.begin() + first, m_neighbours.begin() + last, isEarlier);
        for (Index at = first; at < last; ++at)
            m_diagonalPlaces[m_neighbours[at].diagonal] = at;
    }
}

bool SimplePolygon::cutPieces()
{
    m_triangles.reserve(3 * (std::size_t(m_count) - 2));
    sortNeighbours();
    std::vector<bool> isDone(m_neighbours.size());
    std::vector<Index> loop;
    for (Index corner = 0; corner < m_count; ++corner) {
        for (Index at = m_firstNeighbour[corner]; at + 1 < m_firstNeighbour[corner + 1]; ++at) {
            loop.clear();
            // Along the inside: at each corner the way that lies next clockwise to that back.
            Index from = corner;
            for (Index way = at; !isDone[way];) {
                isDone[way] = true;
                loop.push_back(from);
                const Neighbour& to = m_neighbours[way];
                const Index back = way == m_firstNeighbour[from]
                                       ? m_firstNeighbour[to.corner + 1] - 1
                                       : m_diagonalPlaces[to.diagonal ^ 1];
                from = to.corner;
                way = back - 1;
            }
            if (!loop.empty() && !cutMonotone(loop))
                return false;
        }
    }
    return true;
}

bool SimplePolygon::cutMonotone(const std::vector<Index>& loop)
{
    struct Step {
        Index corner;
        bool isUpper;
    };
    if (loop.size() < 3)
        return false;
    const auto isLeft = [this](Index a, Index b) { return m_rank[a] < m_rank[b]; };
    const std::size_t size = loop.size();
    const auto first = std::min_element(loop.begin(), loop.end(), isLeft) - loop.begin();
    // Forwards the lower chain, backwards the upper one; both from left to right.
    std::vector<Step> steps{{loop[first], false}};
    std::size_t low = (first + 1) % size, high = (first + size - 1) % size;
    for (std::size_t i = 1; i < size; ++i) {
        const bool isUpper = low != high && isLeft(loop[high], loop[low]);
        const Index corner = loop[isUpper ? high : low];
        if (isLeft(corner, steps.back().corner))
            return false;
        steps.push_back({corner, isUpper});
        if (isUpper)
            high = (high + size - 1) % size;
        else
            low = (low + 1) % size;
    }
    const auto add = [this](Index a, Index b, Index c, bool turned) {
        m_triangles.insert(m_triangles.end(), {a, turned ? c : b, turned ? b : c});
    };
    std::vector<Step> stack{steps[0], steps[1]};
    for (std::size_t i = 2; i < size; ++i) {
        const Step& step = steps[i];
        const bool onUpper = stack.back().isUpper;
        if (i + 1 == size || step.isUpper != onUpper) {
            for (std::size_t k = 1; k < stack.size(); ++k)
                add(stack[k - 1].corner, stack[k].corner, step.corner, onUpper);
            const Step top = stack.back();
            stack.assign({top, step});
            continue;
        }
        const int wanted = step.isUpper ? -1 : 1;
        while (stack.size() > 1) {
            const Index a = stack[stack.size() - 2].corner, b = stack.back().corner;
            if (side(a, b, step.corner) != wanted)
                break;
            add(a, b, step.corner, step.isUpper);
            stack.pop_back();
        }
        stack.push_back(step);
    }
    return true;
}

bool SimplePolygon::hasWholeArea() const
{
    if (m_triangles.size() != 3 * (std::size_t(m_count) - 2))
        return false;
    double sum = 0;
    for (std::size_t i = 0; i < m_triangles.size(); i += 3) {
        const SbVec2f &a = m_corners[m_triangles[i]], &b = m_corners[m_triangles[i + 1]],
                      &c = m_corners[m_triangles[i + 2]];
        if (turnOf(a, b, c) < 0)
            return false;
        sum += twiceArea(a, b, c);
    }
    constexpr double kTolerance = 1e-6;
    const double whole = twiceArea(m_corners);
    return std::abs(sum - whole) <= kTolerance * std::abs(whole);
}

} // namespace kalmyr::detail
