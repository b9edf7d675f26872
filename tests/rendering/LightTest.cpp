#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/vrml/SoVRMLFog.h>

#include "support/ErrorGuard.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace {

constexpr int kSize = 64;
constexpr float kEyeDistance = 10;
const SbColor kSky(0, 0, 1); ///< behind everything

struct Surface {
    SbColor diffuse{0.8f, 0.8f, 0.8f};
    SbColor specular{0, 0, 0};
    SbColor emissive{0, 0, 0};
    float ambientIntensity = 0.2f;
    float shininess = 0.2f;
};

/// Without attenuation; a spot when it has a cut-off angle.
struct Light {
    SbVec3f direction; ///< in which it shines
    float intensity = 1;
    float ambientIntensity = 0;
    SbVec3f location{};
    float beamWidth = 0;
    float cutOffAngle = 0;
};

float spotFactor(const Light& light, const SbVec3f& toLight)
{
    const float angle = std::acos(std::clamp(-toLight.dot(light.direction), -1.0f, 1.0f));
    if (angle >= light.cutOffAngle)
        return 0;
    return angle <= light.beamWidth
               ? 1
               : (angle - light.cutOffAngle) / (light.beamWidth - light.cutOffAngle);
}

/// The lighting equation of VRML97 on a surface that faces the eye, seen in parallel.
SbColor lit(const Surface& surface, const Light& light, const SbVec3f& point)
{
    const SbVec3f normal(0, 0, 1), toViewer(0, 0, 1);
    const bool isSpot = light.cutOffAngle > 0;
    const SbVec3f toLight =
        isSpot ? (light.location - point).normalized() : (-light.direction).normalized();
    const float facing = std::max(normal.dot(toLight), 0.0f);
    const float gloss = facing > 0 ? std::pow(normal.dot((toLight + toViewer).normalized()),
                                              surface.shininess * 128)
                                   : 0;
    const float strength = isSpot ? spotFactor(light, toLight) : 1;
    SbColor out;
    for (int c = 0; c < 3; ++c)
        out[c] = std::min(1.0f, surface.emissive[c]
                                    + strength
                                          * (light.ambientIntensity * surface.diffuse[c]
                                                 * surface.ambientIntensity
                                             + light.intensity * surface.diffuse[c] * facing
                                             + light.intensity * surface.specular[c] * gloss));
    return out;
}

SbColor mix(const SbColor& a, const SbColor& b, float t)
{
    SbColor out;
    for (int c = 0; c < 3; ++c)
        out[c] = a[c] + (b[c] - a[c]) * t;
    return out;
}

std::string square(const std::string& appearance, const std::string& more = "")
{
    return "Shape { appearance Appearance { " + appearance
           + " } geometry IndexedFaceSet { coord Coordinate { point [ -2 -2 0, 2 -2 0, 2 2 0, "
             "-2 2 0 ] } coordIndex [ 0 1 2 3 -1 ] "
           + more + " } }\n";
}

class Light97 : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        m_renderer.setBackgroundColor(kSky);
        m_renderer.getGLRenderAction()->setTransparencyType(
            SoGLRenderAction::SORTED_TRIANGLES_BLEND);
    }

    /// Draws a file below a camera that sees x and y from -2 to 2.
    void draw(const std::string& text)
    {
        SoInput in;
        in.setBuffer(text.data(), text.size());
        const SoRef<SoNode> scene(SoDB::readAll(&in));
        ASSERT_TRUE(scene) << text;
        m_root = new SoSeparator;
        auto* camera = new SoOrthographicCamera;
        camera->position.setValue(SbVec3f(0, 0, kEyeDistance));
        camera->nearDistance = 1;
        camera->farDistance = 100;
        camera->height = 4;
        m_root->addChild(camera);
        m_root->addChild(scene.get());
        for (int frame = 0; frame < 3; ++frame) // the later ones from lists that were kept
            ASSERT_TRUE(m_renderer.render(m_root.get()));
    }
    void draw97(const std::string& content) { draw("#VRML V2.0 utf8\n" + content); }

    /// Returns the point at which the ray through the middle of a pixel meets the plane z = 0.
    static SbVec3f pointAt(int x, int y)
    {
        const auto along = [](int pixel) {
            return (static_cast<float>(pixel) + 0.5f) / kSize * 4 - 2;
        };
        return SbVec3f(along(x), along(y), 0);
    }

    void expectPixel(int x, int y, const SbColor& color, const std::string& what) const
    {
        const unsigned char* p = m_renderer.getBuffer() + 3 * (y * kSize + x);
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(p[c], color[c] * 255, 2.5)
                << what << ": component " << c << " at " << x << ' ' << y;
    }

    SoRef<SoSeparator> m_root; ///< of what was drawn
    SoOffscreenRenderer m_renderer{SbViewportRegion(kSize, kSize)};
};

