#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoGradientBackground.h>
#include <kalmyr/nodes/SoLightModel.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoScale.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/rendering/RenderStatistics.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/vrml/SoVRMLAppearance.h>
#include <kalmyr/vrml/SoVRMLBackground.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLDirectionalLight.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLMaterial.h>
#include <kalmyr/vrml/SoVRMLPointLight.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLSpotLight.h>
#include <kalmyr/vrml/SoVRMLTransform.h>

#include "support/DrawnItems.h"
#include "support/ErrorGuard.h"

#include <array>
#include <cstdlib>
#include <random>

#include <gtest/gtest.h>

namespace {

constexpr int kSize = 64;

class Rendering : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        m_root = new SoSeparator;
        m_camera = new SoOrthographicCamera; // sees x and y from -2 to 2
        m_camera->position.setValue(SbVec3f(0, 0, 10));
        m_camera->nearDistance.setValue(1);
        m_camera->farDistance.setValue(20);
        m_camera->height.setValue(4);
        m_root->addChild(m_camera);
    }

    void needContext()
    {
        if (!SoOffscreenContext::shared().isValid()) {
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        }
    }

    SoSeparator* addCube(const SbColor& color, float z, float transparency = 0)
    {
        auto* one = new SoSeparator;
        auto* material = new SoMaterial;
        material->diffuseColor.setValue(color);
        material->transparency.setValue(transparency);
        auto* place = new SoTranslation;
        place->translation.setValue(SbVec3f(0, 0, z));
        one->addChild(material);
        one->addChild(place);
        one->addChild(new SoCube);
        m_root->addChild(one);
        return one;
    }

    void unlit()
    {
        auto* model = new SoLightModel;
        model->model.setValue(SoLightModel::BASE_COLOR);
        m_root->addChild(model);
    }

    std::array<int, 3> pixel(int x, int y) const
    {
        const unsigned char* p = m_renderer.getBuffer() + 3 * (y * kSize + x);
        return {p[0], p[1], p[2]};
    }

    void expectPixel(int x, int y, std::array<int, 3> color, int tolerance = 4) const
    {
        const auto found = pixel(x, y);
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(found[c], color[c], tolerance)
                << "component " << c << " at " << x << ' ' << y;
        }
    }

    SoRef<SoSeparator> m_root;
    SoOrthographicCamera* m_camera = nullptr; // Not owned; the root is its parent.
    SoOffscreenRenderer m_renderer{SbViewportRegion(kSize, kSize)};
};

TEST_F(Rendering, LightsACubeBeforeTheBackground)
{
    needContext();
    m_renderer.setBackgroundColor(SbColor(0, 0, 1));
    auto* light = new SoDirectionalLight;
    m_root->addChild(light);
    addCube(SbColor(1, 0, 0), 0);
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    // The default ambient part is 0.2 * 0.2 of white.
    expectPixel(32, 32, {255, 10, 10});
    expectPixel(2, 2, {0, 0, 255});

    light->direction.setValue(SbVec3f(0, 0, 1)); // from behind
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    expectPixel(32, 32, {10, 10, 10});

    auto* gradient = new SoGradientBackground;
    gradient->color0.setValue(SbColor(1, 1, 1));
    gradient->color1.setValue(SbColor(0, 0, 0));
    m_root->addChild(gradient); // last, and still behind
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    expectPixel(32, 32, {10, 10, 10});
    expectPixel(2, 62, {255, 255, 255}, 8);
    expectPixel(2, 1, {0, 0, 0}, 8);
}

