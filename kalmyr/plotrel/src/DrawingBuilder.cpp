#include "DrawingBuilder.h"

#include "FacetSorter.h"
#include "OverlapGrid.h"
#include "VisibleParts.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <unordered_map>

namespace kalmyr::detail {

namespace {

constexpr std::size_t kFacetsPerStep = 1024;

VectorVertex toVertex(const Corner& corner)
{
    return {static_cast<float>(corner.x), static_cast<float>(corner.y), corner.color[0],
            corner.color[1], corner.color[2]};
}

float difference(const Corner& a, const Corner& b)
{
    return std::max({std::abs(a.color[0] - b.color[0]), std::abs(a.color[1] - b.color[1]),
                     std::abs(a.color[2] - b.color[2])});
}

std::vector<std::uint32_t> allOf(const FacetList& list)
{
    std::vector<std::uint32_t> indices(list.facets.size());
    std::iota(indices.begin(), indices.end(), 0u);
    return indices;
}

std::vector<FacetShape> shapesOf(const FacetList& list)
{
    std::vector<FacetShape> shapes;
    shapes.reserve(list.facets.size());
    for (const Facet& facet : list.facets)
        shapes.push_back(shapeOf(list, facet));
    return shapes;
}

std::vector<Bounds> boundsOf(const std::vector<FacetShape>& shapes)
{
    std::vector<Bounds> bounds;
    bounds.reserve(shapes.size());
    for (const FacetShape& shape : shapes)
        bounds.push_back(shape.bounds);
    return bounds;
}

} // namespace

bool DrawingBuilder::add(FacetLayer& layer)
{
    return m_options.isCutting || m_options.isLineDrawing ? addCut(layer) : addPainted(layer);
}

void DrawingBuilder::emitAll(const FacetList& list)
{
    for (const Facet& facet : list.facets)
        emit(facet, list.cornersOf(facet));
}

bool DrawingBuilder::sort(FacetList& list, bool isRemovingHidden,
                          std::vector<std::uint32_t>& sorted)
{
    FacetSorter sorter(list, m_tolerance);
    sorter.setRemovingHidden(isRemovingHidden);
    sorter.setProgress(m_progress);
    sorter.sort(allOf(list), sorted);
    return !sorter.wasStopped();
}

bool DrawingBuilder::addSorted(FacetList& list)
{
    std::vector<std::uint32_t> sorted;
    if (!sort(list, true, sorted))
        return false;
    for (const std::uint32_t i : sorted)
        emit(list.facets[i], list.cornersOf(list.facets[i]));
    return true;
}

/// `list` has the visible pieces of the transparent polygons in `surfaces`, and what is seen
/// through them.
bool DrawingBuilder::addClear(FacetList& list, const FacetList& surfaces)
{
    std::vector<std::uint32_t> sorted;
    if (!sort(list, false, sorted))
        return false;
    const std::vector<std::uint32_t> groups = groupsOf(list, sorted, surfaces);
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        m_group = groups[i];
        emit(list.facets[sorted[i]], list.cornersOf(list.facets[sorted[i]]));
    }
    m_group = 0;
    return true;
}

