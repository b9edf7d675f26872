#include "FacetSorter.h"

#include "OverlapGrid.h"
#include "VisibleParts.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace kalmyr::detail {

namespace {

/// Deeper or more splitting than this is given up; what is left goes by its middle.
constexpr int kMaxDepth = 400;
constexpr std::size_t kMaxPiecesPerFacet = 8;
constexpr std::size_t kMinMaxPieces = 200'000;
/// A facet that is cut into more pieces while one looks whether it is hidden counts as visible.
constexpr std::size_t kMaxHiddenPieces = 24;
constexpr std::size_t kMaxOccluders = 4000;
constexpr std::uint32_t kProgressStep = 4096;
/// Shares of the work that is done when all is compared, and when what is hidden is known.
constexpr float kCompared = 0.4f, kKnown = 0.95f;

} // namespace

/// Which facets come before which, by index in the list that is sorted.
struct FacetSorter::Graph {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> edges; ///< facet, one behind it
    std::vector<std::uint32_t> begin, behind;

    std::span<const std::uint32_t> of(std::uint32_t facet) const
    {
        return {behind.data() + begin[facet], begin[facet + 1] - begin[facet]};
    }

    void index(std::size_t count)
    {
        begin.assign(count + 1, 0);
        for (const auto& [facet, other] : edges)
            ++begin[facet + 1];
        for (std::size_t i = 1; i <= count; ++i)
            begin[i] += begin[i - 1];
        behind.resize(edges.size());
        std::vector<std::uint32_t> next(begin.begin(), begin.end() - 1);
        for (const auto& [facet, other] : edges)
            behind[next[facet]++] = other;
    }

    /// Calls `found` with the facets of each ring, or with a single facet, those behind first. What
    /// may come in any order comes as in `roots`, which holds all.
    template <class Found>
    void forEachRing(const std::vector<std::uint32_t>& roots, Found found) const
    {
        const auto count = static_cast<std::uint32_t>(begin.size() - 1);
        std::vector<std::uint32_t> number(count, 0), low(count, 0), stack, next(count, 0), ring;
        std::vector<bool> onStack(count, false);
        std::vector<std::uint32_t> path;
        std::uint32_t counter = 0;
        const auto enter = [&](std::uint32_t node) {
            number[node] = low[node] = ++counter;
            next[node] = begin[node];
            stack.push_back(node);
            onStack[node] = true;
            path.push_back(node);
        };
        for (const std::uint32_t root : roots) {
            if (number[root])
                continue;
            enter(root);
            while (!path.empty()) {
                const std::uint32_t node = path.back();
                if (next[node] < begin[node + 1]) {
                    const std::uint32_t other = behind[next[node]++];
                    if (!number[other])
                        enter(other);
                    else if (onStack[other])
                        low[node] = std::min(low[node], number[other]);
                    continue;
                }
                path.pop_back();
                if (!path.empty())
                    low[path.back()] = std::min(low[path.back()], low[node]);
                if (low[node] != number[node])
                    continue;
                ring.clear();
                std::uint32_t member;
                do {
                    member = stack.back();
                    stack.pop_back();
                    onStack[member] = false;
                    ring.push_back(member);
                } while (member != node);
                found(ring);
            }
        }
    }
};

bool FacetSorter::isStopped(float share)
{
    m_stopped = m_stopped || (m_progress && !m_progress(share));
    return m_stopped;
}

void FacetSorter::sort(const std::vector<std::uint32_t>& facets, std::vector<std::uint32_t>& sorted)
{
    m_maxPieces =
        m_list.facets.size() + std::max(kMinMaxPieces, kMaxPiecesPerFacet * facets.size());
    sortLevel(facets, sorted, 0);
}

bool FacetSorter::isHidden(const FacetShape& shape, std::span<const std::uint32_t> fronts,
                           const std::vector<FacetShape>& shapes, VisibleParts& parts) const
{
    Corner middle;
    for (const Corner& corner : shape.corners) {
        const double share = 1.0 / static_cast<double>(shape.corners.size());
        middle.x += corner.x * share;
        middle.y += corner.y * share;
        middle.z += corner.z * share;
    }
    const auto isSeen = [&](const Corner& place) {
        return std::none_of(fronts.begin(), fronts.end(), [&](std::uint32_t f) {
            return parts.hidesPlace(shapes[f], shape.order, place);
        });
    };
    if (isSeen(middle))
        return false;
    for (const Corner& corner : shape.corners)
        if (isSeen(interpolate(corner, middle, 0.1)))
            return false;
    parts.begin(shape);
    for (const std::uint32_t f : fronts) {
        parts.hide(shapes[f]);
        if (parts.isEmpty())
            return true;
        if (parts.getPieces().size() > kMaxHiddenPieces)
            return false;
    }
    return false;
}