TEST_F(Light97, TexturesAreLitLikeTheDiffuseColor)
{
    const SbColor red(0.8f, 0.2f, 0.1f), green(0.1f, 0.7f, 0.3f), painted(0.25f, 0.5f, 0.75f);
    struct {
        const char* image;
        SbColor color; ///< taken, or times the surface's
        bool replaces;
        std::optional<float> alpha; ///< instead of the material's
    } const kinds[] = {{"1 1 1 0x80", SbColor(128, 128, 128) / 255.0f, false, {}},
                       {"1 1 2 0x8066", SbColor(128, 128, 128) / 255.0f, false, 102 / 255.0f},
                       {"1 1 3 0x4080BF", painted, true, {}},
                       {"1 1 4 0x4080BF66", painted, true, 102 / 255.0f},
                       {"1 1 4 0x4080BFFF", painted, true, 1.0f}};
    constexpr float kOpacity = 0.75f;
    const std::string material =
        "material Material { diffuseColor .8 .2 .1 specularColor .4 .5 .2 emissiveColor .1 0 .05 "
        "shininess .01 transparency .25 ambientIntensity 0 } ";
    const std::string sun = "DirectionalLight { direction -.6 0 -.8 intensity .6 }\n";
    for (const auto& kind : kinds) {
        for (const bool colored : {false, true}) {
            draw97(sun
                   + square(material + "texture PixelTexture { image " + kind.image + " }",
                            colored ? "colorPerVertex FALSE color Color { color .1 .7 .3 }" : ""));
            Surface surface{red, SbColor(0.4f, 0.5f, 0.2f), SbColor(0.1f, 0, 0.05f), 0, 0.01f};
            const SbColor plain = colored ? green : red;
            for (int c = 0; c < 3; ++c)
                surface.diffuse[c] = kind.color[c] * (kind.replaces ? 1 : plain[c]);
            const Light light{SbVec3f(-0.6f, 0, -0.8f), 0.6f};
            const SbColor color = lit(surface, light, pointAt(20, 40));
            expectPixel(20, 40, mix(kSky, color, kind.alpha.value_or(kOpacity)),
                        std::string(kind.image) + (colored ? " over colors" : ""));
        }
    }
    // Without a material the texture is all there is.
    draw97(sun + square("texture PixelTexture { image 1 1 3 0x4080BF }"));
    expectPixel(20, 40, painted, "no material");
}

TEST_F(Light97, SpotsFadeEvenlyBetweenBeamAndCutOff)
{
    const Surface surface{SbColor(0.9f, 0.6f, 0.3f)};
    struct {
        const char* fields;
        float beamWidth, cutOffAngle;
    } const beams[] = {{"beamWidth .2 cutOffAngle .6", 0.2f, 0.6f},
                       {"beamWidth 0 cutOffAngle .75", 0, 0.75f},
                       {"cutOffAngle .5", 1.570796f, 0.5f},
                       {"beamWidth .5 cutOffAngle .5", 0.5f, 0.5f}};
    for (const auto& beam : beams) {
        draw97(std::string("SpotLight { location 0 0 2 direction 0 0 -1 ") + beam.fields + " }\n"
               + square("material Material { diffuseColor .9 .6 .3 }"));
        const Light light{SbVec3f(0, 0, -1), 1, 0, SbVec3f(0, 0, 2), beam.beamWidth,
                          beam.cutOffAngle};
        for (const int x : {32, 36, 40, 44, 48, 54, 60})
            expectPixel(x, 32, lit(surface, light, pointAt(x, 32)), beam.fields);
    }
}

TEST_F(Light97, FogLiesOverEverythingWhereverItStands)
{
    const SbColor glow(0.9f, 0.1f, 0.2f), fog(0.2f, 0.9f, 0.4f);
    const std::string shape = square("material Material { diffuseColor 0 0 0 emissiveColor .9 .1 "
                                     ".2 }");
    for (const bool isLinear : {true, false}) {
        const std::string node = std::string("Fog { color .2 .9 .4 visibilityRange 15 fogType \"")
                                 + (isLinear ? "LINEAR" : "EXPONENTIAL") + "\" }\n";
        struct {
            std::string text;
            float scale;
        } const scenes[] = {{node + shape, 1},
                            {shape + node, 1},
                            {"Group { children [ " + shape
                                 + "Transform { translation 5 3 1 scale 2 2 2 children " + node
                                 + " } ] }\n",
                             2},
                            // One fog counts at a time.
                            {"Transform { children " + node + " }\n" + shape
                                 + "Fog { color 0 0 0 visibilityRange "
                                   "1 }\n",
                             1}};
        for (const auto& scene : scenes) {
            draw97(scene.text);
            for (const int x : {3, 32, 60}) {
                const float range = 15 * scene.scale;
                const float d = (pointAt(x, 32) - SbVec3f(0, 0, kEyeDistance)).length();
                const float clear = isLinear ? (range - d) / range : std::exp(-d / (range - d));
                expectPixel(x, 32, mix(fog, glow, clear), scene.text);
            }
        }
    }
    draw97(shape + "Fog { color .2 .9 .4 visibilityRange 9 fogType \"EXPONENTIAL\" }\n");
    expectPixel(32, 32, fog, "beyond the range");
}