/// Pieces that are drawn one after another make a group while none comes from a polygon that
/// overlaps that of another one: drawn by themselves, their common edges would show. Piece and
/// polygon have the same order.
std::vector<std::uint32_t> DrawingBuilder::groupsOf(const FacetList& list,
                                                    const std::vector<std::uint32_t>& sorted,
                                                    const FacetList& surfaces)
{
    std::unordered_map<std::uint32_t, std::uint32_t> indices; // by order
    for (std::uint32_t i = 0; i < surfaces.facets.size(); ++i)
        indices.emplace(surfaces.facets[i].order, i);
    const std::vector<FacetShape> shapes = shapesOf(surfaces);
    const std::vector<Bounds> bounds = boundsOf(shapes);
    std::vector<std::vector<std::uint32_t>> overlapping(shapes.size());
    OverlapGrid(bounds).forEachPair([&](std::uint32_t i, std::uint32_t j) {
        if (compare(shapes[i], shapes[j], m_tolerance) != Relation::APART) {
            overlapping[i].push_back(j);
            overlapping[j].push_back(i);
        }
    });
    std::vector<std::uint32_t> groups(sorted.size(), 0), latest(shapes.size(), 0);
    const Facet* before = nullptr;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        const Facet& facet = list.facets[sorted[i]];
        if (!facet.isPolygon()) {
            before = nullptr;
            continue;
        }
        const std::uint32_t source = indices.at(facet.order);
        const auto& others = overlapping[source];
        const bool isNew =
            !before || before->opacity != facet.opacity || before->image != facet.image
            || std::any_of(others.begin(), others.end(),
                           [&](std::uint32_t other) { return latest[other] == m_numGroups; });
        if (isNew)
            ++m_numGroups;
        groups[i] = latest[source] = m_numGroups;
        m_mixedGroups.resize(m_numGroups + 1, false);
        const auto first = list.cornersOf(isNew ? facet : *before)[0].color;
        for (const Corner& corner : list.cornersOf(facet))
            if (corner.color != first)
                m_mixedGroups[m_numGroups] = true;
        before = &facet;
    }
    return groups;
}

/// Cuts facets into what opaque or transparent polygons leave of them and what they hide.
bool DrawingBuilder::hide(const FacetList& facets, const FacetList& occluders, FacetList& seen,
                          FacetList* hidden)
{
    const std::vector<FacetShape> shapes = shapesOf(occluders);
    const std::vector<Bounds> bounds = boundsOf(shapes);
    const OverlapGrid grid(bounds);
    VisibleParts parts(m_tolerance);
    const bool isSame = &facets == &occluders;
    for (std::uint32_t i = 0; i < facets.facets.size(); ++i) {
        if (i % kFacetsPerStep == 0 && m_progress
            && !m_progress(static_cast<float>(i) / static_cast<float>(facets.facets.size())))
            return false;
        const FacetShape shape = shapeOf(facets, facets.facets[i]);
        parts.begin(shape);
        grid.forEach(shape.bounds, [&](std::uint32_t j) {
            if (!(isSame && i == j) && !parts.isEmpty()
                && shapes[j].maxZ >= shape.minZ - m_tolerance.at(shape.minZ))
                parts.hide(shapes[j]);
        });
        for (const CornerList& piece : parts.getPieces())
            seen.add(facets.facets[i], piece);
        for (std::size_t k = 0; hidden && k < parts.getHidden().size(); ++k)
            hidden->add(facets.facets[i], parts.getHidden()[k]);
    }
    return true;
}

/// Opaque polygons from back to front, then what is seen of transparent ones. Lines come last, or
/// faces beside them would cover half of their width; but what is seen through transparent polygons
/// comes before those.
bool DrawingBuilder::addPainted(FacetLayer& layer)
{
    FacetList thin, transparent, seen, clear, free;
    for (const Facet& facet : layer.above.facets)
        (facet.isPolygon() ? transparent : thin).add(facet, layer.above.cornersOf(facet));
    if (!hide(thin, layer.opaque, seen, nullptr)
        || !hide(transparent, layer.opaque, clear, nullptr))
        return false;
    if (transparent.facets.empty())
        free = std::move(seen);
    else if (!hide(seen, transparent, free, &clear))
        return false;
    if (!addSorted(layer.opaque) || !addClear(clear, transparent))
        return false;
    emitAll(free);
    return true;
}

/// Only what is seen, in any order; transparent polygons and what is behind them from back to
/// front.
bool DrawingBuilder::addCut(const FacetLayer& layer)
{
    FacetList seen, clear, thin;
    for (const Facet& facet : layer.above.facets)
        (facet.isPolygon() ? clear : thin).add(facet, layer.above.cornersOf(facet));
    if (!m_options.isLineDrawing && !hide(layer.opaque, layer.opaque, seen, nullptr))
        return false;
    emitAll(seen);
    seen = {};
    if (!hide(thin, layer.opaque, seen, nullptr))
        return false;
    if (clear.facets.empty()) {
        emitAll(seen);
        return true;
    }
    FacetList pieces, free;
    if (!hide(clear, layer.opaque, pieces, nullptr) || !hide(seen, clear, free, &pieces)
        || !addClear(pieces, clear))
        return false;
    emitAll(free);
    return true;
}

