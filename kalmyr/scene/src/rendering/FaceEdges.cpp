#include "rendering/FaceEdges.h"

#include <kalmyr/shapes/SoGeometry.h>

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>

namespace kalmyr::detail {

namespace {

constexpr float kSharpCosine = 0.77f; // bends of 40 degrees and more
constexpr float kFlatCosine = 0.99999f;
/// A face that bends more between two of its triangles is a curved surface: 1.5 degrees, less than
/// the finest tessellation has, more than the points of a polygon are off its plane.
constexpr float kCurvedCosine = 0.99966f;

/// One side of a triangle, listed under the lower of its two vertices.
struct Side {
    std::uint32_t other;
    std::uint32_t corner; ///< index of the side's first corner in the triangles
};

/// Sides listed by vertex: those of vertex v are at starts[v] up to starts[v + 1], by `other`.
struct Sides {
    std::vector<std::uint32_t> starts;
    std::vector<Side> list;
};

std::uint32_t nextCorner(std::uint32_t corner)
{
    return corner % 3 == 2 ? corner - 2 : corner + 1;
}

std::uint32_t thirdCorner(std::uint32_t corner)
{
    return nextCorner(nextCorner(corner));
}

Sides listSides(const std::vector<std::uint32_t>& triangles, std::size_t numVertices)
{
    Sides sides;
    sides.starts.assign(numVertices + 1, 0);
    const auto each = [&triangles](auto&& visit) {
        for (std::uint32_t c = 0; c < triangles.size(); ++c) {
            const std::uint32_t a = triangles[c];
            const std::uint32_t b = triangles[nextCorner(c)];
            if (a != b)
                visit(std::min(a, b), Side{std::max(a, b), c});
        }
    };
    each([&](std::uint32_t low, const Side&) { ++sides.starts[low + 1]; });
    for (std::size_t v = 0; v < numVertices; ++v)
        sides.starts[v + 1] += sides.starts[v];
    std::vector<std::uint32_t> next(sides.starts.begin(), sides.starts.end() - 1);
    sides.list.resize(sides.starts.back());
    each([&](std::uint32_t low, const Side& side) { sides.list[next[low]++] = side; });
    for (std::size_t v = 0; v < numVertices; ++v) {
        std::sort(sides.list.begin() + sides.starts[v], sides.list.begin() + sides.starts[v + 1],
                  [](const Side& x, const Side& y) { return x.other < y.other; });
    }
    return sides;
}

/// Calls visit(vertex, first side, end of sides) for every edge.
template <class Visit>
void eachEdge(const Sides& sides, Visit&& visit)
{
    for (std::uint32_t v = 0; v + 1 < sides.starts.size(); ++v) {
        const Side* side = sides.list.data() + sides.starts[v];
        const Side* const end = sides.list.data() + sides.starts[v + 1];
        while (side != end) {
            const Side* const next = std::find_if(
                side, end, [other = side->other](const Side& s) { return s.other != other; });
            visit(v, side, next);
            side = next;
        }
    }
}

std::uint64_t hashOf(const std::array<std::uint32_t, 3>& bits)
{
    std::uint64_t hash = bits[0];
    hash = (hash ^ bits[1] * 0x9E3779B97F4A7C15ull) * 0xBF58476D1CE4E5B9ull;
    hash = (hash ^ hash >> 29 ^ bits[2]) * 0x94D049BB133111EBull;
    return hash ^ hash >> 32;
}

/// For each vertex the first one at the same place.
std::vector<std::uint32_t> firstAtPlace(const std::vector<SbVec3f>& positions)
{
    constexpr std::uint32_t kNone = 0xffffffff;
    const std::size_t size = std::bit_ceil(2 * positions.size() + 1);
    std::vector<std::uint32_t> table(size, kNone);
    std::vector<std::uint32_t> first(positions.size());
    for (std::uint32_t i = 0; i < positions.size(); ++i) {
        const SbVec3f& p = positions[i];
        // Adding zero makes both zeros one.
        const std::array<std::uint32_t, 3> bits{std::bit_cast<std::uint32_t>(p[0] + 0.0f),
                                                std::bit_cast<std::uint32_t>(p[1] + 0.0f),
                                                std::bit_cast<std::uint32_t>(p[2] + 0.0f)};
        std::size_t slot = hashOf(bits) & (size - 1);
        while (table[slot] != kNone && !(positions[table[slot]] == p))
            slot = (slot + 1) & (size - 1);
        if (table[slot] == kNone)
            table[slot] = i;
        first[i] = table[slot];
    }
    return first;
}

SbVec3f normalOf(const std::vector<SbVec3f>& positions, const std::vector<std::uint32_t>& triangles,
                 std::uint32_t corner)
{
    const std::uint32_t t = corner - corner % 3;
    const SbVec3f& p = positions[triangles[t]];
    SbVec3f n = (positions[triangles[t + 1]] - p).cross(positions[triangles[t + 2]] - p);
    n.normalize();
    return n;
}

} // namespace

std::vector<std::uint32_t> faceEdges(const SoGeometry& geometry)
{
    const bool hasFaces = geometry.triangleFaces.size() >= geometry.getNumTriangles();
    const auto faceOf = [&](const Side& side) {
        const std::uint32_t triangle = side.corner / 3;
        return hasFaces ? geometry.triangleFaces[triangle] : static_cast<std::int32_t>(triangle);
    };
    std::vector<std::uint32_t> edges;
    eachEdge(listSides(geometry.triangles, geometry.positions.size()),
             [&](std::uint32_t vertex, const Side* side, const Side* end) {
                 const auto isInFace = [&](const Side& s) {
                     return faceOf(s) == faceOf(*side)
                            && normalOf(geometry.positions, geometry.triangles, s.corner)
                                       .dot(normalOf(geometry.positions, geometry.triangles,
                                                     side->corner))
                                   > kCurvedCosine;
                 };
                 if (!std::any_of(side + 1, end, isInFace)) {
                     edges.push_back(vertex);
                     edges.push_back(side->other);
                 }
             });
    return edges;
}

namespace {

/// Of edges between the same two places, which faces with vertices of their own have, the last one.
std::vector<std::uint32_t> withoutTwins(const std::vector<std::uint32_t>& first,
                                        const std::vector<std::uint32_t>& edges)
{
    struct Edge {
        std::uint64_t places;
        std::uint32_t at;
    };
    std::vector<Edge> all;
    for (std::uint32_t i = 0; i + 1 < edges.size(); i += 2) {
        const std::uint64_t a = first[edges[i]], b = first[edges[i + 1]];
        all.push_back({std::min(a, b) << 32 | std::max(a, b), i});
    }
    std::sort(all.begin(), all.end(), [](const Edge& a, const Edge& b) {
        return a.places != b.places ? a.places < b.places : a.at > b.at;
    });
    const auto end = std::unique(all.begin(), all.end(),
                                 [](const Edge& a, const Edge& b) { return a.places == b.places; });
    all.erase(end, all.end());
    std::sort(all.begin(), all.end(), [](const Edge& a, const Edge& b) { return a.at < b.at; });
    std::vector<std::uint32_t> kept;
    for (const Edge& edge : all)
        kept.insert(kept.end(), {edges[edge.at], edges[edge.at + 1]});
    return kept;
}

/// Joins edges that go on in each other. Ends of edges are numbered like the indices: 2 e and
/// 2 e + 1.
class EdgeChains {
public:
    /// `first`: for each vertex the first one at the same place.
    EdgeChains(const std::vector<SbVec3f>& positions, const std::vector<std::uint32_t>& first,
               const std::vector<std::uint32_t>& edges)
        : m_positions(positions), m_edges(edges), m_partners(edges.size(), kNone)
    {
        pair(first);
    }

