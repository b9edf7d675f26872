#include "RenderedScene.h"

#include <kalmyr/nodes/SoTexture2.h>

#include <algorithm>
#include <functional>

namespace {

using Color = std::array<float, 4>;

Color map(const Color& a, const Color& b, const std::function<float(float, float)>& f)
{
    Color out;
    for (std::size_t c = 0; c < 4; ++c)
        out[c] = f(a[c], b[c]);
    return out;
}

std::string pixelText(const Color& color)
{
    char text[16];
    const auto byte = [](float v) { return static_cast<unsigned>(v * 255 + 0.5f); };
    std::snprintf(text, sizeof text, "0x%02x%02x%02x%02x", byte(color[0]), byte(color[1]),
                  byte(color[2]), byte(color[3]));
    return text;
}

constexpr const char* kSquare = "Coordinate3 { point [ -1 -1 0, 1 -1 0, 1 1 0, -1 1 0 ] } "
                                "TextureCoordinate2 { point [ 0 0, 1 0, 1 1, 0 1 ] } "
                                "FaceSet { numVertices 4 } ";
/// Red, green in the lower row; blue, white in the upper one.
constexpr const char* kFour = "Texture2 { image 2 2 3 0xff0000 0x00ff00 0x0000ff 0xffffff "
                              "wrapS CLAMP wrapT CLAMP } ";
const SbColor kRed(1, 0, 0), kGreen(0, 1, 0), kBlue(0, 0, 1), kWhite(1, 1, 1), kBlack(0, 0, 0);

class Paint : public RenderedScene {};

/// What is seen of a colour over black.
SbColor overBlack(const Color& color)
{
    SbColor out;
    for (int c = 0; c < 3; ++c) {
        const auto i = static_cast<std::size_t>(c);
        out[c] = std::clamp(color[i], 0.0f, 1.0f) * std::clamp(color[3], 0.0f, 1.0f);
    }
    return out;
}

TEST_F(Paint, UnitsAreMixedByTheirModes)
{
    const Color under{0.8f, 0.4f, 0.6f, 0.7f}, over{0.3f, 0.9f, 0.5f, 0.4f};
    const Color factor{0.2f, 0.6f, 1.0f, 0.3f};
    const auto blend = [&](float share) {
        return map(over, under, [share](float a, float b) { return a * share + b * (1 - share); });
    };
    const auto each = [&](auto f) { return map(over, under, f); };
    const float dot = 4
                      * ((over[0] - .5f) * (under[0] - .5f) + (over[1] - .5f) * (under[1] - .5f)
                         + (over[2] - .5f) * (under[2] - .5f));
    const float both = over[3] * under[3];
    const auto colors = [&](auto f, float alpha) {
        Color out = each(f);
        out[3] = alpha;
        return out;
    };
    const struct {
        const char* mode;
        Color result;
    } kCases[] = {
        {"MODULATE", each([](float a, float b) { return a * b; })},
        {"REPLACE", over},
        {"SELECTARG1", over},
        {"SELECTARG2", under},
        {"OFF", under},
        {"MODULATE2X", each([](float a, float b) { return a * b * 2; })},
        {"MODULATE4X", each([](float a, float b) { return a * b * 4; })},
        {"ADD", each([](float a, float b) { return a + b; })},
        {"ADDSIGNED", each([](float a, float b) { return a + b - 0.5f; })},
        {"ADDSIGNED2X", each([](float a, float b) { return (a + b - 0.5f) * 2; })},
        {"SUBTRACT", colors([](float a, float b) { return a - b; }, 0)},
        {"ADDSMOOTH", each([](float a, float b) { return a + (1 - a) * b; })},
        {"BLENDDIFFUSEALPHA", blend(1)}, // the material is opaque
        {"BLENDTEXTUREALPHA", blend(over[3])},
        {"BLENDFACTORALPHA", blend(factor[3])},
        {"BLENDCURRENTALPHA", blend(under[3])},
        {"MODULATEALPHA_ADDCOLOR", colors([&](float a, float b) { return a + over[3] * b; }, both)},
        {"MODULATEINVALPHA_ADDCOLOR",
         colors([&](float a, float b) { return a + (1 - over[3]) * b; }, both)},
        {"MODULATEINVCOLOR_ADDALPHA",
         colors([&](float a, float b) { return (1 - a) * b + over[3]; }, both)},
        {"DOTPRODUCT3", Color{dot, dot, dot, dot}},
    };
    for (const auto& one : kCases) {
        // Said by nodes of the toolkit, and by those of VRML97.
        draw("Material { diffuseColor 1 1 1 } Texture2 { model REPLACE image 1 1 4 "
             + pixelText(under) + " } TextureUnit { unit 1 mode " + one.mode
             + " factor .2 .6 1 .3 } Texture2 { image 1 1 4 " + pixelText(over)
             + " } TextureUnit { } " + kSquare);
        expectColor(0, 0, overBlack(one.result), one.mode, 4);
        draw97(std::string("Shape { appearance Appearance { material Material { diffuseColor 1 1 1 "
                           "emissiveColor 1 1 1 } texture MultiTexture { mode [ \"REPLACE\", \"")
               + one.mode + "\" ] color .2 .6 1 alpha .3 texture [ PixelTexture { image 1 1 4 "
               + pixelText(under) + " } PixelTexture { image 1 1 4 " + pixelText(over)
               + " } ] } } geometry IndexedFaceSet { coord Coordinate { point [ -1 -1 0, 1 -1 0, "
                 "1 1 0, -1 1 0 ] } coordIndex [ 0 1 2 3 ] } }");
        expectColor(0, 0, overBlack(one.result), std::string("VRML97 ") + one.mode, 4);
    }
}

TEST_F(Paint, SourcesAndFunctionsOfUnits)
{
    const std::string under = "Material { diffuseColor .8 .4 .2 specularColor .1 .2 .3 } "
                              "Texture2 { model REPLACE image 1 1 3 0x808080 } ";
    const auto drawUnit = [&](const std::string& fields) {
        draw(under + "TextureUnit { unit 1 " + fields
             + " factor .5 .5 0 1 } Texture2 { image 1 1 3 0x406080 } TextureUnit { } " + kSquare);
    };
    const SbColor texel(64 / 255.0f, 96 / 255.0f, 128 / 255.0f),
        grey(128 / 255.0f, 128 / 255.0f, 128 / 255.0f);
    drawUnit("mode ADD source DIFFUSE");
    expectColor(0, 0, SbColor(texel + SbVec3f(.8f, .4f, .2f)), "diffuse");
    drawUnit("mode ADD source SPECULAR");
    expectColor(0, 0, SbColor(texel + SbVec3f(.1f, .2f, .3f)), "specular");
    drawUnit("mode ADD source FACTOR");
    expectColor(0, 0, SbColor(texel + SbVec3f(.5f, .5f, 0)), "factor");
    drawUnit("mode SUBTRACT source FACTOR alphaMode REPLACE");
    expectColor(0, 0, SbColor(0, 0, texel[2]), "of the opacity apart");
    drawUnit("mode ADD function COMPLEMENT alphaMode SELECTARG2");
    expectColor(0, 0, kBlack, "complement of the opacity too");
    drawUnit("mode REPLACE alphaMode MODULATE function ALPHAREPLICATE");
    expectColor(0, 0, kWhite, "opacity in place of colors");
    drawUnit("");
    expectColor(0, 0, SbColor(texel[0] * grey[0], texel[1] * grey[1], texel[2] * grey[2]),
                "the model of the texture");
}

TEST_F(Paint, UnitsHaveCoordinatesAndTransformsOfTheirOwn)
{
    const std::string second = "TextureUnit { unit 1 mode REPLACE } " + std::string(kFour);
    const auto expectFour = [this](const SbColor& a, const SbColor& b, const SbColor& c,
                                   const SbColor& d, const char* what) {
        expectColor(-0.9f, -0.9f, a, what, 4);
        expectColor(0.9f, -0.9f, b, what, 4);
        expectColor(-0.9f, 0.9f, c, what, 4);
        expectColor(0.9f, 0.9f, d, what, 4);
    };
    draw(std::string(kFour) + second + "TextureUnit { } " + kSquare);
    expectFour(kRed, kGreen, kBlue, kWhite, "those of the first unit");
    draw(std::string(kFour) + second
         + "Texture2Transform { rotation 1.5707963 center .5 .5 } TextureUnit { } " + kSquare);
    expectFour(kGreen, kWhite, kRed, kBlue, "a transform");
    draw(std::string(kFour) + second
         + "TextureCoordinate2 { point [ 1 1, 0 1, 0 0, 1 0 ] } TextureUnit { } " + kSquare);
    expectFour(kWhite, kBlue, kGreen, kRed, "coordinates");
    // The first unit has no texture at all.
    draw(second + "TextureUnit { } " + kSquare);
    expectFour(kRed, kGreen, kBlue, kWhite, "the second unit alone");
    draw97("Shape { appearance Appearance { texture MultiTexture { mode [ \"REPLACE\" \"REPLACE\" "
           "] texture [ PixelTexture { image 1 1 3 0x123456 } PixelTexture { repeatS FALSE repeatT "
           "FALSE image 2 2 3 0xff0000 0x00ff00 0x0000ff 0xffffff } ] } textureTransform "
           "MultiTextureTransform { textureTransform [ TextureTransform { } TextureTransform { "
           "rotation 3.14159265 center -.5 -.5 } ] } } geometry IndexedFaceSet { coord Coordinate "
           "{ point [ "
           "-1 -1 0, 1 -1 0, 1 1 0, -1 1 0 ] } texCoord MultiTextureCoordinate { texCoord [ "
           "TextureCoordinate { point [ 0 0, 0 0, 0 0, 0 0 ] } TextureCoordinate { point [ 0 0, 1 "
           "0, 1 1, 0 1 ] } ] } coordIndex [ 0 1 2 3 ] } }");
    expectFour(kWhite, kBlue, kGreen, kRed, "VRML97");
}

TEST_F(Paint, WideAndDashedLinesHaveAllUnits)
{
    for (const char* style : {"lineWidth 1", "lineWidth 20", "lineWidth 20 linePattern 0x7ffe"}) {
        draw("LightModel { model BASE_COLOR } BaseColor { rgb 1 1 1 } Texture2 { image 1 1 3 "
             "0xffff00 } TextureUnit { unit "
             "1 mode MODULATE } Texture2Transform { translation .5 0 } "
             + std::string(kFour) + "TextureUnit { } DrawStyle { " + style
             + " } Coordinate3 { point [ -1 .01 0, 1 .01 0 ] } TextureCoordinate2 { point [ -.5 0, "
               ".5 0 ] } LineSet { numVertices 2 }");
        expectColor(-0.8f, 0.01f, kRed, style, 4);
        expectColor(0.8f, 0.01f, kGreen, style, 4);
        // An opacity that does not pass leaves nothing.
        draw("LightModel { model BASE_COLOR } BaseColor { rgb 1 1 1 } Texture2 { image 2 1 4 "
             "0xff0000ff 0x00ff0000 wrapS "
             "CLAMP } AlphaTest { function GREATER value .5 } DrawStyle { "
             + std::string(style)
             + " } Coordinate3 { point [ -1 .01 0, 1 .01 0 ] } TextureCoordinate2 { point [ 0 0, 1 "
               "0 ] } LineSet { numVertices 2 }");
        expectColor(-0.8f, 0.01f, kRed, style, 4);
        expectColor(0.8f, 0.01f, kBlack, style, 4);
    }
}

TEST_F(Paint, IndicesOfCoordinatesHoldForAllUnits)
{
    // Two triangles that share positions but not texture coordinates; both in the second unit.
    draw("TextureUnit { unit 1 mode REPLACE } " + std::string(kFour)
         + "TextureCoordinate2 { point [ 0 0, 1 1 ] } TextureUnit { } Coordinate3 { point [ -1 -1 "
           "0, 1 -1 0, 1 1 0, -1 1 0 ] } IndexedFaceSet { coordIndex [ 0 1 2 -1 0 2 3 -1 ] "
           "textureCoordIndex [ 0 0 0 -1 1 1 1 -1 ] }");
    expectColor(0.5f, -0.5f, kRed, "first triangle");
    expectColor(-0.5f, 0.5f, kWhite, "second triangle");
}

TEST_F(Paint, CoordinatesComeFromFunctions)
{
    const std::string image = "Texture2 { model REPLACE wrapS CLAMP wrapT CLAMP image 2 2 3 "
                              "0xff0000 0x00ff00 0x0000ff 0xffffff } ";
    for (const char* shape : {kSquare, "Cube { width 2 height 2 depth .1 } "}) {
        draw(image
             + "TextureCoordinatePlane { directionS .5 0 0 directionT 0 -.5 0 } "
               "Texture2Transform { translation .5 .5 } "
             + (shape == kSquare ? "Coordinate3 { point [ -1 -1 0, 1 -1 0, 1 1 0, -1 1 0 ] } "
                                   "FaceSet { numVertices 4 } "
                                 : shape));
        expectColor(-0.9f, 0.9f, kRed, shape, 4);
        expectColor(0.9f, -0.9f, kWhite, shape, 4);
    }
    // The default takes a plane away again, and so do given coordinates.
    draw(image + "TextureCoordinatePlane { directionS 0 0 0 directionT 0 0 0 } "
         + "TextureCoordinateDefault { } Cube { width 2 height 2 depth .1 }");
    expectColor(0.9f, 0.9f, kWhite, "default", 4);
    draw(image + "TextureCoordinatePlane { directionS 0 0 0 directionT 0 0 0 } " + kSquare);
    expectColor(0.9f, 0.9f, kWhite, "given", 4);
}

TEST_F(Paint, VolumesAreLookedUpByThreeCoordinates)
{
    const std::string volume = "Texture3 { model REPLACE wrapR CLAMP wrapS CLAMP wrapT CLAMP "
                               "images VOLUME 1 1 2 3 0xff0000 0x0000ff } ";
    const std::string square = "Coordinate3 { point [ -1 -1 0, 1 -1 0, 1 1 0, -1 1 0 ] } ";
    draw(volume + square + "TextureCoordinate3 { point [ 0 0 0, 0 0 1, 0 0 1, 0 0 0 ] } "
         + "FaceSet { numVertices 4 }");
    expectColor(-0.9f, 0, kRed, "first slice", 4);
    expectColor(0.9f, 0, kBlue, "last slice", 4);
    expectColor(0.03f, 0, SbColor(0.48f, 0, 0.52f), "between", 12);
    draw(volume + "Texture3Transform { translation 0 0 1 } " + square
         + "TextureCoordinate3 { point [ 0 0 0, 0 0 0, 0 0 0, 0 0 0 ] } FaceSet { numVertices 4 }");
    expectColor(-0.9f, 0, kBlue, "transform", 4);
    draw(volume + "TextureCoordinatePlane { directionR .5 0 0 } Cube { width 2 height 2 }");
    expectColor(0.95f, 0, SbColor(0.5f, 0, 0.5f), "plane", 20);
    // In another unit, beside a flat one.
    draw("Texture2 { model REPLACE image 1 1 3 0x00ff00 } TextureUnit { unit 1 mode ADD } " + volume
         + square
         + "TextureCoordinate3 { point [ 0 0 0, 0 0 1, 0 0 1, 0 0 0 ] } TextureUnit { } FaceSet { "
           "numVertices 4 }");
    expectColor(-0.9f, 0, SbColor(1, 1, 0), "second unit", 4);
    expectColor(0.9f, 0, SbColor(0, 1, 1), "second unit", 4);
}

TEST_F(Paint, MirrorsShowTheirSurroundings)
{
    // A ball that is seen in parallel is what a sphere map is made of: it shows the map itself.
    const std::string ball = "Complexity { value 1 } Sphere { radius 1.5 }";
    drawText("#Kalmyr V1.0 ascii\nSeparator { DirectionalLight { } Texture2 { model REPLACE wrapS "
             "CLAMP wrapT CLAMP image 2 2 3 0xff0000 0x00ff00 0x0000ff 0xffffff } "
             "TextureCoordinateEnvironment { } "
             + ball + " }");
    expectColor(-0.8f, -0.8f, kRed, "sphere map", 8);
    expectColor(0.8f, -0.8f, kGreen, "sphere map", 8);
    expectColor(-0.8f, 0.8f, kBlue, "sphere map", 8);
    expectColor(0.8f, 0.8f, kWhite, "sphere map", 8);
    // The middle of the ball mirrors the eye's side, +z; a third of the way out +x, +y.
    const std::string cube =
        "Separator { DirectionalLight { } TextureCubeMap { model REPLACE images VOLUME 1 1 6 3 "
        "0xff0000 0x00ffff 0x00ff00 0xff00ff 0x0000ff 0xffff00 } TextureCoordinateCube { } "
        + ball + " }";
    drawText("#Kalmyr V1.0 ascii\n" + cube);
    expectColor(0, 0, kBlue, "+z", 8);
    expectColor(1.1f, 0, kRed, "+x", 8);
    expectColor(-1.1f, 0, SbColor(0, 1, 1), "-x", 8);
    expectColor(0, 1.1f, kGreen, "+y", 8);
    expectColor(0, -1.1f, SbColor(1, 0, 1), "-y", 8);
    // From behind it mirrors -z: the directions are those of the world, not of the eye.
    drawText("#Kalmyr V1.0 ascii\nSeparator { OrthographicCamera { position 0 0 -10 orientation 0 "
             "1 0 3.14159265 nearDistance 1 farDistance 20 height 4 } "
             + cube + " }");
    expectColor(0, 0, SbColor(1, 1, 0), "-z", 8);
    expectColor(1.1f, 0, SbColor(0, 1, 1), "-x", 8);
    // A flat mirror that faces up and towards the eye shows what is above.
    drawText("#Kalmyr V1.0 ascii\nSeparator { DirectionalLight { } TextureCubeMap { model REPLACE "
             "images VOLUME 2 2 6 3 "
             "0 0 0 0 0 0 0 0 0xff0000 0xff0000 0x00ff00 0x00ff00 0 0 0 0 0 0 0 0 0 0 0 0 } "
             "TextureCoordinateCube { } Coordinate3 { point [ -1 -1 1, 1 -1 1, 1 1 -1, -1 1 -1 ] } "
             "FaceSet { numVertices 4 } }");
    expectColor(0, 0, SbColor(0.5f, 0.5f, 0), "between the rows of +y", 8);
}

TEST_F(Paint, SidesOfCubesStandUpright)
{
    // Side +z: its lower row is black, the upper one white; seen from the middle, +x is to the
    // left.
    const std::string black = "0 0 0 0 ";
    const std::string map = "TextureCubeMap { model REPLACE images VOLUME 2 2 6 3 " + black + black
                            + black + black + "0xff0000 0x00ff00 0x0000ff 0xffffff " + black
                            + " } ";
    const std::string square = "Coordinate3 { point [ -1 -1 0, 1 -1 0, 1 1 0, -1 1 0 ] } "
                               "TextureCoordinate3 { point [ 1 -1 1, -1 -1 1, -1 1 1, 1 1 1 ] } "
                               "FaceSet { numVertices 4 }";
    draw(map + square);
    expectColor(-0.9f, -0.9f, kRed, "left below", 6);
    expectColor(0.9f, -0.9f, kGreen, "right below", 6);
    expectColor(-0.9f, 0.9f, kBlue, "left above", 6);
    expectColor(0.9f, 0.9f, kWhite, "right above", 6);
}

TEST_F(Paint, AlphaTestLeavesPixelsOut)
{
    const std::string leaves =
        "Texture2 { model REPLACE wrapS CLAMP image 2 1 4 0xff000040 0x00ff00c0 } "
        + std::string(kSquare);
    const std::string behind = "Separator { Translation { translation 0 0 -1 } Material { "
                               "diffuseColor 0 0 1 } Cube { depth .1 } } ";
    draw("Separator { AlphaTest { function GREATER value .5 } " + leaves + " } " + behind);
    expectColor(-0.8f, 0, kBlue, "left out");
    expectColor(0.8f, 0, SbColor(0, 0.75f, 0.25f), "what passes stays transparent", 4);
    draw("Separator { AlphaTest { function LESS value .5 } " + leaves + " } " + behind);
    expectColor(-0.8f, 0, SbColor(0.25f, 0, 0.75f), "less", 4);
    expectColor(0.8f, 0, kBlue, "less");
    draw("Separator { AlphaTest { function NEVER } Cube { } } " + behind);
    expectColor(0, 0, kBlue, "never, without a texture");
}

TEST_F(Paint, DepthSettingsHoldForWhatFollows)
{
    const std::string red = "Separator { Material { diffuseColor 1 0 0 } %s Cube { depth .1 } } ";
    const auto redWith = [&](const std::string& node) {
        return std::string(red).replace(red.find("%s"), 2, node);
    };
    const std::string blueInFront = "Separator { Translation { translation 0 0 1 } Material { "
                                    "diffuseColor 0 0 1 } Cube { depth .1 } } ";
    draw(blueInFront + redWith(""));
    expectColor(0, 0, kBlue, "usual");
    // What is transparent comes last and meets the depths that were written.
    const std::string greenBehind = "Separator { Translation { translation 0 0 -1 } Material { "
                                    "diffuseColor 0 1 0 transparency .5 } Cube { depth .1 } } ";
    draw(redWith("") + greenBehind);
    EXPECT_EQ(pixelAt(0, 0)[1], 0) << "hidden";
    draw(redWith("DepthBuffer { write FALSE } ") + greenBehind);
    EXPECT_NEAR(pixelAt(0, 0)[1], 128, 2) << "hides nothing";
    // Transparent things come last, so that what they compare with is there.
    const std::string half = "Material { diffuseColor 1 0 0 transparency .5 } ";
    draw(blueInFront + redWith(half));
    expectColor(0, 0, kBlue, "hidden");
    draw(blueInFront + redWith(half + "DepthBuffer { test FALSE } "));
    expectColor(0, 0, SbColor(0.5f, 0, 0.5f), "no test", 8);
    draw(blueInFront + redWith(half + "DepthBuffer { function GREATER } "));
    expectColor(0, 0, SbColor(0.5f, 0, 0.5f), "greater", 8);
    draw(blueInFront + redWith("DepthBuffer { range 0 0 } "));
    expectColor(0, 0, kRed, "range in front");
    draw(redWith("DepthBuffer { range 0 0 } ") + blueInFront + redWith(""));
    expectColor(0, 0, kRed, "the settings end with the separator");
}

TEST_F(Paint, OffsetsDecideBetweenSurfacesOfOnePlane)
{
    const auto scene = [](const std::string& first, const std::string& second) {
        return "Separator { " + first + " Material { diffuseColor 1 0 0 } " + kSquare
               + "} Separator { " + second + " Material { diffuseColor 0 1 0 } " + kSquare + "}";
    };
    const std::string away = "PolygonOffset { factor 1 units 4 }",
                      near = "PolygonOffset { factor -1 units -4 }";
    for (const std::string& turn :
         {std::string(), std::string("Rotation { rotation 1 0 0 .7 } ")}) {
        draw(turn + scene(away, ""));
        expectColor(0, 0, kGreen, "first away");
        draw(turn + scene("", away));
        expectColor(0, 0, kRed, "second away");
        draw(turn + scene(near, ""));
        expectColor(0, 0, kRed, "first nearer");
        draw(turn + scene("PolygonOffset { factor -1 units -4 on FALSE }", near));
        expectColor(0, 0, kGreen, "second nearer");
    }
}

TEST_F(Paint, OffsetsMoveLinesAndPoints)
{
    const std::string face =
        "Separator { Material { diffuseColor 1 0 0 } " + std::string(kSquare) + "} ";
    const std::string shapes[] = {
        "Coordinate3 { point [ -1 0 0, 1 0 0 ] } DrawStyle { lineWidth 9 } LineSet { numVertices 2 "
        "}",
        "Coordinate3 { point [ 0 0 0 ] } DrawStyle { pointSize 9 } PointSet { }"};
    for (const std::string& shape : shapes) {
        const auto drawMoved = [&](const char* offset) {
            draw(face + "Separator { Material { diffuseColor 0 1 0 } " + offset + shape + " }");
        };
        drawMoved("PolygonOffset { styles (LINES | POINTS) units -100 } ");
        expectColor(0, 0, kGreen, shape);
        drawMoved("PolygonOffset { styles (LINES | POINTS) units 100 } ");
        expectColor(0, 0, kRed, shape);
    }
}

TEST_F(Paint, ColorsComeFromPalettes)
{
    draw("ColorIndex { index 4 } Cube { }");
    expectColor(0, 0, kBlue, "standard palette");
    draw("ColorIndex { index [ 1 99 ] colors [ 1 1 1, .2 .4 .6, 1 0 1 ] } Cube { }");
    expectColor(0, 0, SbColor(0.2f, 0.4f, 0.6f), "own palette");
    draw(
        "MaterialBinding { value PER_FACE } ColorIndex { index [ -5 7 ] } Coordinate3 { point [ -1 "
        "-1 0, 0 -1 0, 0 1 0, -1 1 0, 1 -1 0, 1 1 0 ] } IndexedFaceSet { coordIndex [ 0 1 2 3 -1 1 "
        "4 5 2 ] }");
    expectColor(-0.5f, 0, kBlack, "per face");
    expectColor(0.5f, 0, kWhite, "per face");
    draw97(
        "Shape { geometry IndexedFaceSet { coord Coordinate { point [ -1 -1 0, 1 -1 0, 1 1 0, -1 "
        "1 0 ] } coordIndex [ 0 1 2 3 ] color ColorRGBA { color [ 1 0 0 .25 ] } colorPerVertex "
        "FALSE } }");
    expectColor(0, 0, SbColor(0.25f, 0, 0), "colors with opacity", 4);
}

TEST_F(Paint, LargeTexturesAreScaledDownAndToldOnce)
{
    const SoRef<SoNode> root = read("#Kalmyr V1.0 ascii\nSeparator { LightModel { model BASE_COLOR "
                                    "} DEF Large Texture2 { wrapS CLAMP wrapT CLAMP } "
                                    + std::string(kSquare) + " }");
    constexpr int kWidth = 32768;
    std::vector<unsigned char> pixels(std::size_t(kWidth) * 2);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = i % kWidth < kWidth / 4 ? 255 : i % 2 ? 200 : 0;
    static_cast<SoTexture2*>(SoNode::getByName(SbName("Large")))
        ->image.setValue(SbVec2i32(kWidth, 2), 1, pixels.data());
    setUp(root.get());
    {
        const support::ErrorScope errors = support::expectErrors();
        for (int frame = 0; frame < 3; ++frame)
            redraw();
        EXPECT_EQ(errors.count(), 1u);
        EXPECT_TRUE(errors.contains("32768 by 2 pixels"));
    }
    const float grey = 0.8f;
    expectColor(-0.9f, 0, SbColor(grey, grey, grey), "white part times the material", 4);
    expectColor(0.5f, 0, SbColor(grey * 100 / 255, grey * 100 / 255, grey * 100 / 255),
                "mean of the stripes", 4);
}

} // namespace
