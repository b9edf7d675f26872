#pragma once

#include "VectorDrawing.h"

#include <span>
#include <vector>

namespace kalmyr::detail {

/// Convex polygons by their corners, counter-clockwise where nothing else is said; colours are
/// interpolated along with the places.
using Corners = std::vector<VectorVertex>;

/// An upright rectangle; at first it holds nothing.
struct PageBox {
    float minX = 1e30f;
    float minY = 1e30f;
    float maxX = -1e30f;
    float maxY = -1e30f;

    void extend(float x, float y)
    {
        minX = x < minX ? x : minX;
        minY = y < minY ? y : minY;
        maxX = x > maxX ? x : maxX;
        maxY = y > maxY ? y : maxY;
    }
    void grow(float by)
    {
        minX -= by;
        minY -= by;
        maxX += by;
        maxY += by;
    }
    bool overlaps(const PageBox& other) const
    {
        return minX <= other.maxX && other.minX <= maxX && minY <= other.maxY && other.minY <= maxY;
    }
};

PageBox boxOf(std::span<const VectorVertex> places);

/// Positive when c lies left of the way from a to b: twice the area of the triangle.
inline double sideOf(const VectorVertex& a, const VectorVertex& b, const VectorVertex& c)
{
    return (double(b.x) - a.x) * (double(c.y) - a.y) - (double(b.y) - a.y) * (double(c.x) - a.x);
}

/// Twice the area; negative for clockwise ones.
double signedArea(std::span<const VectorVertex> corners);
/// Whether nothing of a polygon can be seen: it is thinner than a fifth of a micrometre.
bool isSliver(std::span<const VectorVertex> corners);
bool contains(std::span<const VectorVertex> polygon, const VectorVertex& place);

/// The place between a (share 0) and b (share 1), with its colour.
VectorVertex between(const VectorVertex& a, const VectorVertex& b, double share);
/// The part of `polygon` left of the way from a to b goes to `inside`.
void clipToLeft(std::span<const VectorVertex> polygon, const VectorVertex& a, const VectorVertex& b,
                Corners& inside);
/// The part of `polygon` within `window`, with the colours of `polygon`. Empty when they do not
/// overlap. `result` and `scratch` must be others than the arguments.
void intersect(std::span<const VectorVertex> polygon, std::span<const VectorVertex> window,
               Corners& result, Corners& scratch);
/// The greatest difference of a component.
float colorDifference(const VectorVertex& a, const VectorVertex& b);
inline void setColor(VectorVertex& place, const VectorVertex& color)
{
    place.red = color.red;
    place.green = color.green;
    place.blue = color.blue;
}

/// Appends a polygon with colours that differ as shaded triangles, others as one flat polygon, to
/// a drawing. Returns how many primitives that were.
int addPolygon(VectorDrawing& drawing, std::span<const VectorVertex> corners, float opacity);

} // namespace kalmyr::detail
