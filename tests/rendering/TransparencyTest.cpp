#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/rendering/RenderStatistics.h>

#include "support/ErrorGuard.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr int kSize = 48;
constexpr double kEye = 10; // of the cameras, on the z axis

using Color = std::array<double, 4>;

std::string text(double value)
{
    return std::to_string(value) + " ";
}

/// A plane z = c + a x + b y that fills the picture, in one color.
struct Sheet {
    double a = 0;
    double b = 0;
    double c = 0;
    Color color{};

    std::string scene() const
    {
        constexpr double kHalf = 12;
        std::string points;
        for (const auto& [x, y] : {std::pair(-1, -1), {1, -1}, {1, 1}, {-1, 1}}) {
            points += text(kHalf * x) + text(kHalf * y) + text(c + kHalf * (a * x + b * y)) + ", ";
        }
        return "Separator { Material { diffuseColor " + text(color[0]) + text(color[1])
               + text(color[2]) + "transparency " + text(1 - color[3]) + "} Coordinate3 { point [ "
               + points + " ] } FaceSet { numVertices 4 } }\n";
    }
};

/// What is seen at a pixel, by the rule that transparent things are laid over each other from back
/// to front. Nothing where surfaces lie so close to each other that the pixel may see both orders.
class Analysis {
public:
    explicit Analysis(bool perspective) : m_perspective(perspective) {}

    std::optional<Color> at(int x, int y, const std::vector<Sheet>& sheets, Color behind) const
    {
        constexpr double kHalf = 2; // of what is seen at z = 0
        const double px = ((x + 0.5) / kSize * 2 - 1) * kHalf;
        const double py = ((y + 0.5) / kSize * 2 - 1) * kHalf;
        std::vector<std::pair<double, const Sheet*>> hits;
        for (const Sheet& s : sheets) {
            // Along the ray to the point of the plane z = 0.
            const double t = m_perspective ? (kEye - s.c) / (s.a * px + s.b * py + kEye)
                                           : (kEye - s.c - s.a * px - s.b * py) / kEye;
            hits.emplace_back(t, &s);
        }
        std::sort(hits.begin(), hits.end(), std::greater<>());
        Color sum = behind;
        for (std::size_t i = 0; i < hits.size(); ++i) {
            constexpr double kClose = 0.03;
            if (i > 0 && hits[i - 1].first - hits[i].first < kClose) {
                return std::nullopt;
            }
            const Color& color = hits[i].second->color;
            for (std::size_t c = 0; c < 3; ++c) {
                sum[c] = color[c] * color[3] + sum[c] * (1 - color[3]);
            }
            sum[3] = color[3] + sum[3] * (1 - color[3]);
        }
        return sum;
    }

private:
    bool m_perspective;
};

class Transparency : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        if (!SoOffscreenContext::shared().isValid()) {
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        }
        m_renderer.setBackgroundColor(SbColor(0.2f, 0.4f, 0.6f));
    }

    static std::string camera(bool perspective)
    {
        return perspective ? "PerspectiveCamera { position 0 0 10 nearDistance 1 farDistance 40 "
                             "heightAngle 0.39479112 }\n"
                           : "OrthographicCamera { position 0 0 10 nearDistance 1 farDistance 40 "
                             "height 4 }\n";
    }

    static SoRef<SoSeparator> read(const std::string& content, bool perspective = false)
    {
        const std::string all = "#VRML V1.0 ascii\nSeparator { " + camera(perspective)
                                + "LightModel { model BASE_COLOR }\n" + content + "}";
        SoInput in;
        in.setBuffer(all.data(), all.size());
        return SoRef<SoSeparator>(SoDB::readAll(&in));
    }

    static SoRef<SoSeparator> read(const std::vector<Sheet>& sheets, bool perspective)
    {
        std::string content;
        for (const Sheet& sheet : sheets) {
            content += sheet.scene();
        }
        return read(content, perspective);
    }

    void draw(SoNode* root, int type)
    {
        m_renderer.getGLRenderAction()->setTransparencyType(type);
        ASSERT_TRUE(m_renderer.render(root));
    }

    std::array<int, 3> pixel(int x, int y) const
    {
        const unsigned char* p =
            m_renderer.getBuffer() + m_renderer.getComponents() * (y * kSize + x);
        return {p[0], p[1], p[2]};
    }

    void expectColor(int x, int y, const Color& color, int tolerance = 1) const
    {
        const auto found = pixel(x, y);
        for (std::size_t c = 0; c < 3; ++c) {
            ASSERT_NEAR(found[c], 255 * color[c], tolerance + 0.5)
                << "component " << c << " at " << x << ' ' << y;
        }
    }

    /// Compares a picture with the composition; returns how many pixels could be compared.
    int compare(const std::vector<Sheet>& sheets, bool perspective, int tolerance) const
    {
        const Analysis analysis(perspective);
        int count = 0;
        for (int y = 0; y < kSize; y += 3) {
            for (int x = 0; x < kSize; x += 3) {
                if (const auto color = analysis.at(x, y, sheets, m_behind)) {
                    ++count;
                    expectColor(x, y, *color, tolerance);
                    if (HasFatalFailure()) {
                        return count;
                    }
                }
            }
        }
        return count;
    }

    Sheet randomSheet(double slope = 1)
    {
        const auto number = [this](double low, double high) {
            return std::uniform_real_distribution(low, high)(m_random);
        };
        const double opacity = m_random() % 8 == 0 ? 1 : number(0.1, 0.9);
        return {number(-slope, slope),
                number(-slope, slope),
                number(-2, 2),
                {number(0, 1), number(0, 1), number(0, 1), opacity}};
    }

    SoOffscreenRenderer m_renderer{SbViewportRegion(kSize, kSize)};
    std::mt19937 m_random{17};
    const Color m_behind{0.2, 0.4, 0.6, 0};
};

