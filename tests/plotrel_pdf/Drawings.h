#pragma once

#include "VectorDrawing.h"

#include <initializer_list>
#include <utility>

namespace support {

using kalmyr::detail::VectorDrawing;
using kalmyr::detail::VectorPrimitive;
using kalmyr::detail::VectorVertex;

constexpr VectorVertex red(float x, float y)
{
    return {x, y, 1, 0, 0};
}
constexpr VectorVertex green(float x, float y)
{
    return {x, y, 0, 0.6f, 0};
}
constexpr VectorVertex blue(float x, float y)
{
    return {x, y, 0.2f, 0.2f, 1};
}

inline VectorPrimitive& add(VectorDrawing& drawing, VectorPrimitive::Kind kind,
                            std::initializer_list<VectorVertex> vertices)
{
    drawing.add(kind);
    for (const VectorVertex& vertex : vertices)
        drawing.addVertex(vertex);
    return drawing.primitives.back();
}

inline VectorPrimitive& polygon(VectorDrawing& drawing,
                                std::initializer_list<VectorVertex> vertices)
{
    return add(drawing, VectorPrimitive::POLYGON, vertices);
}

inline VectorPrimitive& shaded(VectorDrawing& drawing, const VectorVertex& a, const VectorVertex& b,
                               const VectorVertex& c)
{
    VectorPrimitive& one = polygon(drawing, {a, b, c});
    one.shaded = true;
    return one;
}

/// A page of 100 by 60 mm with a drawing of 90 by 50.
inline VectorDrawing emptyPage()
{
    VectorDrawing drawing;
    drawing.pageWidth = 100;
    drawing.pageHeight = 60;
    drawing.x = drawing.y = 5;
    drawing.width = 90;
    drawing.height = 50;
    return drawing;
}

inline void addText(VectorDrawing& drawing, const char* text, float x, float y, float length)
{
    VectorPrimitive& one = drawing.add(VectorPrimitive::TEXT);
    one.first = static_cast<std::uint32_t>(drawing.texts.size());
    drawing.texts.push_back({text, x, y, 1, 0, 4, length});
}

/// A picture of 4 by 2 pixels; with alpha its left half is half transparent.
inline void addImage(VectorDrawing& drawing, float x, float y, float width, float height,
                     bool alpha)
{
    std::vector<unsigned char> pixels;
    for (int row = 0; row < 2; ++row)
        for (int column = 0; column < 4; ++column) {
            pixels.push_back(static_cast<unsigned char>(60 * column));
            pixels.push_back(static_cast<unsigned char>(200 * row));
            pixels.push_back(90);
            if (alpha)
                pixels.push_back(column < 2 ? 128 : 255);
        }
    drawing.images.push_back(
        {SbImage(SbVec2i32(4, 2), alpha ? 4 : 3, pixels.data()), x, y, width, height});
}

/// Everything that both formats express: overlapping flat and shaded faces in both windings,
/// a line with a corner, points, windows of an image.
inline VectorDrawing sampler()
{
    VectorDrawing drawing = emptyPage();
    drawing.title = "A (sampler) \\ of marks";
    drawing.background = {{SbColor(0.9f, 0.9f, 1), 0},
                          {SbColor(0.5f, 0.7f, 0.5f), 0.6f},
                          {SbColor(0.8f, 0.7f, 0.6f), 1}};
    // One colour in both windings, overlapping: the union is filled.
    polygon(drawing, {red(10, 10), red(30, 10), red(30, 25), red(10, 25)});
    polygon(drawing, {red(20, 15), red(20, 30), red(40, 30), red(40, 15)});
    shaded(drawing, red(35, 10), green(60, 12), blue(45, 35));
    shaded(drawing, green(60, 12), blue(45, 35), red(66, 34));
    // Flat, between meshes, above the ones before it and below the next.
    polygon(drawing, {blue(50, 15), blue(62, 15), blue(62, 22), blue(56, 26), blue(50, 22)});
    shaded(drawing, {58, 18, 1, 1, 0}, {75, 14, 0, 1, 1}, {70, 28, 1, 0, 1});
    add(drawing, VectorPrimitive::LINE, {green(8, 50), green(40, 46), green(20, 34)}).width = 3;
    add(drawing, VectorPrimitive::LINE, {red(94, 8), red(80, 8), red(80, 3)}).width = 4;
    add(drawing, VectorPrimitive::POINT, {blue(50, 45)}).width = 8;
    add(drawing, VectorPrimitive::POINT, {red(60, 47)}).width = 5;
    addImage(drawing, 70, 30, 24, 20, false);
    polygon(drawing, {red(70, 31), red(93, 31), red(88, 40), red(70, 40)}).image = 0;
    polygon(drawing, {red(72, 42), red(90, 50), red(72, 50)}).image = 0;
    return drawing;
}

} // namespace support
