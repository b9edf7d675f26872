#include "Flattening.h"

#include "Canvas.h"
#include "Drawings.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace flat;
using namespace kalmyr::detail;

namespace {

constexpr double kPixels = 8;

Difference mixedDifference(VectorDrawing drawing, std::size_t* count = nullptr)
{
    const Canvas meant = paintDrawing(drawing, kPixels);
    mixTransparency(drawing);
    for (const VectorPrimitive& one : drawing.primitives)
        EXPECT_EQ(one.opacity, 1.0f);
    if (count)
        *count = drawing.primitives.size();
    return compare(meant, paintDrawing(drawing, kPixels));
}

void addMesh(VectorDrawing& drawing, Dice& dice, double x, double y, int columns, double step)
{
    for (int row = 0; row < columns; ++row)
        for (int column = 0; column < columns; ++column) {
            const double left = x + column * step;
            const double low = y + row * step;
            addPolygon(drawing, {{left, low}, {left + step, low}, {left, low + step}},
                       dice.color());
            addPolygon(drawing, {{left + step, low}, {left + step, low + step}, {left, low + step}},
                       dice.color());
        }
}

} // namespace

TEST(MixTransparency, EqualsBlending)
{
    for (unsigned seed = 1; seed <= 6; ++seed) {
        Dice dice(seed);
        VectorDrawing drawing = emptyDrawing();
        if (seed % 2 == 0)
            addGradient(drawing);
        for (int i = 0; i < 40; ++i)
            addRandomPolygon(drawing, dice, dice.next(2, 15),
                             dice.pick(2) == 0 ? 1 : static_cast<float>(dice.next(0.1, 0.9)));
        const Difference difference = mixedDifference(drawing);
        // Pixels at cut edges are painted by either side.
        EXPECT_LE(difference.mean, 0.1) << seed;
        EXPECT_LE(difference.share, 0.002) << seed;
    }
}

TEST(MixTransparency, LeavesOpaqueDrawingAsItIs)
{
    Dice dice(3);
    VectorDrawing drawing = emptyDrawing();
    addMesh(drawing, dice, 20, 20, 5, 4);
    addLine(drawing, {{20, 20}, {50, 50}}, 1, {0, 0, 0});
    VectorDrawing mixed = drawing;
    mixTransparency(mixed);
    EXPECT_EQ(mixed.primitives.size(), drawing.primitives.size());
    EXPECT_EQ(mixed.vertices.size(), drawing.vertices.size());
}

TEST(MixTransparency, ShowsLinesAndPointsThroughPolygons)
{
    VectorDrawing drawing = emptyDrawing();
    addRectangle(drawing, 15, 15, 60, 20, {0.2, 0.8, 0.2});
    addLine(drawing, {{12, 12}, {40, 40}, {45, 20}, {70, 50}, {80, 12}}, 0.5f, {0, 0, 0});
    addPoint(drawing, {30, 45}, 4, {1, 0, 0});
    addPoint(drawing, {85, 45}, 4, {1, 0, 0}); // Not below.
    addRectangle(drawing, 25, 10, 35, 45, {0, 0, 1}, 0.4f);
    EXPECT_LE(mixedDifference(drawing).share, 0.001);
}

TEST(MixTransparency, MixesTransparentLinesAndPointsWithWhatLiesBelow)
{
    VectorDrawing drawing = emptyDrawing();
    addRectangle(drawing, 10, 10, 30, 50, {0, 0, 0});
    addLine(drawing, {{20, 30}, {30, 30}, {50, 30}, {70, 30}}, 1, {1, 0, 0}, 0.5f);
    addPoint(drawing, {30, 20}, 3, {0, 1, 0}, 0.25f);
    mixTransparency(drawing);
    const Canvas canvas = paintDrawing(drawing, kPixels);
    EXPECT_NEAR(canvas.colorAt(25, 30)[0], 0.5, 0.01);
    EXPECT_NEAR(canvas.colorAt(25, 30)[1], 0, 0.01);
    EXPECT_NEAR(canvas.colorAt(60, 30)[1], 0.5, 0.01);
    EXPECT_NEAR(canvas.colorAt(30, 20)[1], 0.25, 0.01);
}

TEST(MixTransparency, LayersOfGlassGrowModestly)
{
    // Sixteen panes upon each other; blended pairwise they would be 65,536 pieces.
    std::size_t panes = 0;
    VectorDrawing drawing = emptyDrawing();
    for (int i = 0; i < 16; ++i)
        addRectangle(drawing, 20 + i * 0.7, 15 + i * 0.4, 30, 30, {i / 16.0, 0.5, 1 - i / 16.0},
                     0.3f);
    EXPECT_LE(mixedDifference(drawing, &panes).share, 0.001);
    EXPECT_LE(panes, 1500u);

    // Two tessellated layers above each other and above a mesh.
    std::size_t layers = 0;
    Dice dice(5);
    VectorDrawing meshes = emptyDrawing();
    addMesh(meshes, dice, 20, 12, 20, 2);
    const std::size_t first = meshes.primitives.size();
    addMesh(meshes, dice, 22.3, 14.1, 16, 2.2);
    addMesh(meshes, dice, 21.7, 13.3, 16, 2.1);
    for (std::size_t i = first; i < meshes.primitives.size(); ++i)
        meshes.primitives[i].opacity = 0.5f;
    const Difference difference = mixedDifference(meshes, &layers);
    EXPECT_LE(difference.mean, 0.2);
    EXPECT_LE(difference.share, 0.005);
    EXPECT_LE(layers, 30 * meshes.primitives.size());
}

TEST(MixTransparency, PaneAboveManyThingsShowsVisibleOnesOnly)
{
    Dice dice(7);
    VectorDrawing drawing = emptyDrawing();
    addMesh(drawing, dice, 20, 12, 25, 1.8); // Hidden by the next one.
    addMesh(drawing, dice, 19, 11, 30, 1.6);
    const std::size_t visible = 30 * 30 * 2;
    const std::size_t before = drawing.primitives.size();
    addRectangle(drawing, 15, 10, 60, 50, {0.5, 0.5, 1}, 0.5f);
    std::size_t after = 0;
    EXPECT_LE(mixedDifference(drawing, &after).share, 0.002);
    EXPECT_LE(after, before + visible + 10);
}

TEST(MixTransparency, CoincidingAndDegenerateThingsBlendAsWell)
{
    for (unsigned seed = 1; seed <= 8; ++seed) {
        Dice dice(seed);
        VectorDrawing drawing = emptyDrawing();
        const auto place = [&] {
            return Place{20.013 + 10 * static_cast<double>(dice.pick(5)),
                         12.027 + 10 * static_cast<double>(dice.pick(5))};
        };
        for (int i = 0; i < 40; ++i) {
            const float opacity = dice.pick(2) == 0 ? 1 : 0.4f;
            const Place a = place();
            const Place b = place();
            const Color color = dice.color();
            if (i % 4 == 0)
                addRectangle(drawing, a.x, a.y, b.x - a.x, b.y - a.y, color, opacity);
            else if (i % 7 == 0)
                addLine(drawing, {a, b, b, place()}, 0.7f, color);
            else
                addShaded(drawing, vertex(static_cast<float>(a.x), static_cast<float>(a.y), color),
                          vertex(static_cast<float>(b.x), static_cast<float>(b.y), dice.color()),
                          vertex(static_cast<float>(place().x), static_cast<float>(place().y),
                                 dice.color()),
                          opacity);
        }
        EXPECT_LE(mixedDifference(drawing).share, 0.005) << seed;
    }
}