TEST_F(Transparency, OfCrossingSheetsIsExactAtEachPixel)
{
    for (const int type : {7, 8}) {
        for (const bool perspective : {false, true}) {
            for (const int samples : {1, 4}) {
                SCOPED_TRACE(std::to_string(type) + (perspective ? " perspective " : " parallel ")
                             + std::to_string(samples));
                m_renderer.setNumSamples(samples);
                std::vector<Sheet> sheets;
                int count = 0;
                // Grows and changes: what the action keeps from frame to frame must follow.
                const SoRef<SoSeparator> root = read(sheets, perspective);
                const int fixed = root->getNumChildren();
                for (int step = 0; step < 20; ++step) {
                    const bool full = sheets.size() > 8;
                    const std::size_t place = m_random() % (sheets.size() + 1);
                    const auto at = static_cast<std::ptrdiff_t>(place);
                    if (full && place < sheets.size()) {
                        sheets.erase(sheets.begin() + at);
                        root->removeChild(fixed + static_cast<int>(place));
                    }
                    const std::size_t where = std::min(place, sheets.size());
                    const Sheet sheet = randomSheet();
                    sheets.insert(sheets.begin() + static_cast<std::ptrdiff_t>(where), sheet);
                    const SoRef<SoSeparator> one = read({sheet}, perspective);
                    root->insertChild(one->getChild(fixed), fixed + static_cast<int>(where));
                    draw(root.get(), type);
                    count += compare(sheets, perspective, 1);
                    if (HasFatalFailure()) {
                        return;
                    }
                }
                EXPECT_GT(count, 500);
            }
        }
    }
}

TEST_F(Transparency, BeyondTheLayersThatAreSortedIsThatOfTrianglesFromBackToFront)
{
    std::vector<Sheet> sheets;
    for (int i = 0; i < 90; ++i) {
        Sheet sheet = randomSheet(0);
        sheet.c = -6 + 0.14 * i;
        sheet.color[3] = 0.03;
        sheets.push_back(sheet);
    }
    const std::vector<Sheet> fromBack = sheets;
    std::shuffle(sheets.begin(), sheets.end(), m_random);
    const SoRef<SoSeparator> root = read(sheets, false);
    for (const int samples : {1, 4}) {
        m_renderer.setNumSamples(samples);
        draw(root.get(), 8);
        Color sum = m_behind;
        for (const Sheet& sheet : fromBack) {
            for (std::size_t c = 0; c < 3; ++c) {
                sum[c] += (sheet.color[c] - sum[c]) * sheet.color[3];
            }
        }
        expectColor(20, 30, sum, 4); // those behind are rounded with every step
    }
}

TEST_F(Transparency, OfCoincidentSheetsCountsEachTheLaterOnTop)
{
    const Sheet red{0.3, 0, 0, {1, 0, 0, 0.5}};
    Sheet blue = red;
    blue.color = {0, 0, 1, 0.5};
    for (const bool redFirst : {false, true}) {
        const auto sheets = redFirst ? std::vector{red, blue} : std::vector{blue, red};
        draw(read(sheets, true).get(), 7);
        Color sum = m_behind;
        for (const Sheet& sheet : sheets) {
            for (std::size_t c = 0; c < 3; ++c) {
                sum[c] += (sheet.color[c] - sum[c]) * sheet.color[3];
            }
        }
        expectColor(10, 20, sum);
    }
}

TEST_F(Transparency, KeepsStraightOpacityOverATransparentBackground)
{
    m_renderer.setComponents(SoOffscreenRenderer::RGB_TRANSPARENCY);
    std::vector<Sheet> sheets;
    for (int i = 0; i < 3; ++i) {
        sheets.push_back(randomSheet());
        sheets.back().color[3] = 0.2 + 0.1 * i;
    }
    for (const int type : {4, 6, 7, 8, 10, 12}) {
        draw(read(sheets, false).get(), type);
        EXPECT_NEAR(m_renderer.getBuffer()[4 * (5 * kSize + 5) + 3], 255 * (1 - 0.8 * 0.7 * 0.6), 2)
            << type;
    }
    draw(read(sheets, false).get(), 8);
    EXPECT_GT(compare(sheets, false, 1), 100);
}

