#pragma once

#include "FacetContext.h"

namespace kalmyr::detail {

/// Turns the segments and points of an item into facets, with the pattern of its lines.
class LineCollector {
public:
    explicit LineCollector(FacetContext& context) : m_context(context) {}

    /// Collects segments, two indices of vertices each.
    void collectSegments(const std::vector<std::uint32_t>& indices);
    /// Collects the edges that a line drawing of the faces shows.
    void collectOutline();
    /// Collects the points, or all vertices where the draw style says so.
    void collectPoints();
    bool isDashed() const;

private:
    void addSegment(FacetVertex a, FacetVertex b);
    double pixelsAlong(const FacetVertex& a, const FacetVertex& b, const FacetVertex& point) const;
    void addDashes(const LitCorner& from, const LitCorner& to, double start);
    void addDash(const LitCorner& a, const LitCorner& b);
    void addPoint(const FacetVertex& vertex);

    FacetContext& m_context;
    double m_dashStart = 0; ///< of the present segment in the pattern, in pixels
};

} // namespace kalmyr::detail
