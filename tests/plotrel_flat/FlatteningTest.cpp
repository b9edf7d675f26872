#include "Flattening.h"

#include "Canvas.h"
#include "Drawings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>

using namespace flat;
using namespace kalmyr::detail;

namespace {

constexpr double kPixels = 8;

/// Two triangles with a common edge, red, green, blue and white at the corners.
VectorDrawing shadedSquare(float size = 50, float x = 20, float y = 12)
{
    VectorDrawing drawing = emptyDrawing();
    const VectorVertex a = vertex(x, y, {1, 0, 0});
    const VectorVertex b = vertex(x + size, y, {0, 1, 0});
    const VectorVertex c = vertex(x + size, y + size, {0, 0, 1});
    const VectorVertex d = vertex(x, y + size, {1, 1, 1});
    addShaded(drawing, a, b, c);
    addShaded(drawing, c, d, a);
    return drawing;
}

double area(const VectorDrawing& drawing, const VectorPrimitive& one)
{
    double sum = 0;
    const VectorVertex* corners = drawing.vertices.data() + one.first;
    for (std::uint32_t i = 2; i < one.count; ++i)
        sum += (double(corners[i - 1].x) - corners[0].x) * (double(corners[i].y) - corners[0].y)
               - (double(corners[i - 1].y) - corners[0].y) * (double(corners[i].x) - corners[0].x);
    return std::abs(sum) / 2;
}

VectorImage imageOf(int size, int components, const std::function<Color(int, int)>& color,
                    const std::function<int(int, int)>& alpha = nullptr)
{
    VectorImage image;
    image.x = 20;
    image.y = 15;
    image.width = image.height = 40;
    image.pixels = SbImage(SbVec2i32(size, size), components);
    unsigned char* bytes = image.pixels.edit();
    for (int row = 0; row < size; ++row)
        for (int column = 0; column < size; ++column) {
            for (const double value : color(column, row))
                *bytes++ = static_cast<unsigned char>(std::lround(value * 255));
            if (components == 4)
                *bytes++ = static_cast<unsigned char>(alpha ? alpha(column, row) : 255);
        }
    return image;
}

} // namespace

TEST(DivideShading, KeepsColorsWithinTolerance)
{
    for (const float tolerance : {0.3f, 0.1f, 0.04f}) {
        // No edge of a piece runs through the middles of pixels.
        VectorDrawing drawing = shadedSquare(50, 20.013f, 12.027f);
        const Canvas before = paintDrawing(drawing, kPixels);
        divideShading(drawing, tolerance);
        for (const VectorPrimitive& one : drawing.primitives)
            EXPECT_FALSE(one.shaded);
        const Difference difference = compare(before, paintDrawing(drawing, kPixels));
        EXPECT_LE(difference.most, tolerance * 255 + 2) << tolerance;
        EXPECT_LE(difference.mean, tolerance * 255 / 4) << tolerance;
    }
}

TEST(DivideShading, DividesEdgesAlikeFromBothSides)
{
    VectorDrawing drawing = shadedSquare();
    divideShading(drawing, 0.05f);
    ASSERT_GT(drawing.primitives.size(), 200u);
    std::map<std::array<float, 4>, int> edges;
    for (const VectorPrimitive& one : drawing.primitives)
        for (std::uint32_t i = 0; i < one.count; ++i) {
            const VectorVertex& a = drawing.vertices[one.first + i];
            const VectorVertex& b = drawing.vertices[one.first + (i + 1) % one.count];
            ++edges[{a.x, a.y, b.x, b.y}];
            --edges[{b.x, b.y, a.x, a.y}];
        }
    for (const auto& [edge, balance] : edges) {
        const bool border = (edge[0] == edge[2] && (edge[0] == 20 || edge[0] == 70))
                            || (edge[1] == edge[3] && (edge[1] == 12 || edge[1] == 62));
        EXPECT_TRUE(balance == 0 || border) << edge[0] << ' ' << edge[1] << ' ' << edge[2];
    }
}

TEST(DivideShading, TurnsGradientIntoBands)
{
    const auto piecesAt = [](float tolerance) {
        VectorDrawing drawing = emptyDrawing();
        addShaded(drawing, vertex(10, 10, {0, 0, 0}), vertex(80, 10, {0.9, 0.9, 0.9}),
                  vertex(50, 60, {0.45, 0.45, 0.45}));
        divideShading(drawing, tolerance);
        return drawing.primitives.size();
    };
    EXPECT_GE(piecesAt(0.1f), 9u);
    EXPECT_LE(piecesAt(0.1f), 40u);
    // As many times more as the tolerance is finer, not the square of that.
    EXPECT_LE(piecesAt(0.0125f), piecesAt(0.1f) * 12);
}