/// What is on top of everything, cut by a plane, seen through holes of a texture, or a line.
TEST_F(Transparency, HoldsForLayersPlanesTexturesLinesAndPoints)
{
    const Sheet behind{0, 0, -1, {1, 0, 0, 0.5}}, before{0, 0, 1, {0, 0, 1, 0.5}};
    const auto over = [](Color below, const Color& above) {
        for (std::size_t c = 0; c < 3; ++c) {
            below[c] += (above[c] - below[c]) * above[3];
        }
        return below;
    };
    const std::string middle = "Separator { Material { diffuseColor 0 1 0 transparency 0.5 } ";
    const Color green{0, 1, 0, 0.5};
    const Color both = over(over(m_behind, behind.color), before.color);
    const Color all = over(over(over(m_behind, behind.color), green), before.color);
    for (const int type : {7, 8}) {
        for (const int samples : {1, 4}) {
            SCOPED_TRACE(std::to_string(type) + " with samples " + std::to_string(samples));
            m_renderer.setNumSamples(samples);
            draw(read("Annotation { " + behind.scene() + "}" + before.scene(), false).get(), type);
            expectColor(9, 9, over(over(m_behind, before.color), behind.color));

            draw(read(before.scene() + "Separator { ClipPlane { plane 1 0 0 0 } " + behind.scene()
                          + " }",
                      false)
                     .get(),
                 type);
            expectColor(5, 20, over(m_behind, before.color));
            expectColor(40, 20, both);

            const std::string line = "DrawStyle { lineWidth 5 pointSize 9 } Coordinate3 { point [ "
                                     "-2 1 0, 2 1 0, 0 -1 0 ] } IndexedLineSet { coordIndex "
                                     "[ 0, 1 ] } PointSet { startIndex 2 } }";
            draw(read(before.scene() + middle + line + behind.scene(), false).get(), type);
            expectColor(10, 36, all); // on the line
            expectColor(24, 12, all); // on the point
            expectColor(10, 20, both);

            const std::string image = "Texture2 { image 2 1 4 0x00ff0080 0xffffff00 } "
                                      "LightModel { model BASE_COLOR } Material { } Cube { "
                                      "width 4 height 4 depth 0.1 } }";
            draw(read(before.scene() + "Separator { " + image + behind.scene(), false).get(), type);
            const Color texel{0, 0.8, 0, 128 / 255.0}; // of the material's 0.8
            const Color seen = over(over(over(m_behind, behind.color), texel), before.color);
            expectColor(12, 20, seen);
            expectColor(36, 20, both);
        }
    }
}

/// More lights than a uniform block holds come from a table beside the textures of the layers.
TEST_F(Transparency, HoldsUnderManyLights)
{
    const auto lit = [this](int numLights) {
        std::string lights = "LightModel { model PHONG } ";
        for (int i = 0; i < numLights; ++i) {
            lights +=
                "DirectionalLight { direction 0 0 -1 intensity " + text(0.5 / numLights) + "} ";
        }
        const Sheet red{0.4, 0, 0, {1, 0, 0, 0.5}}, blue{-0.4, 0, 0, {0, 0, 1, 0.5}};
        draw(read(lights + red.scene() + blue.scene(), false).get(), 8);
        return std::pair(pixel(10, 20), pixel(40, 20));
    };
    for (const int numLights : {2, 40}) {
        const auto [left, right] = lit(numLights);
        EXPECT_GT(left[2], left[0]); // blue is in front on the left
        EXPECT_LT(right[2], right[0]);
        EXPECT_LT(std::max(left[1], right[1]), 60) << "the background shows";
    }
}

TEST_F(Transparency, OfOneCameraIsDoneBeforeTheNextOrAfterAllOpaque)
{
    const Sheet glass{0, 0, 2, {1, 0, 0, 0.5}}, wall{0, 0, -2, {0, 1, 0, 1}};
    const SoRef<SoSeparator> root = read(glass.scene() + camera(true) + wall.scene(), false);
    draw(root.get(), 7);
    expectColor(20, 20, wall.color);
    draw(root.get(), 8);
    expectColor(20, 20, {0.5, 0.5, 0, 1});
}

TEST_F(Transparency, CostsNothingWhereEverythingIsOpaque)
{
    Sheet wall = randomSheet();
    wall.color[3] = 1;
    const SoRef<SoSeparator> root = read({wall}, true);
    const auto& statistics = m_renderer.getGLRenderAction()->getStatistics();
    draw(root.get(), 13);
    const std::size_t calls = statistics.drawCalls;
    for (const int type : {7, 8}) {
        draw(root.get(), type);
        EXPECT_EQ(statistics.drawCalls, calls);
    }
}

} // namespace