TEST_F(Light97, TheBoundFogCounts)
{
    const SbColor first(1, 0, 0), second(0, 1, 0);
    draw97(square("")
           + "DEF First Fog { color 1 0 0 visibilityRange 5 } Group { children DEF "
             "Second Fog { color 0 1 0 visibilityRange 5 } }\n");
    expectPixel(32, 32, first, "none is bound");
    const auto bind = [this](const char* name, bool on) {
        static_cast<SoVRMLFog*>(SoNode::getByName(SbName(name)))->set_bind = on;
        ASSERT_TRUE(m_renderer.render(m_root.get()));
    };
    bind("Second", true);
    expectPixel(32, 32, second, "the second is bound");
    bind("First", true);
    expectPixel(32, 32, first, "the first is on top");
    bind("First", false);
    expectPixel(32, 32, second, "the second is left");
}

TEST_F(Light97, GlossOfNoShininessIsEverywhere)
{
    for (const float shininess : {0.0f, 0.004f, 0.1f}) {
        const Surface surface{SbColor(0.3f, 0.2f, 0.1f), SbColor(0.2f, 0.4f, 0.6f),
                              SbColor(0, 0, 0), 0, shininess};
        draw97("DirectionalLight { direction -.96 0 -.28 }\n"
               + square("material Material { diffuseColor .3 .2 .1 specularColor .2 .4 .6 "
                        "shininess "
                        + std::to_string(shininess) + " }"));
        const Light light{SbVec3f(-0.96f, 0, -0.28f)};
        expectPixel(32, 32, lit(surface, light, pointAt(32, 32)), std::to_string(shininess));
    }
}

TEST_F(Light97, AmbientLightComesFromLightSources)
{
    const Surface surface{SbColor(0.9f, 0.6f, 0.3f), SbColor(0, 0, 0), SbColor(0, 0.1f, 0), 0.5f};
    const std::string shape = square(
        "material Material { diffuseColor .9 .6 .3 emissiveColor 0 .1 0 ambientIntensity .5 }");
    draw97(shape);
    expectPixel(32, 32, surface.emissive, "no light");
    for (const float intensity : {0.0f, 0.25f, 1.0f}) {
        draw97("DirectionalLight { direction 0 0 -1 ambientIntensity .4 intensity "
               + std::to_string(intensity) + " }\n" + shape);
        expectPixel(32, 32, lit(surface, {SbVec3f(0, 0, -1), intensity, 0.4f}, pointAt(32, 32)),
                    "ambient " + std::to_string(intensity));
    }
}

TEST_F(Light97, LevelsGoByDistancesInTheirOwnSpace)
{
    // The eye is 10 away in the world: 2.5 below a scale by 4, 40 below one by a quarter.
    const SbColor near(1, 0, 0), far(0, 1, 0);
    const auto glowing = [](const std::string& color) {
        return "Shape { appearance Appearance { material Material { diffuseColor 0 0 0 "
               "emissiveColor "
               + color + " } } geometry Box { size 20 20 .01 } }\n";
    };
    const std::string levels97 =
        "LOD { range 5 level [ " + glowing("1 0 0") + glowing("0 1 0") + " ] }\n";
    const std::string levels = "LOD { range 5 Separator { Material { diffuseColor 1 0 0 } Cube { "
                               "width 20 height 20 depth .01 } } Separator { Material { "
                               "diffuseColor 0 1 0 } Cube { width 20 height 20 depth .01 } } }\n";
    for (const auto& [scale, color] : {std::pair(4.0f, near), std::pair(0.25f, far)}) {
        const std::string s = std::to_string(scale), scales = s + ' ' + s + ' ' + s;
        draw97("Transform { scale " + scales + " children " + levels97 + " }\n");
        expectPixel(32, 32, color, "VRML97, scale " + s);
        for (const char* header : {"#VRML V1.0 ascii\n", "#Kalmyr V1.0 ascii\n"}) {
            const std::string content = std::string("Separator { DirectionalLight { } Scale { "
                                                    "scaleFactor ")
                                        + scales + " } " + levels + " }\n";
            draw(header + content);
            const unsigned char* p = m_renderer.getBuffer() + 3 * (32 * kSize + 32);
            EXPECT_EQ(p[0] > p[1], color == near) << header << "scale " << s;
        }
    }
}

} // namespace