    std::vector<std::uint32_t> run();

private:
    static constexpr std::uint32_t kNone = 0xffffffff;
    static constexpr float kStraightCosine = 0.7f;
    static constexpr std::size_t kMaxEdges = 16; ///< at a vertex where lines go on

    void pair(const std::vector<std::uint32_t>& first);
    void pairAt(const std::uint32_t* ends, std::size_t count);
    SbVec3f direction(std::uint32_t end) const;
    void follow(std::uint32_t end);

    const std::vector<SbVec3f>& m_positions;
    const std::vector<std::uint32_t>& m_edges;
    std::vector<std::uint32_t> m_partners; ///< of each end
    std::vector<bool> m_done;              ///< of each edge
    std::vector<std::uint32_t> m_chained;
};

void EdgeChains::pair(const std::vector<std::uint32_t>& first)
{
    std::vector<std::uint32_t> ends(m_edges.size());
    for (std::uint32_t i = 0; i < ends.size(); ++i)
        ends[i] = i;
    const auto placeOf = [&](std::uint32_t end) { return first[m_edges[end]]; };
    std::sort(ends.begin(), ends.end(), [&](std::uint32_t a, std::uint32_t b) {
        return placeOf(a) != placeOf(b) ? placeOf(a) < placeOf(b) : a < b;
    });
    for (std::size_t begin = 0; begin < ends.size();) {
        std::size_t end = begin + 1;
        while (end < ends.size() && placeOf(ends[end]) == placeOf(ends[begin]))
            ++end;
        pairAt(&ends[begin], end - begin);
        begin = end;
    }
}

SbVec3f EdgeChains::direction(std::uint32_t end) const
{
    SbVec3f d = m_positions[m_edges[end ^ 1u]] - m_positions[m_edges[end]];
    d.normalize();
    return d;
}

void EdgeChains::pairAt(const std::uint32_t* ends, std::size_t count)
{
    if (count == 2) {
        m_partners[ends[0]] = ends[1];
        m_partners[ends[1]] = ends[0];
    }
    if (count < 3 || count > kMaxEdges)
        return;
    for (;;) { // the straightest pair first
        float best = -kStraightCosine;
        std::uint32_t a = kNone, b = kNone;
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t k = i + 1; k < count; ++k) {
                if (m_partners[ends[i]] != kNone || m_partners[ends[k]] != kNone)
                    continue;
                const float cosine = direction(ends[i]).dot(direction(ends[k]));
                if (cosine < best) {
                    best = cosine;
                    a = ends[i];
                    b = ends[k];
                }
            }
        }
        if (a == kNone)
            return;
        m_partners[a] = b;
        m_partners[b] = a;
    }
}

