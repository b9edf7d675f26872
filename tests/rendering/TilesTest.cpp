#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/rendering/SoLineHighlightRenderAction.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include "support/ErrorGuard.h"
#include "support/Program.h"

#include <functional>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

constexpr int kWidth = 397; // tiles end in the middle of a pattern
constexpr int kHeight = 310;

class Tiles : public ::testing::Test, protected support::TempFolder {
protected:
    void SetUp() override
    {
        SoDB::init();
        if (!SoOffscreenContext::shared().isValid()) {
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        }
    }

    static SoRef<SoSeparator> read(const std::string& content)
    {
        const std::string all =
            "#Kalmyr V1.0 ascii\nSeparator { PerspectiveCamera { position 0 0 8 nearDistance 1 "
            "farDistance 40 heightAngle 0.8 }\nDirectionalLight { direction 1 -1 -1 }\n"
            + content + "}";
        SoInput in;
        in.setBuffer(all.data(), all.size());
        return SoRef<SoSeparator>(SoDB::readAll(&in));
    }

    static std::string shapes()
    {
        std::mt19937 random(5);
        const auto number = [&random](double low, double high) {
            return std::to_string(std::uniform_real_distribution(low, high)(random)) + " ";
        };
        std::string text;
        const char* kinds[] = {"Cube { }", "Sphere { }", "Cone { }", "Cylinder { }",
                               "AsciiText { string \"Tiles\" }"};
        for (int i = 0; i < 40; ++i) {
            text += "Separator { Material { diffuseColor " + number(0, 1) + number(0, 1)
                    + number(0, 1) + "specularColor 1 1 1 shininess 0.5 transparency "
                    + (i % 3 == 0 ? "0.5" : "0") + " } Transform { translation " + number(-4, 4)
                    + number(-3, 3) + number(-3, 3) + "rotation 1 1 0 " + number(0, 3)
                    + "scaleFactor .7 .7 .7 } Font { size 2 } " + kinds[i % 5] + " }\n";
        }
        return text;
    }

    static std::string lines()
    {
        std::string text = "Separator { LightModel { model BASE_COLOR } DrawStyle { lineWidth 5 "
                           "linePattern 0x0ff7 pointSize 23 } Coordinate3 { point [ ";
        for (int i = 0; i < 60; ++i) {
            text += std::to_string(0.07 * i * std::cos(0.4 * i)) + " "
                    + std::to_string(0.07 * i * std::sin(0.4 * i)) + " 1, ";
        }
        return text
               + "] } LineSet { numVertices 60 } PointSet { startIndex 30 } DrawStyle { "
                 "linePattern 0xffff lineWidth 1 pointSize 1 } Translation { translation .1 .1 "
                 "0 } LineSet { numVertices 60 } PointSet { } }\n";
    }

    static std::string paint()
    {
        return "Separator { Texture2 { image 2 2 3 0xff0000 0x00ff00 0x0000ff 0xffffff } "
               "Texture2Transform { scaleFactor 7 7 } Translation { translation 0 0 -4 } Cube { "
               "width 14 height 10 depth 1 } }\n";
    }

    /// Pixels that differ between the picture in one piece and in tiles, and by how much at most.
    std::pair<int, int> compare(SoNode* root, int tile)
    {
        m_renderer.setTileSize(0);
        EXPECT_TRUE(m_renderer.render(root));
        const SbImage whole = m_renderer.getImage();
        m_renderer.setTileSize(tile);
        EXPECT_TRUE(m_renderer.render(root));
        const SbImage tiled = m_renderer.getImage();
        m_renderer.setTileSize(0);
        int pixels = 0, most = 0;
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                int largest = 0;
                for (int c = 0; c < whole.getComponents(); ++c) {
                    largest = std::max(largest,
                                       std::abs(whole.getPixel(x, y)[c] - tiled.getPixel(x, y)[c]));
                }
                pixels += largest > 0 ? 1 : 0;
                most = std::max(most, largest);
            }
        }
        return {pixels, most};
    }

    SoOffscreenRenderer m_renderer{SbViewportRegion(kWidth, kHeight)};
};

/// Colors that OpenGL interpolates are rounded at other places of its buffers.
constexpr int kRoundedPixels = 20;

TEST_F(Tiles, FitTogetherWithoutSeams)
{
    const std::string flat = "LightModel { model BASE_COLOR } ";
    const std::string several = "Separator { PerspectiveCamera { position 1 2 8 nearDistance 1 "
                                "farDistance 40 } "
                                + shapes() + "}\n";
    const struct {
        std::string content;
        bool isFlat;
    } scenes[] = {{flat + shapes() + lines() + paint(), true},
                  {"GradientBackground { color0 0 0 1 color1 1 1 0 } " + shapes(), false},
                  {"Annotation { " + lines() + "ClipPlane { plane 1 1 0 0 } " + shapes() + " }"
                       + several + paint(),
                   false}};
    for (const auto& scene : scenes) {
        const SoRef<SoSeparator> root = read(scene.content);
        ASSERT_TRUE(root);
        for (const int type : {0, 6, 8}) {
            m_renderer.getGLRenderAction()->setTransparencyType(type);
            for (const int samples : {1, 4}) {
                m_renderer.setNumSamples(samples);
                const auto [pixels, most] = compare(root.get(), type == 6 ? 64 : 192);
                EXPECT_LE(most, scene.isFlat ? 0 : 1) << "type " << type << " x " << samples;
                EXPECT_LE(pixels, kRoundedPixels) << "type " << type << " x " << samples;
            }
        }
    }
}

