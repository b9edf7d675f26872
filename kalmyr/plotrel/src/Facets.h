#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace kalmyr::detail {

/// A corner of a facet: place on the page in millimetres, how near it is, and its colour.
///
/// Nearness is linear on the page along every plane of the scene: the inverse of the distance for a
/// perspective view, the distance with its sign turned for a parallel one, scaled by the collector
/// so that the scene spans about as much as the page.
struct Corner {
    double x = 0;
    double y = 0;
    double z = 0; ///< larger is nearer
    std::array<float, 3> color{};
};

/// A convex polygon, a segment (two corners) or a point (one) of the scene as it is seen.
struct Facet {
    std::uint32_t first = 0; ///< in FacetList::corners
    std::uint32_t count = 0;
    std::uint32_t order = 0; ///< what is equally near is covered by what has the higher number
    std::int32_t image = -1;
    float opacity = 1;
    float width = 0;       ///< of segments and points, millimetres
    bool isOpaque = false; ///< a polygon that hides what is behind it

    bool isPolygon() const { return count > 2; }
};

struct Bounds {
    double minX, minY, maxX, maxY;

    /// Whether they have a place in common, borders included.
    bool touches(const Bounds& o) const
    {
        return minX <= o.maxX && o.minX <= maxX && minY <= o.maxY && o.minY <= maxY;
    }
};

/// Facets and their corners.
struct FacetList {
    std::vector<Corner> corners;
    std::vector<Facet> facets;

    std::span<const Corner> cornersOf(const Facet& facet) const
    {
        return {corners.data() + facet.first, facet.count};
    }
    /// Appends a facet with the look of `like` and corners of its own; returns its index.
    std::uint32_t add(const Facet& like, std::span<const Corner> own)
    {
        Facet facet = like;
        facet.first = static_cast<std::uint32_t>(corners.size());
        facet.count = static_cast<std::uint32_t>(own.size());
        corners.insert(corners.end(), own.begin(), own.end());
        facets.push_back(facet);
        return static_cast<std::uint32_t>(facets.size() - 1);
    }
    Bounds boundsOf(const Facet& facet) const;
};

/// Nearness along the plane of a facet: z = a x + b y + c.
struct DepthPlane {
    double a = 0;
    double b = 0;
    double c = 0;
    bool isSteep = false; ///< seen from its edge: a, b and c are of no use

    double at(double x, double y) const { return a * x + b * y + c; }
};
DepthPlane planeOf(std::span<const Corner> corners);

/// Twice the area, positive for counter-clockwise polygons.
double doubleArea(std::span<const Corner> corners);

Corner interpolate(const Corner& a, const Corner& b, double t);

using CornerList = std::vector<Corner>;

/// Splits a convex polygon or a segment by the line or plane on which `distance` is zero; gives the
/// distance of each corner, positive in front. Corners with a distance of 0 go to both.
void split(std::span<const Corner> corners, std::span<const double> distances, CornerList& front,
           CornerList& back);

} // namespace kalmyr::detail