/// Adds the edge that the end belongs to, from that end on, and those that it goes on in.
void EdgeChains::follow(std::uint32_t end)
{
    while (end != kNone && !m_done[end / 2]) {
        m_done[end / 2] = true;
        m_chained.insert(m_chained.end(), {m_edges[end], m_edges[end ^ 1u]});
        end = m_partners[end ^ 1u];
    }
}

std::vector<std::uint32_t> EdgeChains::run()
{
    m_done.assign(m_edges.size() / 2, false);
    m_chained.reserve(m_edges.size());
    for (std::uint32_t end = 0; end < m_edges.size(); ++end) {
        if (m_partners[end] == kNone)
            follow(end);
    }
    for (std::uint32_t end = 0; end < m_edges.size(); end += 2) // what is closed
        follow(end);
    return std::move(m_chained);
}

} // namespace

std::vector<std::uint32_t> chainedEdges(const SoGeometry& geometry)
{
    const std::vector<std::uint32_t> first = firstAtPlace(geometry.positions);
    const std::vector<std::uint32_t> edges = withoutTwins(first, faceEdges(geometry));
    return EdgeChains(geometry.positions, first, edges).run();
}

OutlineEdges outlineEdges(const SoGeometry& geometry)
{
    // What has a size in pixels lies in the plane of the screen; parts with equal offsets may
    // belong to different positions.
    std::vector<SbVec3f> onScreen;
    for (const SbVec2f& offset : geometry.pixelOffsets)
        onScreen.emplace_back(offset[0], offset[1], 0.0f);
    const std::vector<SbVec3f>& positions = onScreen.empty() ? geometry.positions : onScreen;
    std::vector<std::uint32_t> first(positions.size());
    if (onScreen.empty())
        first = firstAtPlace(positions);
    else
        std::iota(first.begin(), first.end(), 0u);
    std::vector<std::uint32_t> triangles(geometry.triangles.size());
    std::transform(geometry.triangles.begin(), geometry.triangles.end(), triangles.begin(),
                   [&first](std::uint32_t i) { return first[i]; });
    OutlineEdges edges;
    eachEdge(listSides(triangles, positions.size()),
             [&](std::uint32_t vertex, const Side* side, const Side* end) {
                 const float bend = end - side == 2
                                        ? normalOf(positions, triangles, side[0].corner)
                                              .dot(normalOf(positions, triangles, side[1].corner))
                                        : -1.0f;
                 if (bend > kFlatCosine)
                     return;
                 if (bend < kSharpCosine) {
                     edges.sharp.insert(edges.sharp.end(), {vertex, side->other});
                     return;
                 }
                 edges.smooth.insert(edges.smooth.end(),
                                     {triangles[thirdCorner(side[0].corner)], vertex, side->other,
                                      triangles[thirdCorner(side[1].corner)]});
             });
    return edges;
}

} // namespace kalmyr::detail
