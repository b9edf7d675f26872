#pragma once

#include "FacetRelation.h"

#include <vector>

namespace kalmyr::detail {

/// Cuts away from facets what opaque polygons in front of them hide.
class VisibleParts {
public:
    explicit VisibleParts(const DepthTolerance& tolerance) : m_tolerance(tolerance) {}

    /// Begins with the whole facet.
    void begin(const FacetShape& facet);
    /// Takes away what the polygon hides of the facet.
    void hide(const FacetShape& occluder);
    /// Returns the visible pieces: convex polygons, or segments of a segment; none when all is
    /// hidden. Valid until the next call of a function that is not const.
    const std::vector<CornerList>& getPieces() const { return m_pieces; }
    /// Returns the hidden pieces, which are convex and do not overlap.
    const std::vector<CornerList>& getHidden() const { return m_hidden; }
    bool isEmpty() const { return m_pieces.empty(); }

    /// Whether the polygon, or its border, hides a place of a facet of that order.
    bool hidesPlace(const FacetShape& occluder, std::uint32_t order, const Corner& place) const;

private:
    bool cut(const CornerList& piece, const FacetShape& occluder);
    double slackAt(const Corner& corner, const DepthPlane& plane) const;

    DepthTolerance m_tolerance;
    std::uint32_t m_order = 0;
    bool m_isThin = false; ///< a segment or a point
    std::vector<CornerList> m_pieces, m_outside, m_kept, m_hidden;
    CornerList m_inside, m_front, m_back; ///< scratch of cut()
    std::vector<double> m_distances;
    std::vector<std::size_t> m_crossed;
};

} // namespace kalmyr::detail
