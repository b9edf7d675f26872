#include "U3DWires.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace kalmyr::detail {

namespace {

using Indices = std::vector<std::uint32_t>;

/// An edge is kept unless two triangles of one face meet at it.
Indices edgesOf(const SoGeometry& geometry)
{
    struct Side {
        std::uint32_t low, high;
        std::int32_t face;
    };
    const bool hasFaces = geometry.triangleFaces.size() >= geometry.getNumTriangles();
    std::vector<Side> sides;
    sides.reserve(geometry.triangles.size());
    for (std::size_t c = 0; c < geometry.triangles.size(); ++c) {
        const std::uint32_t a = geometry.triangles[c];
        const std::uint32_t b = geometry.triangles[c % 3 == 2 ? c - 2 : c + 1];
        const std::size_t triangle = c / 3;
        sides.push_back(
            {std::min(a, b), std::max(a, b),
             hasFaces ? geometry.triangleFaces[triangle] : static_cast<std::int32_t>(triangle)});
    }
    const auto edge = [](const Side& s) { return std::pair(s.low, s.high); };
    std::sort(sides.begin(), sides.end(), [](const Side& x, const Side& y) {
        return std::tie(x.low, x.high, x.face) < std::tie(y.low, y.high, y.face);
    });
    Indices edges;
    for (auto side = sides.begin(); side != sides.end();) {
        const auto end =
            std::find_if(side, sides.end(), [&](const Side& s) { return edge(s) != edge(*side); });
        const bool isInner =
            std::adjacent_find(side, end,
                               [](const Side& x, const Side& y) { return x.face == y.face; })
            != end;
        if (!isInner)
            edges.insert(edges.end(), {side->low, side->high});
        side = end;
    }
    return edges;
}

Indices verticesOf(const SoGeometry& geometry)
{
    Indices vertices;
    for (const Indices* list : {&geometry.triangles, &geometry.lines, &geometry.points})
        vertices.insert(vertices.end(), list->begin(), list->end());
    std::sort(vertices.begin(), vertices.end());
    vertices.erase(std::unique(vertices.begin(), vertices.end()), vertices.end());
    return vertices;
}

/// Between two colours, component by component.
std::uint32_t middle(std::uint32_t a, std::uint32_t b)
{
    std::uint32_t result = 0;
    for (int shift = 0; shift < 32; shift += 8)
        result |= ((a >> shift & 0xff) + (b >> shift & 0xff)) / 2 << shift;
    return result;
}

/// The bits of colours that count, so many that there are not too many different ones.
std::uint32_t coarseMask(const std::vector<std::uint32_t>& colors)
{
    std::uint32_t mask = 0xffffffff;
    for (std::uint32_t dropped = 1; dropped < 8; ++dropped) {
        std::unordered_set<std::uint32_t> different;
        for (const std::uint32_t color : colors) {
            if (different.insert(color & mask).second && different.size() > U3DWire::kMaxColors)
                break;
        }
        if (different.size() <= U3DWire::kMaxColors)
            break;
        mask = 0x01010101u * (0xffu << dropped & 0xff);
    }
    return mask;
}

/// Puts lines or points into sets, one after the other until a set is full.
class Filler {
public:
    Filler(const SoGeometry& geometry, bool isPoints, std::uint32_t mask)
        : m_geometry(geometry), m_isPoints(isPoints), m_mask(mask)
    {
    }

    void add(std::uint32_t a, std::uint32_t b, std::uint32_t color)
    {
        if (m_wires.empty() || m_wires.back().positions.size() + 2 > U3DWire::kMaxPositions)
            beginSet();
        const std::uint32_t from = place(a);
        const std::uint32_t to = place(b);
        m_wires.back().items.push_back({std::min(from, to), std::max(from, to), shader(color)});
    }

    std::vector<U3DWire> take()
    {
        for (U3DWire& wire : m_wires)
            std::stable_sort(wire.items.begin(), wire.items.end(),
                             [](const auto& x, const auto& y) { return x.last < y.last; });
        return std::move(m_wires);
    }

private:
    void beginSet()
    {
        m_wires.emplace_back().isPoints = m_isPoints;
        m_places.clear();
        m_shaders.clear();
    }
    std::uint32_t place(std::uint32_t vertex)
    {
        std::vector<SbVec3f>& positions = m_wires.back().positions;
        const auto [at, isNew] =
            m_places.try_emplace(vertex, static_cast<std::uint32_t>(positions.size()));
        if (isNew)
            positions.push_back(m_geometry.positions[vertex]);
        return at->second;
    }
    /// The first of the colours that differ in bits only that do not count stands for all.
    std::uint32_t shader(std::uint32_t color)
    {
        if (m_geometry.colors.empty())
            return 0;
        std::vector<std::uint32_t>& colors = m_wires.back().colors;
        const auto [at, isNew] =
            m_shaders.try_emplace(color & m_mask, static_cast<std::uint32_t>(colors.size()));
        if (isNew)
            colors.push_back(color);
        return at->second;
    }

    const SoGeometry& m_geometry;
    bool m_isPoints;
    std::uint32_t m_mask;
    std::vector<U3DWire> m_wires;
    std::unordered_map<std::uint32_t, std::uint32_t> m_places;
    std::unordered_map<std::uint32_t, std::uint32_t> m_shaders;
};

} // namespace

std::vector<U3DWire> makeWires(const SoGeometry& geometry, U3DWireSource source,
                               std::size_t& numLeftOut)
{
    Indices made;
    if (source == U3DWireSource::EDGES)
        made = edgesOf(geometry);
    else if (source == U3DWireSource::VERTICES)
        made = verticesOf(geometry);
    const Indices& indices = source == U3DWireSource::LINES    ? geometry.lines
                             : source == U3DWireSource::POINTS ? geometry.points
                                                               : made;
    const bool isPoints = source == U3DWireSource::POINTS || source == U3DWireSource::VERTICES;
    const std::size_t step = isPoints ? 1 : 2;
    std::vector<std::uint32_t> colors;
    if (!geometry.colors.empty()) {
        for (std::size_t i = 0; i + step <= indices.size(); i += step)
            colors.push_back(
                middle(geometry.colors[indices[i]], geometry.colors[indices[i + step - 1]]));
    }
    Filler filler(geometry, isPoints, coarseMask(colors));
    for (std::size_t i = 0; i + step <= indices.size(); i += step) {
        const std::uint32_t a = indices[i];
        const std::uint32_t b = indices[i + step - 1];
        if (!hasPlace(geometry.positions[a]) || !hasPlace(geometry.positions[b]))
            ++numLeftOut;
        else if (isPoints || a != b)
            filler.add(a, b, colors.empty() ? 0 : colors[i / step]);
    }
    return filler.take();
}

} // namespace kalmyr::detail
