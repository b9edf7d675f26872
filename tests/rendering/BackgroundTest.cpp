#include "RenderedScene.h"

#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoImageFile.h>
#include <kalmyr/nodes/SoImageBackground.h>

#include "support/Program.h"

#include <numbers>

namespace {

const SbColor kRed(1, 0, 0), kGreen(0, 1, 0), kBlue(0, 0, 1), kWhite(1, 1, 1), kBlack(0, 0, 0);

class Backgrounds : public RenderedScene {
protected:
    /// Draws a scene with an eye in the middle that looks along a direction.
    void look(const std::string& text, const SbRotation& orientation)
    {
        const SoRef<SoNode> scene = read(text);
        ASSERT_TRUE(scene) << text;
        m_root = new SoSeparator;
        auto* camera = new SoPerspectiveCamera;
        camera->position.setValue(SbVec3f(100, 200, 300));
        camera->orientation.setValue(orientation);
        camera->heightAngle = std::numbers::pi_v<float> / 2;
        m_root->addChild(camera);
        m_root->addChild(scene.get());
        for (int frame = 0; frame < 2; ++frame)
            redraw();
    }
    void expectQuarters(const SbColor& leftBelow, const SbColor& rightBelow,
                        const SbColor& leftAbove, const SbColor& rightAbove,
                        const std::string& what)
    {
        expectColor(-1.9f, -1.9f, leftBelow, what, 4);
        expectColor(1.9f, -1.9f, rightBelow, what, 4);
        expectColor(-1.9f, 1.9f, leftAbove, what, 4);
        expectColor(1.9f, 1.9f, rightAbove, what, 4);
    }
};

constexpr struct {
    const char* name;
    SbVec3f axis;
    float angle; ///< to look there from -z
} kSides[] = {{"front", {0, 1, 0}, 0},
              {"back", {0, 1, 0}, std::numbers::pi_v<float>},
              {"left", {0, 1, 0}, std::numbers::pi_v<float> / 2},
              {"right", {0, 1, 0}, -std::numbers::pi_v<float> / 2},
              {"top", {1, 0, 0}, std::numbers::pi_v<float> / 2},
              {"bottom", {1, 0, 0}, -std::numbers::pi_v<float> / 2}};

/// A picture whose corners tell how it lies, of a mark that tells which it is.
std::string corners(int mark)
{
    const std::string blue = std::to_string(10 + 40 * mark);
    const auto pixel = [&](int r, int g) {
        char text[16];
        std::snprintf(text, sizeof text, " 0x%02x%02x%02x", r, g, 10 + 40 * mark);
        return std::string(text);
    };
    return "image 2 2 3" + pixel(255, 0) + pixel(0, 255) + pixel(0, 0) + pixel(255, 255);
}

TEST_F(Backgrounds, PanoramasStandUprightAroundTheEye)
{
    std::string textures;
    for (int i = 0; i < 6; ++i)
        textures += std::string(kSides[i].name)
                    + "Texture PixelTexture { repeatS FALSE repeatT "
                      "FALSE "
                    + corners(i) + " } ";
    // Said by textures and by files.
    const support::TempFolder folder;
    std::string urls;
    for (int i = 0; i < 6; ++i) {
        const unsigned char mark = static_cast<unsigned char>(10 + 40 * i);
        const unsigned char pixels[] = {255, 0, mark, 0, 255, mark, 0, 0, mark, 255, 255, mark};
        const std::string path = folder.path(std::string(kSides[i].name) + ".png");
        ASSERT_TRUE(SoImageFile::writePng(SbString(path), SbImage(SbVec2i32(2, 2), 3, pixels)));
        urls += std::string(kSides[i].name) + "Url \"" + path + "\" ";
    }
    for (const std::string& node :
         {"TextureBackground { " + textures + "}", "Background { " + urls + "}"}) {
        for (int i = 0; i < 6; ++i) {
            look("#VRML V2.0 utf8\n" + node, SbRotation(kSides[i].axis, kSides[i].angle));
            const float mark = (10 + 40 * static_cast<float>(i)) / 255;
            expectQuarters(SbColor(1, 0, mark), SbColor(0, 1, mark), SbColor(0, 0, mark),
                           SbColor(1, 1, mark), node.substr(0, 18) + " " + kSides[i].name);
        }
    }
    // They turn with the node, and hide nothing that is drawn.
    look("#VRML V2.0 utf8\nTransform { rotation 0 1 0 1.5707963 children TextureBackground { "
             + textures + "} }",
         SbRotation(SbVec3f(0, 1, 0), std::numbers::pi_v<float> / 2));
    expectQuarters(SbColor(1, 0, 10 / 255.f), SbColor(0, 1, 10 / 255.f), SbColor(0, 0, 10 / 255.f),
                   SbColor(1, 1, 10 / 255.f), "turned");
}

TEST_F(Backgrounds, SkyShowsThroughPanoramas)
{
    look("#VRML V2.0 utf8\nTextureBackground { skyColor 0 0 1 frontTexture PixelTexture { image 1 "
         "1 4 0xff000080 } }",
         SbRotation());
    expectColor(0, 0, SbColor(0.5f, 0, 0.5f), "half transparent", 4);
    look("#VRML V2.0 utf8\nTextureBackground { skyColor 0 0 1 frontTexture PixelTexture { image 1 "
         "1 4 0xff000080 } }",
         SbRotation(SbVec3f(0, 1, 0), std::numbers::pi_v<float>));
    expectColor(0, 0, kBlue, "no picture behind");
}

TEST_F(Backgrounds, MissingPicturesAreToldOnce)
{
    {
        const support::ErrorScope errors = support::expectErrors();
        look("#VRML V2.0 utf8\nBackground { skyColor 0 1 0 frontUrl \"nowhere.png\" }",
             SbRotation());
        EXPECT_EQ(errors.count(), 1u);
        EXPECT_TRUE(errors.contains("nowhere.png"));
    }
    expectColor(0, 0, kGreen, "the sky is left");
}

TEST_F(Backgrounds, PicturesLieOnTheScreen)
{
    // Twice as wide as high: red, green below; blue, white above.
    const std::string picture = "image 4 2 3 0xff0000 0xff0000 0x00ff00 0x00ff00 "
                                "0x0000ff 0x0000ff 0xffffff 0xffffff ";
    m_renderer.setBackgroundColor(SbColor(1, 0, 1));
    const SbColor magenta(1, 0, 1);
    const auto drawStyle = [&](const char* style) {
        draw("ImageBackground { " + picture + "style " + style + " }");
    };
    drawStyle("STRETCH");
    expectQuarters(kRed, kGreen, kBlue, kWhite, "stretch");
    drawStyle("FIT");
    expectColor(0, 1.9f, magenta, "fit, above");
    expectColor(-1.9f, -0.9f, kRed, "fit, in it", 4);
    expectColor(1.9f, 0.9f, kWhite, "fit, in it", 4);
    drawStyle("FILL");
    expectQuarters(kRed, kGreen, kBlue, kWhite, "fill");
    expectColor(-1.2f, -1.9f, kRed, "fill is cut at the sides", 4);
    drawStyle("CENTER");
    expectColor(0.5f, 0, magenta, "center, beside");
    expectColor(-0.09f, -0.03f, kRed, "center", 80);
    drawStyle("TILE");
    for (const float x : {-2.0f, -1.0f, 0.0f, 1.75f})
        for (const float y : {-2.0f, 0.5f})
            expectColor(x + 0.03f, y + 0.03f, kRed, "tile", 4);
    // The last background that is reached wins, and things stand in front.
    draw("ImageBackground { " + picture
         + "} GradientBackground { color0 0 0 1 color1 0 0 1 } "
           "Cube { width 1 height 1 }");
    expectColor(-1.9f, -1.9f, kBlue, "gradient");
    expectColor(0, 0, SbColor(0.8f, 0.8f, 0.8f), "cube");
}

} // namespace
