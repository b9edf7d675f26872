#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoGradientBackground.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/nodes/SoTextureUnit.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <algorithm>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Style = SoGLRenderAction::DrawStyle;

constexpr int kSize = 64;
const SbColor kRed(1, 0, 0), kGreen(0, 1, 0), kBlue(0, 0, 1), kBlack(0, 0, 0);

/// An orthographic camera sees x and y from -2 to 2: 16 pixels a unit, the middle at 32.
class DrawStyles : public testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        root = new SoSeparator;
        auto* camera = new SoOrthographicCamera;
        camera->position.setValue(SbVec3f(0, 0, 10));
        camera->nearDistance.setValue(1);
        camera->farDistance.setValue(20);
        camera->height.setValue(4);
        root->addChild(camera);
        root->addChild(new SoDirectionalLight);
    }

    SoSeparator* add(SoNode* shape, const SbColor& color, const SbVec3f& place)
    {
        auto* one = new SoSeparator;
        auto* material = new SoMaterial;
        material->diffuseColor.setValue(color);
        auto* translation = new SoTranslation;
        translation->translation = place;
        one->addChild(material);
        one->addChild(translation);
        one->addChild(shape);
        root->addChild(one);
        return one;
    }

    void draw(Style style)
    {
        renderer.getGLRenderAction()->setDrawStyle(style);
        ASSERT_TRUE(renderer.render(root.get()));
    }

    SbColor pixel(int x, int y) const
    {
        const unsigned char* p = renderer.getBuffer() + 3 * (y * kSize + x);
        return SbColor(p[0] / 255.0f, p[1] / 255.0f, p[2] / 255.0f);
    }
    /// Whether a line of that colour passes within a pixel.
    bool isLineAt(int x, int y, const SbColor& color) const
    {
        for (int dx = -1; dx <= 1; ++dx)
            for (int dy = -1; dy <= 1; ++dy)
                if (isLike(
                        pixel(std::clamp(x + dx, 0, kSize - 1), std::clamp(y + dy, 0, kSize - 1)),
                        color))
                    return true;
        return false;
    }
    static bool isLike(const SbColor& a, const SbColor& b) { return (a - b).length() < 0.1f; }
    std::vector<unsigned char> picture() const
    {
        return {renderer.getBuffer(), renderer.getBuffer() + 3 * kSize * kSize};
    }

    SoRef<SoSeparator> root;
    SoOffscreenRenderer renderer{SbViewportRegion(kSize, kSize)};
};

} // namespace

TEST_F(DrawStyles, HiddenLinesAreHidden)
{
    add(new SoCube, kRed, {0, 0, 0});    // pixels 16 to 48
    add(new SoCube, kGreen, {1, 1, -4}); // 32 to 64, partly behind
    for (const Style style : {SoGLRenderAction::WIREFRAME, SoGLRenderAction::HIDDEN_LINE}) {
        draw(style);
        const bool isHiding = style == SoGLRenderAction::HIDDEN_LINE;
        EXPECT_TRUE(isLineAt(16, 24, kRed)) << style;
        EXPECT_TRUE(isLineAt(32, 56, kGreen)) << style;
        EXPECT_EQ(isLineAt(32, 40, kGreen), !isHiding) << style;
        EXPECT_TRUE(isLike(pixel(24, 24), kBlack)) << "no diagonal, no face, style " << style;
    }
    // Whatever is behind: the faces show nothing of their own.
    auto* gradient = new SoGradientBackground;
    gradient->color0.setValue(kBlue);
    gradient->color1.setValue(kBlue);
    root->insertChild(gradient, 0);
    draw(SoGLRenderAction::HIDDEN_LINE);
    EXPECT_TRUE(isLike(pixel(24, 24), kBlue));
    EXPECT_FALSE(isLineAt(32, 40, kGreen));
}

TEST_F(DrawStyles, CurvedSurfacesShowTheirFacets)
{
    add(new SoSphere, kRed, {0, 0, 0}); // pixels 16 to 48
    for (const Style style : {SoGLRenderAction::WIREFRAME, SoGLRenderAction::HIDDEN_LINE}) {
        draw(style);
        int lit = 0, left = 0;
        for (int y = 16; y < 48; ++y) {
            for (int x = 16; x < 48; ++x) {
                const bool isLine = isLike(pixel(x, y), kRed);
                lit += isLine;
                left += isLine && x < 32;
            }
        }
        EXPECT_GT(lit, 100) << style;
        EXPECT_LT(lit, 700) << style;
        EXPECT_NEAR(2 * left, lit, 0.3 * lit) << "on both sides";
    }
}

TEST_F(DrawStyles, ABoxStandsForEachShape)
{
    add(new SoSphere, kRed, {0, 0, 0});
    draw(SoGLRenderAction::BOUNDING_BOX);
    for (const int at : {16, 32, 48}) {
        EXPECT_TRUE(isLineAt(at, 16, kRed)) << at;
        EXPECT_TRUE(isLineAt(48, at, kRed)) << at;
    }
    EXPECT_TRUE(isLike(pixel(32, 32), kBlack));
}

TEST_F(DrawStyles, PointsStandAtTheCorners)
{
    add(new SoCube, kRed, {0, 0, 0});
    draw(SoGLRenderAction::POINTS);
    EXPECT_TRUE(isLineAt(16, 48, kRed));
    EXPECT_FALSE(isLineAt(32, 48, kRed)) << "between two corners";
}

