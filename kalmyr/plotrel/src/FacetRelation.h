#pragma once

#include "Facets.h"

namespace kalmyr::detail {

/// How much nearness may differ where things count as equally near.
struct DepthTolerance {
    double relative = 4e-6; ///< of the nearness
    double absolute = 1e-9;

    double at(double z) const { return relative * (z < 0 ? -z : z) + absolute; }
};

/// A facet as comparisons need it.
struct FacetShape {
    std::span<const Corner> corners;
    DepthPlane plane; ///< of polygons
    Bounds bounds;
    std::uint32_t order;
    double minZ;
    double maxZ;
};
FacetShape shapeOf(const FacetList& list, const Facet& facet);

enum class Relation {
    APART,  ///< they do not overlap on the page, or neither has a plane
    BEHIND, ///< the first is to be drawn before the second
    IN_FRONT,
    CROSSING ///< each is in front of the other somewhere
};

/// Compares two facets, of which at least one is a polygon, where they overlap. Where they are
/// equally near the one with the lower order is behind.
Relation compare(const FacetShape& a, const FacetShape& b, const DepthTolerance& tolerance);

/// Whether the place lies within a convex polygon, on its border or outside within `slack`
/// millimetres; a negative slack keeps away from the border.
bool contains(std::span<const Corner> polygon, double x, double y, double slack);

} // namespace kalmyr::detail
