#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoClipPlane.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/rendering/RenderStatistics.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoCylinder.h>
#include <kalmyr/shapes/SoLineSet.h>
#include <kalmyr/shapes/SoVertexProperty.h>

#include "support/ErrorGuard.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>

#include <gtest/gtest.h>

namespace {

constexpr int kSize = 96;

class Frames : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        if (!SoOffscreenContext::shared().isValid()) {
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        }
    }
    void TearDown() override
    {
        SoPreferences::removeValue("KMR_GL_BASELINE");
        releaseDevice();
    }
    /// What the context can do is asked for anew with the next frame.
    static void releaseDevice()
    {
        if (SoOffscreenContext::shared().makeCurrent()) {
            SoGLRenderAction::releaseContext();
            SoOffscreenContext::shared().doneCurrent();
        }
    }
};

std::uint64_t sumOf(const SoOffscreenRenderer& renderer)
{
    std::uint64_t sum = 0;
    for (int i = 0; i < kSize * kSize * 3; ++i) {
        sum = sum * 1099511628211u + renderer.getBuffer()[i];
    }
    return sum;
}

/// Groups with many children, which stand in several places, and all kinds of edits of them.
class BusyScene {
public:
    explicit BusyScene(unsigned seed) : m_random(seed), m_root(new SoSeparator)
    {
        m_camera = new SoPerspectiveCamera;
        m_camera->position.setValue(SbVec3f(0, 0, 12));
        m_camera->nearDistance.setValue(1);
        m_camera->farDistance.setValue(40);
        m_root->addChild(m_camera);
        m_root->addChild(new SoDirectionalLight);
        for (int g = 0; g < 3; ++g) {
            m_groups.push_back(new SoSeparator);
            m_groups.back()->addChild(new SoMaterial);
            for (int i = 0; i < 24; ++i) {
                m_groups.back()->addChild(makePart());
            }
        }
        // The second stands in the first, and again with the third beside it.
        m_groups[0]->addChild(m_groups[1]);
        m_root->addChild(m_groups[0]);
        auto* aside = new SoSeparator;
        auto* away = new SoTransform;
        away->translation.setValue(SbVec3f(0.4f, -0.7f, -2));
        aside->addChild(away);
        aside->addChild(m_groups[1]);
        aside->addChild(m_groups[2]);
        m_root->addChild(aside);
    }
    SoSeparator* root() const { return m_root.get(); }

    void edit()
    {
        if (m_moving && below(3) > 0) {
            // What moves does so for a while.
            m_moving->translation.setValue(SbVec3f(5 * unit(), 5 * unit(), unit()));
            return;
        }
        if (m_changing && below(4) > 0) {
            m_changing->diffuseColor.setValue(color());
            m_changing->specularColor.setValue(below(4) ? color() : SbColor(0, 0, 0));
            return;
        }
        SoSeparator* group = m_groups[below(3)];
        const int index =
            1 + static_cast<int>(below(static_cast<unsigned>(group->getNumChildren() - 1)));
        auto* part = static_cast<SoSeparator*>(group->getChild(index));
        const bool isPart = part->getNumChildren() == 3;
        switch (below(9)) {
        case 0:
            group->insertChild(makePart(), index);
            break;
        case 1:
            if (isPart && group->getNumChildren() > 18) {
                group->removeChild(index);
            }
            break;
        case 2:
            if (isPart) {
                group->replaceChild(index, makePart());
            }
            break;
        case 3:
            static_cast<SoMaterial*>(group->getChild(0))->emissiveColor.setValue(color());
            break;
        case 4:
            if (isPart) {
                auto* material = static_cast<SoMaterial*>(part->getChild(1));
                m_changing = below(2) ? SoRef<SoMaterial>(material) : nullptr;
                material->diffuseColor.setValue(color());
            }
            break;
        case 5:
            if (below(6) == 0) {
                m_camera->position.setValue(SbVec3f(unit(), unit(), 12));
            }
            break;
        default:
            if (isPart) {
                auto* place = static_cast<SoTransform*>(part->getChild(0));
                m_moving = below(2) ? SoRef<SoTransform>(place) : nullptr;
                place->translation.setValue(SbVec3f(5 * unit(), 5 * unit(), unit()));
                place->scaleFactor.setValue(SbVec3f(below(3) ? 1.0f : -1.0f, 1, 1));
            }
        }
    }

private:
    unsigned below(unsigned n) { return static_cast<unsigned>(m_random() % n); }
    float unit() { return static_cast<float>(below(20001)) / 10000 - 1; }
    SbColor color() { return {0.5f + unit() / 2, 0.5f + unit() / 2, 0.5f + unit() / 2}; }