TEST(DivideShading, LeavesTinyAndNearlyFlatTrianglesWhole)
{
    VectorDrawing tiny = shadedSquare(0.3f);
    divideShading(tiny, 1.0f / 255);
    EXPECT_LE(tiny.primitives.size(), 64u);
    for (const VectorPrimitive& one : tiny.primitives)
        EXPECT_GT(area(tiny, one), 0.0003);

    VectorDrawing calm = emptyDrawing();
    addShaded(calm, vertex(20, 20, {0.5, 0.5, 0.5}), vertex(60, 20, {0.51, 0.5, 0.5}),
              vertex(40, 50, {0.5, 0.502, 0.5}));
    divideShading(calm, 0.05f);
    ASSERT_EQ(calm.primitives.size(), 1u);
    const float red = calm.vertices[calm.primitives[0].first].red * 255;
    EXPECT_FLOAT_EQ(red, std::round(red));
}

TEST(AverageImages, FollowsGradientsAndAveragesPatterns)
{
    VectorDrawing drawing = emptyDrawing();
    drawing.images.push_back(imageOf(64, 3, [](int x, int y) {
        return Color{x / 63.0, y / 63.0, 0.25};
    }));
    addRectangle(drawing, 25, 20, 30, 30, {0, 0, 0}).image = 0;
    const Canvas meant = paintDrawing(drawing, kPixels);
    averageImages(drawing);
    EXPECT_TRUE(drawing.images.empty());
    EXPECT_LE(compare(meant, paintDrawing(drawing, kPixels)).most, 6);

    VectorDrawing checkered = emptyDrawing();
    checkered.images.push_back(imageOf(1024, 3, [](int x, int y) {
        return (x / 4 + y / 4) % 2 == 0 ? Color{1, 0, 0} : Color{0, 0, 1};
    }));
    addRectangle(checkered, 20, 15, 40, 40, {0, 0, 0}).image = 0;
    averageImages(checkered);
    const Color mean = paintDrawing(checkered, kPixels).colorAt(35, 35);
    EXPECT_NEAR(mean[0], 0.5, 0.03);
    EXPECT_NEAR(mean[1], 0, 0.01);
    EXPECT_NEAR(mean[2], 0.5, 0.03);
}

TEST(AverageImages, TakesOpacityFromAlpha)
{
    VectorDrawing drawing = emptyDrawing();
    // The left half is transparent, in a colour that must not show.
    drawing.images.push_back(imageOf(
        32, 4,
        [](int x, int) {
            return x < 16 ? Color{1, 0, 1} : Color{0, 1, 0};
        },
        [](int x, int) { return x < 16 ? 0 : 255; }));
    addRectangle(drawing, 20, 15, 10, 40, {0, 0, 0}).image = 0;
    addRectangle(drawing, 20, 15, 40, 40, {0, 0, 0}).image = 0;
    // Smaller than a pixel, in the opaque half.
    addRectangle(drawing, 50, 40, 0.2, 0.2, {0, 0, 0}).image = 0;
    averageImages(drawing);
    ASSERT_EQ(drawing.primitives.size(), 2u);
    EXPECT_NEAR(drawing.primitives[0].opacity, 0.5, 0.02);
    EXPECT_NEAR(drawing.primitives[1].opacity, 1, 0.01);
    for (const VectorVertex& place : drawing.vertices) {
        EXPECT_LE(place.red, 0.01f);
        EXPECT_GE(place.green, 0.99f);
    }
}

TEST(ConvertColors, WeighsLuminance)
{
    VectorDrawing drawing = emptyDrawing();
    addGradient(drawing);
    addRectangle(drawing, 20, 20, 10, 10, {0, 1, 0});
    addLine(drawing, {{20, 40}, {60, 40}}, 1, {0, 0, 1});
    drawing.images.push_back(imageOf(8, 3, [](int, int) { return Color{1, 0, 0}; }));
    VectorDrawing colored = drawing;
    convertColors(colored, SoVectorOutput::COLOR);
    EXPECT_EQ(colored.vertices[0].green, 1.0f);
    EXPECT_EQ(colored.vertices[0].red, 0.0f);

    convertColors(drawing, SoVectorOutput::GREY);
    EXPECT_NEAR(drawing.vertices[drawing.primitives[0].first].red, 0.7152, 1e-3);
    EXPECT_NEAR(drawing.vertices[drawing.primitives[1].first].blue, 0.0722, 1e-3);
    EXPECT_EQ(drawing.images[0].pixels.getPixel(3, 3)[2], 54);
    EXPECT_EQ(drawing.background[0].color[0], drawing.background[0].color[2]);
}

TEST(ConvertColors, CutsGradientsAtTheHalf)
{
    VectorDrawing drawing = shadedSquare();
    drawing.background = {{SbColor(0, 0, 0), 0}, {SbColor(1, 1, 1), 1}};
    Canvas meant = paintDrawing(drawing, kPixels);
    for (int y = 0; y < meant.height(); ++y)
        for (int x = 0; x < meant.width(); ++x) {
            Color& pixel = meant.at(x, y);
            const double light = 0.2126 * pixel[0] + 0.7152 * pixel[1] + 0.0722 * pixel[2];
            pixel.fill(light < 0.5 ? 0 : 1);
        }
    convertColors(drawing, SoVectorOutput::BLACK_AND_WHITE);
    EXPECT_LE(compare(meant, paintDrawing(drawing, kPixels)).share, 0.001);
}
