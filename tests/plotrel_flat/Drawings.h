#pragma once

#include "Canvas.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <random>
#include <vector>

namespace flat {

/// An empty drawing in the middle of a page, with a border of a tenth of the height.
inline VectorDrawing emptyDrawing(float width = 100, float height = 75)
{
    VectorDrawing drawing;
    drawing.pageWidth = width;
    drawing.pageHeight = height;
    drawing.x = drawing.y = height / 10;
    drawing.width = width - height / 5;
    drawing.height = height - height / 5;
    drawing.title = "Drawing \xc3\xa4";
    return drawing;
}

inline VectorVertex vertex(float x, float y, const Color& color)
{
    return {x, y, static_cast<float>(color[0]), static_cast<float>(color[1]),
            static_cast<float>(color[2])};
}

inline VectorPrimitive& addPolygon(VectorDrawing& drawing, std::initializer_list<Place> corners,
                                   const Color& color, float opacity = 1)
{
    drawing.add(VectorPrimitive::POLYGON).opacity = opacity;
    for (const Place& corner : corners)
        drawing.addVertex(
            vertex(static_cast<float>(corner.x), static_cast<float>(corner.y), color));
    return drawing.primitives.back();
}

inline VectorPrimitive& addRectangle(VectorDrawing& drawing, double x, double y, double width,
                                     double height, const Color& color, float opacity = 1)
{
    return addPolygon(drawing, {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}},
                      color, opacity);
}

inline VectorPrimitive& addShaded(VectorDrawing& drawing, const VectorVertex& a,
                                  const VectorVertex& b, const VectorVertex& c, float opacity = 1)
{
    VectorPrimitive& one = drawing.add(VectorPrimitive::POLYGON);
    one.opacity = opacity;
    one.shaded = true;
    for (const VectorVertex& corner : {a, b, c})
        drawing.addVertex(corner);
    return drawing.primitives.back();
}

inline VectorPrimitive& addLine(VectorDrawing& drawing, std::initializer_list<Place> places,
                                float width, const Color& color, float opacity = 1)
{
    VectorPrimitive& one = drawing.add(VectorPrimitive::LINE);
    one.opacity = opacity;
    one.width = width;
    for (const Place& place : places)
        drawing.addVertex(vertex(static_cast<float>(place.x), static_cast<float>(place.y), color));
    return drawing.primitives.back();
}

inline VectorPrimitive& addPoint(VectorDrawing& drawing, const Place& place, float diameter,
                                 const Color& color, float opacity = 1)
{
    VectorPrimitive& one = drawing.add(VectorPrimitive::POINT);
    one.opacity = opacity;
    one.width = diameter;
    drawing.addVertex(vertex(static_cast<float>(place.x), static_cast<float>(place.y), color));
    return drawing.primitives.back();
}

inline void addGradient(VectorDrawing& drawing)
{
    drawing.background = {{SbColor(0.2f, 0.3f, 0.6f), 0},
                          {SbColor(0.9f, 0.9f, 0.8f), 0.6f},
                          {SbColor(0.3f, 0.5f, 0.2f), 1}};
}

/// The same numbers on every machine.
class Dice {
public:
    explicit Dice(unsigned seed) : m_engine(seed) {}
    double next(double least, double most)
    {
        return least + (most - least) * static_cast<double>(m_engine()) / 4294967296.0;
    }
    std::size_t pick(std::size_t count) { return m_engine() % count; }
    Place place(const VectorDrawing& drawing, double margin)
    {
        const double x = next(drawing.x + margin, drawing.x + drawing.width - margin);
        return {x, next(drawing.y + margin, drawing.y + drawing.height - margin)};
    }
    Color color() { return {next(0, 1), next(0, 1), next(0, 1)}; }

private:
    std::mt19937 m_engine;
};

/// A convex polygon with corners on a circle.
inline VectorPrimitive& addRandomPolygon(VectorDrawing& drawing, Dice& dice, double radius,
                                         float opacity)
{
    const Place middle = dice.place(drawing, radius);
    const auto corners = 3 + dice.pick(4);
    const bool shaded = dice.pick(2) == 0;
    const Color color = dice.color();
    VectorPrimitive& one = drawing.add(VectorPrimitive::POLYGON);
    one.opacity = opacity;
    one.shaded = shaded && corners == 3;
    const double turn = dice.next(0, 6);
    const double way = dice.pick(2) == 0 ? 1 : -1;
    for (std::size_t i = 0; i < corners; ++i) {
        const double angle =
            way * (turn + 6.2831853 * static_cast<double>(i) / static_cast<double>(corners));
        const Place place{middle.x + radius * std::cos(angle), middle.y + radius * std::sin(angle)};
        drawing.addVertex(vertex(static_cast<float>(place.x), static_cast<float>(place.y),
                                 one.shaded ? dice.color() : color));
    }
    return drawing.primitives.back();
}

/// Opaque and flat: all that these formats know. Lines keep away from the border by a margin, which
/// may be negative.
inline VectorDrawing mixedDrawing(float width, float height, int count, double lineMargin)
{
    VectorDrawing drawing = emptyDrawing(width, height);
    addGradient(drawing);
    Dice dice(11);
    const std::vector<Color> colors{{1, 0, 0}, {0, 0.6, 0}, {0.1, 0.1, 0.9}, {1, 1, 1}, {0, 0, 0}};
    for (int i = 0; i < count; ++i) {
        VectorPrimitive& one = addRandomPolygon(drawing, dice, height * dice.next(0.02, 0.15), 1);
        one.shaded = false;
        const Color color = colors[dice.pick(colors.size())];
        for (std::uint32_t k = 0; k < one.count; ++k) {
            const VectorVertex& place = drawing.vertices[one.first + k];
            drawing.vertices[one.first + k] = vertex(place.x, place.y, color);
        }
        if (i % 5 == 0)
            addLine(drawing,
                    {dice.place(drawing, lineMargin),
                     dice.place(drawing, std::max(0.0, lineMargin)),
                     dice.place(drawing, std::max(0.0, lineMargin))},
                    static_cast<float>(dice.next(0.2, 2)), dice.color());
        if (i % 7 == 0)
            addPoint(drawing, dice.place(drawing, std::max(0.0, lineMargin)),
                     static_cast<float>(dice.next(0.5, 6)), dice.color());
    }
    return drawing;
}

} // namespace flat