    SoNode* makeShape()
    {
        if (below(4) == 0) {
            return new SoCone;
        }
        if (below(5) == 0) {
            auto* lines = new SoLineSet;
            auto* points = new SoVertexProperty;
            points->vertex.set1Value(0, SbVec3f(-1, 0, 0));
            points->vertex.set1Value(1, SbVec3f(1, 1, 0));
            lines->vertexProperty.setValue(points);
            return lines;
        }
        auto* cube = new SoCube;
        cube->width.setValue(1 + unit() / 2);
        return cube;
    }
    SoSeparator* makePart()
    {
        auto* part = new SoSeparator;
        auto* place = new SoTransform;
        place->translation.setValue(SbVec3f(3 * unit(), 3 * unit(), 3 * unit()));
        place->rotation.setValue(SbRotation(SbVec3f(unit(), 1, unit()), 3 * unit()));
        auto* material = new SoMaterial;
        material->diffuseColor.setValue(color());
        if (below(6) == 0) {
            material->transparency.setValue(0.5f);
        }
        part->addChild(place);
        part->addChild(material);
        part->addChild(makeShape());
        return part;
    }

    std::mt19937 m_random;
    SoRef<SoSeparator> m_root;
    SoPerspectiveCamera* m_camera;
    std::vector<SoSeparator*> m_groups;
    SoRef<SoTransform> m_moving;
    SoRef<SoMaterial> m_changing;
};

void expectKeptAsFresh(unsigned seed)
{
    BusyScene scene(seed);
    SoOffscreenRenderer keeping{SbViewportRegion(kSize, kSize)};
    std::size_t patched = 0;
    std::size_t framesWithFew = 0;
    std::uint64_t before = 0;
    int changes = 0;
    for (int step = 0; step < 150; ++step) {
        scene.edit();
        for (int frame = 0; frame < 1 + step % 3; ++frame) {
            SoOffscreenRenderer fresh{SbViewportRegion(kSize, kSize)};
            ASSERT_TRUE(keeping.render(scene.root()));
            ASSERT_TRUE(fresh.render(scene.root()));
            ASSERT_EQ(sumOf(keeping), sumOf(fresh)) << "seed " << seed << " step " << step;
            const auto& statistics = keeping.getGLRenderAction()->getStatistics();
            patched += statistics.listsPatched;
            framesWithFew += statistics.itemsPlaced > 0 && statistics.itemsPlaced < 4;
        }
        changes += sumOf(keeping) != before;
        before = sumOf(keeping);
    }
    EXPECT_GT(patched, 30u);
    EXPECT_GT(framesWithFew, 5u);
    EXPECT_GT(changes, 60);
}