TEST_F(DrawStyles, FlatFacesHaveOneToneEach)
{
    add(new SoSphere, SbColor(1, 1, 1), {0, 0, 0});
    const auto tones = [this] {
        std::set<float> found;
        for (int x = 18; x < 46; ++x)
            found.insert(pixel(x, 38)[0]);
        return found.size();
    };
    draw(SoGLRenderAction::AS_IS);
    const std::size_t smooth = tones();
    draw(SoGLRenderAction::FLAT);
    EXPECT_LT(tones(), smooth * 2 / 3);
    EXPECT_GT(tones(), 2u) << "it is lit";
}

TEST_F(DrawStyles, WithoutTexturesTheMaterialShows)
{
    auto* cube = add(new SoCube, SbColor(1, 1, 1), {0, 0, 0});
    auto* texture = new SoTexture2;
    const unsigned char green[3] = {0, 255, 0};
    texture->image.setValue(SbImage(SbVec2i32(1, 1), 3, green));
    cube->insertChild(texture, 0);
    draw(SoGLRenderAction::AS_IS);
    EXPECT_TRUE(isLike(pixel(32, 32), kGreen));
    draw(SoGLRenderAction::NO_TEXTURE);
    EXPECT_TRUE(isLike(pixel(32, 32), SbColor(1, 1, 1)));
}

TEST_F(DrawStyles, NoUnitOfTextureShows)
{
    auto* cube = add(new SoCube, SbColor(1, 1, 1), {0, 0, 0});
    const unsigned char green[3] = {0, 255, 0};
    auto* unit = new SoTextureUnit;
    unit->unit = 1;
    auto* texture = new SoTexture2;
    texture->image.setValue(SbImage(SbVec2i32(1, 1), 3, green));
    cube->insertChild(texture, 0);
    cube->insertChild(unit, 0);
    draw(SoGLRenderAction::AS_IS);
    EXPECT_TRUE(isLike(pixel(32, 32), kGreen));
    draw(SoGLRenderAction::NO_TEXTURE);
    EXPECT_TRUE(isLike(pixel(32, 32), SbColor(1, 1, 1)));
    draw(SoGLRenderAction::WIREFRAME);
    EXPECT_TRUE(isLineAt(16, 32, SbColor(1, 1, 1)));
    draw(SoGLRenderAction::FLAT);
    EXPECT_TRUE(isLike(pixel(32, 32), kGreen)) << "with coordinates for each unit";
}

TEST_F(DrawStyles, KeptListsKnowTheirStyle)
{
    for (int i = 0; i < 4; ++i)
        add(new SoSphere, i % 2 ? kRed : kGreen, {i * 0.5f - 1, 0, -i * 1.0f});
    constexpr Style all[] = {SoGLRenderAction::AS_IS,       SoGLRenderAction::NO_TEXTURE,
                             SoGLRenderAction::HIDDEN_LINE, SoGLRenderAction::WIREFRAME,
                             SoGLRenderAction::POINTS,      SoGLRenderAction::BOUNDING_BOX,
                             SoGLRenderAction::FLAT};
    std::vector<std::vector<unsigned char>> uncached;
    renderer.getGLRenderAction()->setCaching(false);
    for (const Style style : all) {
        draw(style);
        uncached.push_back(picture());
    }
    renderer.getGLRenderAction()->setCaching(true);
    for (int round = 0; round < 3; ++round) {
        for (std::size_t i = 0; i < std::size(all); ++i) {
            draw(all[i]);
            EXPECT_EQ(picture(), uncached[i]) << "style " << i << ", round " << round;
        }
    }
    EXPECT_NE(uncached[2], uncached[3]);
}

TEST_F(DrawStyles, TwoEyesSeeNearThingsApart)
{
    root = new SoSeparator;
    auto* camera = new SoPerspectiveCamera;
    camera->position.setValue(SbVec3f(0, 0, 10));
    camera->nearDistance.setValue(1);
    camera->farDistance.setValue(20);
    root->addChild(camera);
    root->addChild(new SoDirectionalLight);
    auto* place = add(new SoSphere, SbColor(1, 1, 1), {0, 0, 0});
    /// Middle of what is bright in one channel.
    const auto middle = [this](int channel) {
        int sum = 0, count = 0;
        for (int x = 0; x < kSize; ++x) {
            if (pixel(x, kSize / 2)[channel] > 0.5f) {
                sum += x;
                ++count;
            }
        }
        return count ? static_cast<float>(sum) / static_cast<float>(count) : -1;
    };
    renderer.getGLRenderAction()->setStereo({true, 1, 10});
    draw(SoGLRenderAction::AS_IS);
    EXPECT_NEAR(middle(0), middle(1), 1) << "at the distance where the eyes' views meet";
    ASSERT_GT(middle(0), 0);
    static_cast<SoTranslation*>(place->getChild(1))->translation = SbVec3f(0, 0, 5);
    draw(SoGLRenderAction::AS_IS);
    EXPECT_GT(middle(0), middle(1) + 3) << "the left eye sees what is near farther right";
    static_cast<SoTranslation*>(place->getChild(1))->translation = SbVec3f(0, 0, -8);
    draw(SoGLRenderAction::AS_IS);
    EXPECT_LT(middle(0), middle(1) - 1);
    renderer.getGLRenderAction()->setStereo({});
    draw(SoGLRenderAction::AS_IS);
    EXPECT_EQ(middle(0), middle(1));
}