/// Compares all facets that overlap. False when the work was stopped.
bool FacetSorter::compareAll(const std::vector<FacetShape>& shapes, Graph& graph, bool isTop)
{
    std::vector<Bounds> bounds;
    bounds.reserve(shapes.size());
    for (const FacetShape& shape : shapes)
        bounds.push_back(shape.bounds);
    const auto isLong = [&](std::uint32_t done) {
        return isTop && done % kProgressStep == 0
               && isStopped(kCompared * static_cast<float>(done)
                            / static_cast<float>(shapes.size()));
    };
    std::uint32_t latest = 0;
    OverlapGrid(bounds).forEachPair([&](std::uint32_t i, std::uint32_t j) {
        if (m_stopped || (i != latest && isLong(latest = i)))
            return;
        const Relation relation = compare(shapes[i], shapes[j], m_tolerance);
        if (relation == Relation::IN_FRONT || relation == Relation::CROSSING)
            graph.edges.emplace_back(i, j);
        if (relation == Relation::BEHIND || relation == Relation::CROSSING)
            graph.edges.emplace_back(j, i);
    });
    return !m_stopped;
}

/// Finds what opaque polygons hide, and takes it out of the graph; not all when it is stopped.
std::vector<bool> FacetSorter::findHidden(const std::vector<std::uint32_t>& facets,
                                          const std::vector<FacetShape>& shapes, Graph& graph)
{
    std::vector<bool> hidden(facets.size(), false);
    VisibleParts parts(m_tolerance);
    Graph fronts;
    for (const auto& [front, back] : graph.edges)
        if (m_list.facets[facets[front]].isOpaque)
            fronts.edges.emplace_back(back, front);
    fronts.index(facets.size());
    for (std::uint32_t i = 0; i < facets.size(); ++i) {
        if (i % kProgressStep == 0
            && isStopped(std::lerp(kCompared, kKnown,
                                   static_cast<float>(i) / static_cast<float>(facets.size()))))
            break;
        const auto of = fronts.of(i);
        hidden[i] =
            !of.empty() && of.size() <= kMaxOccluders && isHidden(shapes[i], of, shapes, parts);
    }
    std::erase_if(graph.edges, [&](const auto& e) { return hidden[e.first] || hidden[e.second]; });
    return hidden;
}

void FacetSorter::sortLevel(const std::vector<std::uint32_t>& facets,
                            std::vector<std::uint32_t>& sorted, int depth)
{
    if (facets.size() < 2) {
        sorted.insert(sorted.end(), facets.begin(), facets.end());
        return;
    }
    if (depth > kMaxDepth || m_list.facets.size() > m_maxPieces)
        return sortByMean(facets, sorted);
    std::vector<FacetShape> shapes;
    shapes.reserve(facets.size());
    for (const std::uint32_t f : facets)
        shapes.push_back(shapeOf(m_list, m_list.facets[f]));
    Graph graph;
    if (!compareAll(shapes, graph, depth == 0))
        return;
    std::vector<bool> hidden(facets.size(), false);
    if (m_removingHidden && depth == 0)
        hidden = findHidden(facets, shapes, graph);
    graph.index(facets.size());
    if (depth == 0 && isStopped(kKnown))
        return;
    graph.forEachRing(rootsOf(facets, graph), [&](const std::vector<std::uint32_t>& ring) {
        if (ring.size() == 1) {
            if (!hidden[ring[0]])
                sorted.push_back(facets[ring[0]]);
            return;
        }
        std::vector<std::uint32_t> members;
        for (const std::uint32_t i : ring)
            members.push_back(facets[i]);
        std::sort(members.begin(), members.end());
        sortRing(members, sorted, depth);
    });
}

/// Transparent facets one after another as far as possible, so that their common edges need not
/// show: opaque ones that are in front of any come after them.
std::vector<std::uint32_t> FacetSorter::rootsOf(const std::vector<std::uint32_t>& facets,
                                                const Graph& graph) const
{
    std::vector<std::uint32_t> roots, late, open;
    std::vector<bool> isLate(facets.size(), false);
    for (std::uint32_t i = 0; i < facets.size(); ++i) {
        isLate[i] = !m_list.facets[facets[i]].isOpaque;
        if (isLate[i])
            open.push_back(i);
        else
            roots.push_back(i);
    }
    if (open.empty() || roots.empty()) {
        roots.insert(roots.end(), open.begin(), open.end());
        return roots;
    }
    const std::vector<std::uint32_t> clear = open;
    Graph fronts;
    for (const auto& [front, back] : graph.edges)
        fronts.edges.emplace_back(back, front);
    fronts.index(facets.size());
    while (!open.empty()) {
        const std::uint32_t facet = open.back();
        open.pop_back();
        for (const std::uint32_t front : fronts.of(facet)) {
            if (!isLate[front]) {
                isLate[front] = true;
                open.push_back(front);
            }
        }
    }
    std::erase_if(roots, [&](std::uint32_t i) {
        if (isLate[i])
            late.push_back(i);
        return isLate[i];
    });
    roots.insert(roots.end(), clear.begin(), clear.end());
    roots.insert(roots.end(), late.begin(), late.end());
    return roots;
}

