#pragma once

#include "VectorDrawing.h"

#include <kalmyr/base/Export.h>

#include <cstdint>
#include <span>
#include <vector>

/// \file
/// A drawing for formats that know flat colours and whole coordinates.

namespace kalmyr::detail {

/// A place in whole units of a format, y upwards from the lower edge of the page.
struct GridPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
    friend bool operator==(const GridPoint&, const GridPoint&) = default;
};

/// 0xRRGGBB.
using PackedColor = std::uint32_t;

PackedColor packColor(float red, float green, float blue);
inline std::uint8_t redOf(PackedColor color)
{
    return static_cast<std::uint8_t>(color >> 16);
}
inline std::uint8_t greenOf(PackedColor color)
{
    return static_cast<std::uint8_t>(color >> 8);
}
inline std::uint8_t blueOf(PackedColor color)
{
    return static_cast<std::uint8_t>(color);
}

/// Receives the parts of a drawing from back to front; a writer of a flat format implements it.
class FlatPainter {
public:
    virtual ~FlatPainter() = default;
    /// A closed outline, counter-clockwise; it may touch itself but does not cross itself.
    virtual void fill(std::span<const GridPoint> outline, PackedColor color) = 0;
    /// An open polyline of two different places or more.
    virtual void stroke(std::span<const GridPoint> line, float millimetres, PackedColor color) = 0;
};

/// Paints the background in bands, polygons, of which consecutive ones in one colour that share an
/// edge become one outline, lines, and points as polygons. Shaded triangles get their mean colour;
/// opacity, images and texts are left out. What has no area or length in whole units is dropped.
PLOTREL_API void paintFlat(const VectorDrawing& drawing, double unitsPerMillimetre,
                           bool withBackground, FlatPainter& painter);

/// A length in whole units.
std::int32_t toUnits(double millimetres, double unitsPerMillimetre);

/// The title in ASCII, other characters as "?", at most `limit` bytes.
std::string plainTitle(const VectorDrawing& drawing, std::size_t limit);

} // namespace kalmyr::detail