TEST_F(Rendering, LightsShineAsFarAsTheirRadius)
{
    needContext();
    auto* size = new SoScale;
    size->scaleFactor.setValue(0.5f, 0.5f, 0.5f);
    auto* bulb = new SoVRMLPointLight;
    auto* spot = new SoVRMLSpotLight;
    bulb->location.setValue(0, 0, 6); // 3 in the world, 2 from the cube
    spot->location.setValue(0, 0, 6);
    auto* back = new SoScale;
    back->scaleFactor.setValue(2, 2, 2);
    for (SoNode* node : std::initializer_list<SoNode*>{size, bulb, spot, back})
        m_root->addChild(node);
    addCube(SbColor(1, 0, 0), 0);
    const auto red = [this](SoVRMLLight* on, SoSFFloat& radius, float value) {
        radius = value;
        on->on = true;
        EXPECT_TRUE(m_renderer.render(m_root.get()));
        on->on = false;
        return pixel(32, 32)[0];
    };
    bulb->on = false;
    spot->on = false;
    EXPECT_GT(red(bulb, bulb->radius, 4.1f), 200);
    EXPECT_LT(red(bulb, bulb->radius, 3.9f), 20);
    EXPECT_GT(red(spot, spot->radius, 4.1f), 200);
    EXPECT_LT(red(spot, spot->radius, 3.9f), 20);
}

TEST_F(Rendering, LightsOfVrml97ShineOnTheWholeSceneOrOnTheirGroup)
{
    needContext();
    const auto box = [](float x) {
        auto* place = new SoVRMLTransform;
        place->translation.setValue(x, 0, 0);
        auto* shape = new SoVRMLShape;
        auto* look = new SoVRMLAppearance;
        look->material.setValue(new SoVRMLMaterial);
        shape->appearance.setValue(look);
        shape->geometry.setValue(new SoVRMLBox);
        place->addChild(shape);
        return place;
    };
    auto* group = new SoVRMLGroup;
    group->addChild(box(-1.5f));
    auto* sun = new SoVRMLDirectionalLight;
    group->addChild(sun);
    auto* stand = new SoVRMLTransform;
    auto* lamp = new SoVRMLPointLight;
    stand->translation.setValue(0, 0, 20);
    stand->addChild(lamp);
    for (SoNode* node : std::initializer_list<SoNode*>{group, box(1.5f), stand})
        m_root->addChild(node);
    for (int frame = 0; frame < 4; ++frame) { // the later ones from lists that were kept
        sun->on = true;
        lamp->on = false;
        ASSERT_TRUE(m_renderer.render(m_root.get()));
        EXPECT_GT(pixel(12, 32)[0], 150);
        EXPECT_LT(pixel(52, 32)[0], 20);
        sun->on = false;
        lamp->on = true;
        ASSERT_TRUE(m_renderer.render(m_root.get()));
        EXPECT_GT(pixel(12, 32)[0], 150);
        EXPECT_GT(pixel(52, 32)[0], 150);
    }
}

TEST_F(Rendering, BlendsInTheOrderThatTheTypeAsksFor)
{
    needContext();
    unlit();
    addCube(SbColor(0, 1, 0), 3, 0.5f); // the near one is traversed first
    addCube(SbColor(1, 0, 0), 0);
    const auto draw = [this](int type) {
        m_renderer.getGLRenderAction()->setTransparencyType(type);
        ASSERT_TRUE(m_renderer.render(m_root.get()));
    };
    for (const int type : {6, 7, 8}) {
        draw(type);
        const auto found = pixel(32, 32);
        EXPECT_GT(found[0], 20) << type;
        EXPECT_GT(found[1], 100) << type;
    }
    draw(SoGLRenderAction::NO_TRANSPARENCY);
    expectPixel(32, 32, {0, 255, 0});
    draw(SoGLRenderAction::BLEND);
    // Depth was written before the red one came.
    EXPECT_LT(pixel(32, 32)[0], 10);

    draw(SoGLRenderAction::SCREEN_DOOR);
    int green = 0;
    for (int i = 0; i < 64; ++i) {
        const auto found = pixel(28 + i % 8, 28 + i / 8);
        green += found[1] > 200 ? 1 : 0;
        EXPECT_GT(found[0] + found[1], 200);
    }
    EXPECT_EQ(green, 32);
}