/// Of a few candidates the one whose plane splits fewest others, and then those evenly.
std::size_t FacetSorter::chooseSplitter(const std::vector<std::uint32_t>& ring,
                                        const std::vector<FacetShape>& shapes) const
{
    constexpr std::size_t kCandidates = 8;
    constexpr std::size_t kProbes = 256;
    std::size_t best = ring.size();
    double bestScore = 0;
    const std::size_t step = std::max<std::size_t>(1, ring.size() / kCandidates);
    const std::size_t probe = std::max<std::size_t>(1, ring.size() / kProbes);
    for (std::size_t i = 0; i < ring.size(); i += best < ring.size() ? step : 1) {
        if (shapes[i].corners.size() < 3)
            continue;
        double splits = 0, balance = 0;
        for (std::size_t j = 0; j < ring.size(); j += probe) {
            bool front = false, back = false;
            for (const Corner& c : shapes[j].corners) {
                const double d = c.z - shapes[i].plane.at(c.x, c.y);
                const double slack = m_tolerance.at(c.z);
                front = front || d > slack;
                back = back || d < -slack;
            }
            splits += front && back ? 1 : 0;
            balance += (front ? 1 : 0) - (back ? 1 : 0);
        }
        const double score = 8 * splits + std::abs(balance);
        if (best == ring.size() || score < bestScore) {
            best = i;
            bestScore = score;
        }
    }
    return best;
}

void FacetSorter::sortRing(const std::vector<std::uint32_t>& ring,
                           std::vector<std::uint32_t>& sorted, int depth)
{
    if (isStopped(kKnown))
        return;
    std::vector<FacetShape> shapes;
    for (const std::uint32_t f : ring)
        shapes.push_back(shapeOf(m_list, m_list.facets[f]));
    const std::size_t splitter = chooseSplitter(ring, shapes);
    if (splitter == ring.size())
        return sortByMean(ring, sorted);
    const DepthPlane plane = shapes[splitter].plane;
    std::vector<std::uint32_t> front, on{ring[splitter]}, back;
    std::vector<double> distances;
    CornerList frontPart, backPart, own;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        if (i == splitter)
            continue;
        const Facet facet = m_list.facets[ring[i]];
        const auto corners = m_list.cornersOf(facet);
        own.assign(corners.begin(), corners.end());
        distances.clear();
        bool hasFront = false, hasBack = false;
        for (const Corner& c : own) {
            const double d = c.z - plane.at(c.x, c.y);
            const double slack =
                m_tolerance.at(c.z) + (std::abs(plane.a) + std::abs(plane.b)) * 1e-5;
            distances.push_back(std::abs(d) <= slack ? 0 : d);
            hasFront = hasFront || d > slack;
            hasBack = hasBack || d < -slack;
        }
        if (!hasFront || !hasBack) {
            (hasFront ? front : hasBack ? back : on).push_back(ring[i]);
            continue;
        }
        split(own, distances, frontPart, backPart);
        if (!frontPart.empty())
            front.push_back(m_list.add(facet, frontPart));
        if (!backPart.empty())
            back.push_back(m_list.add(facet, backPart));
    }
    std::sort(on.begin(), on.end(), [this](std::uint32_t a, std::uint32_t b) {
        return m_list.facets[a].order < m_list.facets[b].order;
    });
    sortLevel(back, sorted, depth + 1);
    sorted.insert(sorted.end(), on.begin(), on.end());
    sortLevel(front, sorted, depth + 1);
}

void FacetSorter::sortByMean(std::vector<std::uint32_t> facets,
                             std::vector<std::uint32_t>& sorted) const
{
    std::vector<double> means(facets.size());
    std::vector<std::uint32_t> order(facets.size());
    for (std::size_t i = 0; i < facets.size(); ++i) {
        order[i] = static_cast<std::uint32_t>(i);
        const auto corners = m_list.cornersOf(m_list.facets[facets[i]]);
        for (const Corner& c : corners)
            means[i] += c.z / static_cast<double>(corners.size());
    }
    std::stable_sort(order.begin(), order.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return means[a] < means[b]; });
    for (const std::uint32_t i : order)
        sorted.push_back(facets[i]);
}

} // namespace kalmyr::detail