TEST_F(Frames, ShowWhatFreshOnesShowAfterEveryEdit)
{
    for (unsigned seed = 1; seed <= 4; ++seed) {
        expectKeptAsFresh(seed);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST_F(Frames, AreTheSameWithTheLeastOfOpenGL)
{
    for (const unsigned seed : {11u, 12u}) {
        BusyScene scene(seed);
        std::uint64_t sums[2];
        for (const bool baseline : {false, true}) {
            SoPreferences::setBool("KMR_GL_BASELINE", baseline);
            releaseDevice();
            SoOffscreenRenderer renderer{SbViewportRegion(kSize, kSize)};
            ASSERT_TRUE(renderer.render(scene.root()));
            sums[baseline] = sumOf(renderer);
        }
        EXPECT_EQ(sums[0], sums[1]);
    }
    SoPreferences::setBool("KMR_GL_BASELINE", true);
    releaseDevice();
    expectKeptAsFresh(13);
}

/// Growth belongs to what changed, not to what stands beside it.
TEST_F(Frames, VisitOnlyWhatChangedAmongMany)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* camera = new SoPerspectiveCamera;
    camera->position.setValue(SbVec3f(0, 0, 100));
    camera->farDistance.setValue(200);
    root->addChild(camera);
    auto* many = new SoSeparator;
    root->addChild(many);
    std::vector<SoTransform*> places;
    for (int i = 0; i < 2000; ++i) {
        auto* one = new SoSeparator;
        places.push_back(new SoTransform);
        places.back()->translation.setValue(
            SbVec3f(static_cast<float>(i % 50) - 25, static_cast<float>(i / 50) - 20, 0));
        one->addChild(places.back());
        one->addChild(new SoMaterial);
        one->addChild(new SoCube);
        many->addChild(one);
    }
    SoOffscreenRenderer renderer{SbViewportRegion(kSize, kSize)};
    const auto& statistics = renderer.getGLRenderAction()->getStatistics();
    // Something moves from the first frame on.
    for (int i = 0; i < 4; ++i) {
        places[71]->translation.setValue(SbVec3f(1, 2, static_cast<float>(i)));
        ASSERT_TRUE(renderer.render(root.get()));
    }
    EXPECT_LT(statistics.visits, 20u);
    EXPECT_EQ(statistics.itemsPlaced, 1u);
    for (int i = 0; i < 3; ++i) {
        places[70]->translation.setValue(SbVec3f(1, 2, static_cast<float>(i)));
        ASSERT_TRUE(renderer.render(root.get()));
        EXPECT_LT(statistics.visits, 20u);
    }
    EXPECT_EQ(statistics.itemsPlaced, 1u);
    // So are colours.
    for (int i = 0; i < 30; ++i) {
        auto* one = static_cast<SoSeparator*>(many->getChild(100 + i / 3));
        static_cast<SoMaterial*>(one->getChild(1))->diffuseColor.setValue(
            SbColor(1, 0, static_cast<float>(i) / 300));
        ASSERT_TRUE(renderer.render(root.get()));
        EXPECT_LT(statistics.visits, 20u);
        if (i % 3 == 2) {
            EXPECT_EQ(statistics.itemsPlaced, 1u) << i;
        }
    }
    SoOffscreenRenderer fresh{SbViewportRegion(kSize, kSize)};
    ASSERT_TRUE(fresh.render(root.get()));
    EXPECT_EQ(sumOf(renderer), sumOf(fresh));

    many->removeChild(1000);
    ASSERT_TRUE(renderer.render(root.get()));
    EXPECT_LT(statistics.visits, 20u);
    EXPECT_EQ(statistics.items, 1999u);
    ASSERT_TRUE(renderer.render(root.get()));
    EXPECT_EQ(statistics.itemsPlaced, 0u);
}

/// A square before the camera, lit and cut by whatever is added before it.
SoRef<SoSeparator> makeSquare(const std::vector<SoNode*>& before)
{
    SoRef<SoSeparator> root(new SoSeparator);
    auto* camera = new SoOrthographicCamera; // sees x and y from -1 to 1
    camera->position.setValue(SbVec3f(0, 0, 5));
    camera->farDistance.setValue(20);
    root->addChild(camera);
    for (SoNode* node : before) {
        root->addChild(node);
    }
    auto* square = new SoCube;
    square->depth.setValue(0);
    root->addChild(square);
    return root;
}

TEST_F(Frames, TakeAnyNumberOfLights)
{
    for (const int count : {2, 16, 17, 60}) {
        std::vector<SoNode*> lights;
        for (int i = 0; i < count; ++i) {
            lights.push_back(new SoDirectionalLight);
            static_cast<SoDirectionalLight*>(lights.back())
                ->intensity.setValue(0.5f / static_cast<float>(count));
        }
        SoOffscreenRenderer renderer{SbViewportRegion(kSize, kSize)};
        ASSERT_TRUE(renderer.render(makeSquare(lights).get()));
        const unsigned char* middle = renderer.getBuffer() + 3 * (kSize * kSize / 2 + kSize / 2);
        constexpr double kAround = 0.2 * 0.2; // the ambient light without any light
        EXPECT_NEAR(middle[0], (0.8 * 0.5 + kAround) * 255, 1.5) << count;
    }
}

TEST_F(Frames, AreCutByAnyNumberOfPlanes)
{
    constexpr double kTurn = 6.283185307;
    constexpr double kDistance = 0.6;
    for (const int count : {3, 6, 7, 12}) {
        std::vector<SoNode*> planes;
        for (int i = 0; i < count; ++i) {
            const double angle = kTurn * i / count;
            auto* plane = new SoClipPlane;
            const SbVec3f outwards(static_cast<float>(std::cos(angle)),
                                   static_cast<float>(std::sin(angle)), 0);
            plane->plane.setValue(SbPlane(-outwards, -static_cast<float>(kDistance)));
            planes.push_back(plane);
        }
        planes.push_back(new SoDirectionalLight);
        SoOffscreenRenderer renderer{SbViewportRegion(kSize, kSize)};
        ASSERT_TRUE(renderer.render(makeSquare(planes).get()));
        const auto shows = [&renderer](double angle, double distance) {
            const auto pixel = [](double at) { return static_cast<int>((at + 1) * kSize / 2); };
            const int x = pixel(distance * std::cos(angle));
            const int y = pixel(distance * std::sin(angle));
            return renderer.getBuffer()[3 * (y * kSize + x)] > 100;
        };
        for (int i = 0; i < count; ++i) {
            const double angle = kTurn * i / count;
            EXPECT_TRUE(shows(angle, kDistance - 0.04)) << i << " of " << count;
            EXPECT_FALSE(shows(angle, kDistance + 0.04)) << i << " of " << count;
        }
    }
}

TEST_F(Frames, GiveTheirMemoryBack)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* camera = new SoPerspectiveCamera;
    camera->position.setValue(SbVec3f(0, 0, 10));
    root->addChild(camera);
    auto* kept = new SoCube;
    kept->width.setValue(1.25f);
    root->addChild(kept);
    SoOffscreenRenderer renderer{SbViewportRegion(kSize, kSize)};
    ASSERT_TRUE(renderer.render(root.get()));
    const auto& statistics = renderer.getGLRenderAction()->getStatistics();
    const std::size_t bytes = statistics.geometryBytes;
    const std::size_t geometries = statistics.geometries;
    std::mt19937 random(3);
    for (int cycle = 0; cycle < 1000; ++cycle) {
        SoOffscreenRenderer other{SbViewportRegion(kSize, kSize)};
        auto* group = new SoSeparator;
        for (int i = 0; i < 8; ++i) {
            auto* shape = new SoCylinder;
            shape->radius.setValue(0.5f + static_cast<float>(random() % 10000) * 1e-4f);
            group->addChild(shape);
        }
        root->addChild(group);
        ASSERT_TRUE((cycle % 2 ? other : renderer).render(root.get()));
        root->removeChild(group);
        ASSERT_TRUE(renderer.render(root.get()));
        // Two at most: the page that was there, and one more while the others came and went.
        ASSERT_LE(statistics.geometryBytes, 4 * bytes) << cycle;
    }
    ASSERT_TRUE(renderer.render(root.get()));
    EXPECT_EQ(statistics.geometries, geometries);
}

} // namespace
