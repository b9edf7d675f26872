#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include "support/ErrorGuard.h"

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr int kWidth = 200;
constexpr int kHeight = 120;
constexpr const char* kParallel =
    "OrthographicCamera { position 0 0 10 nearDistance 1 farDistance 40 height 12 }\n";
constexpr const char* kPerspective =
    "PerspectiveCamera { position 0 0 10 nearDistance 1 farDistance 80 heightAngle 0.8 }\n";

using Point = std::array<double, 3>;

class Dashes : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        if (!SoOffscreenContext::shared().isValid()) {
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        }
    }

    /// The picture of a scene with a pattern of 8 pixels and gaps of 8.
    std::string draw(const char* camera, const std::string& content)
    {
        const std::string all = std::string("#VRML V1.0 ascii\nSeparator { ") + camera
                                + "LightModel { model BASE_COLOR } DrawStyle { linePattern 0x00ff "
                                  "lineWidth 3 }\n"
                                + content + "}";
        SoInput in;
        in.setBuffer(all.data(), all.size());
        const SoRef<SoSeparator> root(SoDB::readAll(&in));
        EXPECT_TRUE(root && m_renderer.render(root.get()));
        const unsigned char* pixels = m_renderer.getBuffer();
        return pixels ? std::string(pixels, pixels + 3 * kWidth * kHeight) : std::string();
    }

    static std::string points(const std::vector<Point>& points)
    {
        std::string text = "Coordinate3 { point [ ";
        for (const Point& p : points) {
            text += std::to_string(p[0]) + " " + std::to_string(p[1]) + " " + std::to_string(p[2])
                    + ", ";
        }
        return text + "] }\n";
    }

    static std::string line(const std::vector<Point>& line)
    {
        return points(line) + "LineSet { numVertices " + std::to_string(line.size()) + " }\n";
    }

    static std::vector<Point> divided(const Point& a, const Point& b, int parts)
    {
        std::vector<Point> out;
        for (int i = 0; i <= parts; ++i) {
            const double t = double(i) / parts;
            out.push_back(
                {a[0] + t * (b[0] - a[0]), a[1] + t * (b[1] - a[1]), a[2] + t * (b[2] - a[2])});
        }
        return out;
    }

    static int numDifferent(const std::string& a, const std::string& b)
    {
        int count = a.size() == b.size() ? 0 : 1 << 20;
        for (std::size_t i = 0; i < std::min(a.size(), b.size()); i += 3) {
            count += a.compare(i, 3, b, i, 3) != 0 ? 1 : 0;
        }
        return count;
    }

    static int numLit(const std::string& picture)
    {
        return numDifferent(picture, std::string(picture.size(), '\0'));
    }

    SoOffscreenRenderer m_renderer{SbViewportRegion(kWidth, kHeight)};
};

/// A pixel at the end of a dash may fall to either side where the pieces' corners are rounded.
constexpr int kRounded = 4;

TEST_F(Dashes, OfManySegmentsAreThoseOfOneLine)
{
    const std::pair<Point, Point> lines[] = {
        {{-9, -4, 0}, {9, 5, 0}},
        {{-9, 0, 4}, {6, 1, -40}},
        {{2, 1, 30}, {-5, 2, -20}},  // from behind the eye
        {{-6, -3, -20}, {1, 2, 25}}, // to there
    };
    for (const char* camera : {kParallel, kPerspective}) {
        for (const auto& [a, b] : lines) {
            const std::string whole = draw(camera, line({a, b}));
            const int lit = numLit(whole);
            EXPECT_GT(lit, 50);
            for (const int parts : {2, 7, 150}) {
                EXPECT_LE(numDifferent(draw(camera, line(divided(a, b, parts))), whole), kRounded)
                    << parts << " parts from " << a[0] << ' ' << a[2];
            }
        }
    }
    // Each polyline begins anew: a second one leaves the first as it is.
    const std::string two = points({{-9, -3, 0}, {0, -3, 0}, {-8, 3, 0}, {9, 3, 0}})
                            + "IndexedLineSet { coordIndex [ 0, 1, -1, 2, 3 ] }";
    const std::string one = draw(kParallel, line({{-8, 3, 0}, {9, 3, 0}}));
    const std::string both = draw(kParallel, two);
    const std::size_t upper = one.size() / 2;
    EXPECT_EQ(one.substr(upper), both.substr(upper));
}

TEST_F(Dashes, GoRoundClosedLinesAndTheEdgesOfFaces)
{
    // Segments shorter than a dash: restarting at each of them would leave no gaps.
    std::vector<Point> circle;
    for (int i = 0; i <= 120; ++i) {
        const double angle = 2 * 3.14159265358979 * (i % 120) / 120;
        circle.push_back({5 * std::cos(angle), 5 * std::sin(angle), 0});
    }
    const std::string solid = "DrawStyle { lineWidth 3 }\n";
    const int full = numLit(draw(kParallel, solid + line(circle)));
    EXPECT_NEAR(numLit(draw(kParallel, line(circle))), full / 2, full / 10);

    circle.pop_back();
    const std::string face = points(circle) + "FaceSet { numVertices 120 }\n";
    EXPECT_NEAR(numLit(draw(kPerspective, "DrawStyle { style LINES linePattern 0x00ff lineWidth 3 "
                                          "}\n"
                                              + face)),
                numLit(draw(kPerspective, "DrawStyle { style LINES lineWidth 3 }\n" + face)) / 2,
                full / 10);
    // Rims of a solid, which meet other edges at each corner.
    const std::string rims = "Complexity { value 1 } Cylinder { radius 5 height 4 parts TOP }\n";
    const int drawn = numLit(draw(kParallel, "RotationXYZ { axis X angle 0.9 } DrawStyle { style "
                                             "LINES lineWidth 3 }\n"
                                                 + rims));
    EXPECT_LT(numLit(draw(kParallel, "RotationXYZ { axis X angle 0.9 } DrawStyle { style LINES "
                                     "linePattern 0x00ff lineWidth 3 }\n"
                                         + rims)),
              drawn * 7 / 10);
}

/// Faces with vertices of their own have each edge twice, in opposite directions.
TEST_F(Dashes, OfEdgesBetweenFacesAreDrawnOnce)
{
    const std::string turn = "RotationXYZ { axis Y angle 0.6 } RotationXYZ { axis X angle 0.5 } ";
    const std::string cube = turn + "Cube { width 6 height 6 depth 6 }\n";
    const int whole = numLit(draw(kParallel, "DrawStyle { style LINES lineWidth 3 }\n" + cube));
    const std::string dashed = "DrawStyle { style LINES linePattern 0x00ff lineWidth 3 }\n";
    EXPECT_NEAR(numLit(draw(kParallel, dashed + cube)), whole / 2, whole / 10);
}

TEST_F(Dashes, OfTransparentLinesLetThrough)
{
    const std::string glass = "Material { diffuseColor 1 0 0 transparency 0.5 }\n";
    const Point a{-9, -4, 0}, b{9, 4, 0};
    const std::string plain = draw(kParallel, line({a, b}));
    for (const int type : {6, 8}) {
        m_renderer.getGLRenderAction()->setTransparencyType(type);
        EXPECT_LE(
            std::abs(numLit(draw(kParallel, glass + line(divided(a, b, 30)))) - numLit(plain)),
            kRounded);
    }
}

} // namespace