void DrawingBuilder::emit(const Facet& facet, std::span<const Corner> corners)
{
    if (corners.size() > 2)
        return emitPolygon(facet, corners);
    if (corners.size() == 2)
        return emitSegment(facet, corners[0], corners[1]);
    VectorPrimitive& point = m_drawing.add(VectorPrimitive::POINT);
    point.width = facet.width;
    point.opacity = facet.opacity;
    m_drawing.addVertex(toVertex(corners[0]));
}

void DrawingBuilder::emitPolygon(const Facet& facet, std::span<const Corner> corners)
{
    // Parts of a surface of many colors are all shaded, if it is transparent, so that one object
    // paints all.
    const bool isMixed = m_group > 0 && m_mixedGroups[m_group] && facet.image < 0;
    float range = 0;
    for (std::size_t i = 0; i < corners.size(); ++i)
        for (std::size_t j = i + 1; j < corners.size(); ++j)
            range = std::max(range, difference(corners[i], corners[j]));
    const auto begin = [&] {
        VectorPrimitive& polygon = m_drawing.add(VectorPrimitive::POLYGON);
        polygon.opacity = facet.opacity;
        polygon.image = facet.image;
        polygon.shaded = (isMixed || range > 0) && facet.image < 0;
        polygon.group = m_group;
    };
    if (isMixed || (range > m_options.tolerance / 2 && facet.image < 0)) {
        for (std::size_t i = 2; i < corners.size(); ++i) {
            begin();
            for (const Corner* corner : {&corners[0], &corners[i - 1], &corners[i]})
                m_drawing.addVertex(toVertex(*corner));
        }
        return;
    }
    Corner mean;
    const auto share = 1.0f / static_cast<float>(corners.size());
    for (const Corner& corner : corners)
        for (std::size_t c = 0; c < 3; ++c)
            mean.color[c] += corner.color[c] * share;
    range = 0;
    begin();
    for (const Corner& corner : corners) {
        VectorVertex vertex = toVertex(corner);
        vertex.red = mean.color[0];
        vertex.green = mean.color[1];
        vertex.blue = mean.color[2];
        m_drawing.addVertex(vertex);
    }
}

/// In steps of even colour; segments that follow each other become one line.
void DrawingBuilder::emitSegment(const Facet& facet, const Corner& a, const Corner& b)
{
    constexpr float kMaxSteps = 64;
    const int steps = static_cast<int>(
        std::clamp(std::ceil(difference(a, b) / m_options.tolerance), 1.0f, kMaxSteps));
    for (int i = 0; i < steps; ++i) {
        VectorVertex from = toVertex(interpolate(a, b, double(i) / steps));
        VectorVertex to = toVertex(interpolate(a, b, double(i + 1) / steps));
        const VectorVertex color = toVertex(interpolate(a, b, (i + 0.5) / steps));
        for (VectorVertex* end : {&from, &to}) {
            end->red = color.red;
            end->green = color.green;
            end->blue = color.blue;
        }
        VectorPrimitive* last =
            m_drawing.primitives.empty() ? nullptr : &m_drawing.primitives.back();
        const VectorVertex* end =
            last && last->kind == VectorPrimitive::LINE ? &m_drawing.vertices.back() : nullptr;
        if (end && end->x == from.x && end->y == from.y && end->red == from.red
            && end->green == from.green && end->blue == from.blue && last->width == facet.width
            && last->opacity == facet.opacity) {
            m_drawing.addVertex(to);
            continue;
        }
        VectorPrimitive& line = m_drawing.add(VectorPrimitive::LINE);
        line.width = facet.width;
        line.opacity = facet.opacity;
        m_drawing.addVertex(from);
        m_drawing.addVertex(to);
    }
}

} // namespace kalmyr::detail