TEST_F(Tiles, ShowOutlinesAcrossTheirEdges)
{
    const SoRef<SoSelection> selection(new SoSelection);
    const SoRef<SoSeparator> root = read("LightModel { model BASE_COLOR } Sphere { radius 2.4 } "
                                         "Material { diffuseColor 1 0 0 } Translation { "
                                         "translation 1 0 3 } Cube { width .5 height 6 }");
    root->ref();
    selection->addChild(root.get());
    SoLineHighlightRenderAction action{m_renderer.getViewportRegion()};
    m_renderer.setGLRenderAction(&action);
    ASSERT_TRUE(m_renderer.render(selection.get()));
    const SbImage plain = m_renderer.getImage();
    selection->select(root->getChild(3));
    for (const int samples : {1, 4}) {
        m_renderer.setNumSamples(samples);
        for (const int tile : {64, 128}) {
            EXPECT_LE(compare(selection.get(), tile).first, kRoundedPixels / 4) << tile;
        }
    }
    EXPECT_FALSE(m_renderer.getImage() == plain);
    m_renderer.setGLRenderAction(nullptr);
    root->unref();
}

/// As written at once, with one row of tiles in memory at a time.
TEST_F(Tiles, AreWrittenAsTheyAreDrawn)
{
    using Format = SoOffscreenRenderer::Format;
    using Write = std::function<bool(std::FILE*)>;
    const SoRef<SoSeparator> root = read("LightModel { model BASE_COLOR } " + shapes() + lines());
    const std::pair<Format, Write> formats[] = {
        {Format::PNG, [this](std::FILE* f) { return m_renderer.writeToPNG(f); }},
        {Format::JPEG, [this](std::FILE* f) { return m_renderer.writeToJPEG(f); }},
        {Format::BMP, [this](std::FILE* f) { return m_renderer.writeToBMP(f); }},
        {Format::TIFF, [this](std::FILE* f) { return m_renderer.writeToTIFF(f); }},
        {Format::SGI_RGB, [this](std::FILE* f) { return m_renderer.writeToRGB(f); }},
        {Format::POSTSCRIPT, [this](std::FILE* f) { return m_renderer.writeToPostScript(f); }}};
    for (const auto components :
         {SoOffscreenRenderer::RGB, SoOffscreenRenderer::RGB_TRANSPARENCY}) {
        m_renderer.setComponents(components);
        for (const auto& [format, writeBuffer] : formats) {
            const auto contentOf = [&](const Write& writePicture) {
                std::FILE* file = std::fopen(path("picture").c_str(), "wb+");
                EXPECT_TRUE(file && std::fputs("before", file) >= 0 && writePicture(file));
                std::fputs("behind", file);
                std::fclose(file);
                return TempFolder::read("picture");
            };
            m_renderer.setTileSize(0);
            ASSERT_TRUE(m_renderer.render(root.get()));
            const std::string whole = contentOf(writeBuffer);
            m_renderer.setTileSize(64);
            const std::string tiled = contentOf(
                [&](std::FILE* file) { return m_renderer.renderToFile(root.get(), file, format); });
            EXPECT_GT(whole.size(), 1000u);
            EXPECT_EQ(whole == tiled, true) << static_cast<int>(format);
            EXPECT_FALSE(m_renderer.getBuffer());
        }
    }
}

TEST_F(Tiles, AreRefusedBeyondWhatOpenGLCanAddress)
{
    const SoRef<SoSeparator> root = read("Cube { }");
    const SbVec2s most = SoOffscreenRenderer::getMaximumResolution();
    EXPECT_GE(most[0], 4096);
    if (most[0] == 32767)
        GTEST_SKIP() << "every size can be addressed";
    m_renderer.setViewportRegion(SbViewportRegion(static_cast<short>(most[0] + 1), 10));
    const auto errors = support::expectErrors();
    EXPECT_FALSE(m_renderer.render(root.get()));
    EXPECT_FALSE(m_renderer.renderToFile(root.get(), stdout, SoOffscreenRenderer::Format::PNG));
    EXPECT_FALSE(m_renderer.getBuffer());
    // The action is as it was.
    EXPECT_EQ(m_renderer.getGLRenderAction()->getWindowPartSize(), SbVec2i32(0, 0));
}

} // namespace