TEST_F(Rendering, PaintsTexturesAndFreesThemAndBuffersAgain)
{
    needContext();
    unlit();
    auto* texture = new SoTexture2;
    const unsigned char blue[] = {0, 0, 255};
    texture->image.setValue(SbImage(SbVec2i32(1, 1), 3, blue));
    m_root->addChild(texture);
    SoSeparator* one = addCube(SbColor(1, 1, 1), 0);
    static_cast<SoCube*>(one->getChild(2))->width.setValue(1.37f); // a size of its own
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    expectPixel(32, 32, {0, 0, 255});
    texture->model.setValue(SoTexture2::BLEND);
    texture->blendColor.setValue(SbColor(1, 0, 0));
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    expectPixel(32, 32, {255, 255, 0}); // white where the texture is 0, the blend colour where 1

    const auto& statistics = m_renderer.getGLRenderAction()->getStatistics();
    const std::size_t geometries = statistics.geometries;
    EXPECT_GE(statistics.textures, 1u);
    m_root->removeChild(one);
    for (int i = 0; i < 70; ++i) {
        ASSERT_TRUE(m_renderer.render(m_root.get()));
    }
    EXPECT_EQ(statistics.geometries, geometries - 1);
    EXPECT_EQ(statistics.textures, 0u);
    expectPixel(32, 32, {0, 0, 0});
}

TEST_F(Rendering, ShowsTheSkyInItsDirection)
{
    needContext();
    auto* sky = new SoVRMLBackground;
    sky->skyColor.setValue(SbColor(0, 0, 1));
    sky->groundAngle.setValue(1.5708f);
    sky->groundColor.set1Value(0, SbColor(1, 0, 0));
    sky->groundColor.set1Value(1, SbColor(1, 0, 0));
    m_root->addChild(sky);
    m_root->addChild(new SoGradientBackground); // the sky comes first
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    expectPixel(32, kSize - 4, {0, 0, 255});
    expectPixel(32, 4, {255, 0, 0});
    // The sky's last colour stands a little below the edge of the ground, as rounded angles do.
    sky->skyColor.set1Value(1, SbColor(0, 1, 0));
    sky->skyAngle.setValue(1.571f);
    sky->groundAngle.setValue(1.571f);
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    expectPixel(32, kSize / 2 + 1, {0, 255, 0});
    sky->skyColor.setValue(SbColor(0, 0, 1));
    m_camera->orientation.setValue(SbRotation(SbVec3f(0, 0, 1), 3.14159f));
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    expectPixel(32, kSize - 4, {255, 0, 0});
    m_camera->orientation.setValue(SbRotation(SbVec3f(1, 0, 0), 1.5f));
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    expectPixel(32, 4, {0, 0, 255});
    expectPixel(32, kSize - 4, {0, 0, 255});
}

TEST_F(Rendering, SaysSoOnceWithoutAContext)
{
    auto errors = support::expectErrors();
    SoGLRenderAction action;
    action.apply(m_root.get());
    action.apply(m_root.get());
    EXPECT_FALSE(action.hasDrawn());
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_TRUE(errors.contains("no OpenGL context"));
}

/// A random tree of separators, materials, translations, lights and cubes, and edits of it.
class RandomScene {
public:
    explicit RandomScene(unsigned seed) : m_random(seed), m_root(new SoSeparator)
    {
        m_groups.push_back(m_root.get());
        for (int i = 0; i < 60; ++i) {
            grow();
        }
        m_root->insertChild(support::wideCamera(), 0);
    }
    SoSeparator* root() const { return m_root.get(); }

