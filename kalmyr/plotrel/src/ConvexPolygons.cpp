#include "ConvexPolygons.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

constexpr double kSliver = 2e-4; // Millimetres.
constexpr float kSameColor = 0.5f / 255;

} // namespace

PageBox boxOf(std::span<const VectorVertex> places)
{
    PageBox box;
    for (const VectorVertex& place : places)
        box.extend(place.x, place.y);
    return box;
}

double signedArea(std::span<const VectorVertex> corners)
{
    double area = 0;
    for (std::size_t i = 2; i < corners.size(); ++i)
        area += sideOf(corners[0], corners[i - 1], corners[i]);
    return area;
}

bool isSliver(std::span<const VectorVertex> corners)
{
    double length = 0;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const VectorVertex& next = corners[(i + 1) % corners.size()];
        length += std::abs(next.x - corners[i].x) + std::abs(next.y - corners[i].y);
    }
    return corners.size() < 3 || std::abs(signedArea(corners)) <= kSliver * length;
}

bool contains(std::span<const VectorVertex> polygon, const VectorVertex& place)
{
    for (std::size_t i = 0; i < polygon.size(); ++i)
        if (sideOf(polygon[i], polygon[(i + 1) % polygon.size()], place) < 0)
            return false;
    return polygon.size() >= 3;
}

VectorVertex between(const VectorVertex& a, const VectorVertex& b, double share)
{
    const auto mixed = [share](float from, float to) {
        return static_cast<float>(from + (double(to) - from) * share);
    };
    return {mixed(a.x, b.x), mixed(a.y, b.y), mixed(a.red, b.red), mixed(a.green, b.green),
            mixed(a.blue, b.blue)};
}

void clipToLeft(std::span<const VectorVertex> polygon, const VectorVertex& a, const VectorVertex& b,
                Corners& inside)
{
    inside.clear();
    if (polygon.empty())
        return;
    const VectorVertex* last = &polygon.back();
    double lastSide = sideOf(a, b, *last);
    for (const VectorVertex& corner : polygon) {
        const double side = sideOf(a, b, corner);
        if ((side > 0 && lastSide < 0) || (side < 0 && lastSide > 0))
            inside.push_back(between(*last, corner, lastSide / (lastSide - side)));
        if (side >= 0)
            inside.push_back(corner);
        last = &corner;
        lastSide = side;
    }
}

void intersect(std::span<const VectorVertex> polygon, std::span<const VectorVertex> window,
               Corners& result, Corners& scratch)
{
    result.assign(polygon.begin(), polygon.end());
    for (std::size_t i = 0; i < window.size() && result.size() >= 3; ++i) {
        clipToLeft(result, window[i], window[(i + 1) % window.size()], scratch);
        result.swap(scratch);
    }
    if (isSliver(result))
        result.clear();
}

float colorDifference(const VectorVertex& a, const VectorVertex& b)
{
    return std::max(
        {std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
}

int addPolygon(VectorDrawing& drawing, std::span<const VectorVertex> corners, float opacity)
{
    const bool flat = std::all_of(corners.begin(), corners.end(), [&](const VectorVertex& one) {
        return colorDifference(corners[0], one) < kSameColor;
    });
    const std::size_t step = flat ? corners.size() - 2 : 1; // Corners beyond the first two.
    int count = 0;
    for (std::size_t i = 2; i < corners.size(); i += step, ++count) {
        VectorPrimitive& one = drawing.add(VectorPrimitive::POLYGON);
        one.opacity = opacity;
        one.shaded = !flat;
        drawing.addVertex(corners[0]);
        for (std::size_t k = i - 1; k < i + step; ++k)
            drawing.addVertex(corners[k]);
    }
    return count;
}

} // namespace kalmyr::detail