    void edit()
    {
        switch (below(5)) {
        case 0:
            pick(m_materials)->diffuseColor.setValue(SbColor(unit(), unit(), unit()));
            break;
        case 1:
            pick(m_places)->translation.setValue(SbVec3f(unit(), unit(), unit()));
            break;
        case 2:
            pick(m_cubes)->width.setValue(1 + unit());
            break;
        case 3:
            pick(m_groups)->addChild(pick(m_cubes));
            break;
        default: {
            SoSeparator* group = pick(m_groups);
            group->insertChild(pick(m_materials), below(group->getNumChildren() + 1));
        }
        }
    }

private:
    int below(int n) { return static_cast<int>(m_random() % static_cast<unsigned>(n)); }
    float unit() { return static_cast<float>(below(1000)) / 1000; }
    template <class T>
    T* pick(const std::vector<T*>& from)
    {
        return from[static_cast<std::size_t>(below(static_cast<int>(from.size())))];
    }
    template <class T>
    void add(std::vector<T*>& all)
    {
        all.push_back(new T);
        pick(m_groups)->addChild(all.back());
    }
    void grow()
    {
        auto* group = new SoSeparator;
        pick(m_groups)->addChild(group);
        m_groups.push_back(group);
        add(m_materials);
        add(m_places);
        add(m_cubes);
        if (below(4) == 0) {
            pick(m_groups)->insertChild(new SoDirectionalLight, 0);
        }
        // A separator that is seen in several places.
        m_root->addChild(m_groups.back());
    }

    std::mt19937 m_random;
    SoRef<SoSeparator> m_root;
    std::vector<SoSeparator*> m_groups;
    std::vector<SoMaterial*> m_materials;
    std::vector<SoTranslation*> m_places;
    std::vector<SoCube*> m_cubes;
};

void expectSame(const std::vector<support::DrawnItem>& kept,
                const std::vector<support::DrawnItem>& fresh)
{
    ASSERT_EQ(kept.size(), fresh.size());
    for (std::size_t i = 0; i < kept.size(); ++i) {
        ASSERT_EQ(kept[i].geometry, fresh[i].geometry) << i;
        ASSERT_EQ(kept[i].node, fresh[i].node) << i;
        ASSERT_TRUE(*kept[i].appearance == *fresh[i].appearance) << i;
        ASSERT_TRUE(kept[i].toWorld.equals(fresh[i].toWorld, 1e-4f)) << i;
        ASSERT_EQ(kept[i].lights.size(), fresh[i].lights.size()) << i;
        for (std::size_t l = 0; l < kept[i].lights.size(); ++l) {
            ASSERT_TRUE(kept[i].lights[l].position.equals(fresh[i].lights[l].position, 1e-4f)) << i;
        }
    }
}

TEST_F(Rendering, KeptListsEqualFreshOnesAfterEveryEdit)
{
    for (unsigned seed = 1; seed <= 5; ++seed) {
        RandomScene scene(seed);
        SoGLRenderAction keeping;
        std::size_t reused = 0;
        for (int step = 0; step < 60; ++step) {
            scene.edit();
            // The second frame after an edit keeps lists, the third uses them.
            for (int frame = 0; frame < 1 + step % 3; ++frame) {
                SoGLRenderAction fresh;
                fresh.setCaching(false);
                expectSame(support::drawnItems(keeping, scene.root()),
                           support::drawnItems(fresh, scene.root()));
                ASSERT_FALSE(HasFatalFailure()) << "seed " << seed << " step " << step;
                reused += keeping.getStatistics().listsReused;
            }
        }
        EXPECT_GT(reused, 100u);
    }
}

TEST_F(Rendering, BuildsOnlyTheListsOnTheWayToAChange)
{
    auto* branch = new SoSeparator;
    for (int i = 0; i < 50; ++i) {
        branch->addChild(addCube(SbColor(1, 1, 1), float(i)));
    }
    m_root->addChild(branch);
    SoGLRenderAction action;
    for (int i = 0; i < 3; ++i) {
        support::drawnItems(action, m_root.get());
    }
    auto* leaf =
        static_cast<SoTranslation*>(static_cast<SoSeparator*>(branch->getChild(7))->getChild(1));
    leaf->translation.setValue(SbVec3f(5, 0, 0));
    support::drawnItems(action, m_root.get());
    EXPECT_EQ(action.getStatistics().listsBuilt, 0u); // moving parts are not kept yet
    support::drawnItems(action, m_root.get());
    EXPECT_LE(action.getStatistics().listsBuilt, 2u);
    support::drawnItems(action, m_root.get());
    EXPECT_EQ(action.getStatistics().listsBuilt, 0u);
}

} // namespace
