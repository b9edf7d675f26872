#include "ActionTestNodes.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/details/SoFaceDetail.h>
#include <kalmyr/details/SoLineDetail.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoPickStyle.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoIndexedFaceSet.h>
#include <kalmyr/shapes/SoLineSet.h>
#include <kalmyr/shapes/SoPointSet.h>
#include <support/ErrorGuard.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

using namespace actiontest;

namespace {

class SoRayPickActionTest : public testing::Test {
protected:
    static void SetUpTestSuite() { actiontest::init(); }
};

/// Triangles of world space with what they belong to.
struct Triangle {
    SbVec3d corner[3];
    SoNode* shape;
    int face;
};

/// Distance along a unit ray, in double, the textbook way: the plane first, then the three sides.
std::optional<double> distanceTo(const Triangle& t, const SbVec3d& o, const SbVec3d& d)
{
    const SbVec3d n = (t.corner[1] - t.corner[0]).cross(t.corner[2] - t.corner[0]);
    const double s = (t.corner[0] - o).dot(n) / d.dot(n);
    const SbVec3d p = o + d * s;
    for (int i = 0; i < 3; ++i) {
        const SbVec3d& a = t.corner[i];
        if ((t.corner[(i + 1) % 3] - a).cross(p - a).dot(n) < 0)
            return {};
    }
    return s > 0 ? std::optional(s) : std::nullopt;
}

/// Separators with a random transform each, holding random triangles.
struct TriangleScene {
    explicit TriangleScene(unsigned seed) : root(new SoSeparator), random(seed)
    {
        for (int i = 0; i < 12; ++i)
            root->addChild(makePart());
    }
    float real(float low, float high) { return std::uniform_real_distribution(low, high)(random); }
    SbVec3f vector(float size) { return {real(-size, size), real(-size, size), real(-size, size)}; }

    SoSeparator* makePart()
    {
        auto* part = new SoSeparator;
        auto* transform = new SoTransform;
        transform->translation = vector(6);
        transform->rotation = SbRotation(vector(1), real(0, 6));
        transform->scaleFactor = SbVec3f(real(0.5f, 2), real(0.5f, 2), real(-2, -0.5f));
        SbMatrix m;
        m.setTransform(transform->translation.getValue(), transform->rotation.getValue(),
                       transform->scaleFactor.getValue());
        auto* coordinates = new SoCoordinate3;
        auto* faces = new SoIndexedFaceSet;
        std::vector<SbVec3f> points;
        std::vector<std::int32_t> indices;
        for (int face = 0; face < 40; ++face) {
            const SbVec3f middle = vector(3);
            Triangle t{{}, faces, face};
            for (SbVec3d& corner : t.corner) {
                indices.push_back(static_cast<std::int32_t>(points.size()));
                points.push_back(middle + vector(1));
                corner = SbVec3d(m.point(points.back()));
            }
            indices.push_back(-1);
            triangles.push_back(t);
        }
        coordinates->point.setValues(0, points);
        faces->coordIndex.setValues(0, indices);
        for (SoNode* node : std::initializer_list<SoNode*>{transform, coordinates, faces})
            part->addChild(node);
        for (int i = 0; i < 8; ++i)
            part->addChild(new SoGroup); // enough for the box to be remembered
        return part;
    }
    std::vector<std::pair<double, const Triangle*>> bruteForce(const SbVec3f& o, const SbVec3f& d)
    {
        std::vector<std::pair<double, const Triangle*>> hits;
        for (const Triangle& t : triangles) {
            if (const auto s = distanceTo(t, SbVec3d(o), SbVec3d(d.normalized())))
                hits.emplace_back(*s, &t);
        }
        std::sort(hits.begin(), hits.end());
        return hits;
    }

    SoRef<SoSeparator> root;
    std::mt19937 random;
    std::vector<Triangle> triangles;
};

void expectSame(const SoPickedPoint& picked, double distance, const Triangle& triangle,
                const SbVec3f& o, const SbVec3f& d)
{
    EXPECT_NEAR(picked.getDistance(), distance, 1e-3);
    EXPECT_EQ(picked.getPath()->getTail(), triangle.shape);
    ASSERT_NE(picked.getDetail(), nullptr);
    ASSERT_TRUE(picked.getDetail()->isOfType(SoFaceDetail::getClassTypeId()));
    EXPECT_EQ(static_cast<const SoFaceDetail*>(picked.getDetail())->getFaceIndex(), triangle.face);
    const SbVec3f expected = o + d.normalized() * static_cast<float>(distance);
    EXPECT_TRUE(picked.getPoint().equals(expected, 2e-3f));
    EXPECT_TRUE(picked.getObjectToWorld().point(picked.getObjectPoint()).equals(expected, 2e-3f));
    const SbVec3f normal((triangle.corner[1] - triangle.corner[0])
                             .cross(triangle.corner[2] - triangle.corner[0])
                             .normalized());
    EXPECT_GT(std::abs(picked.getNormal().dot(normal)), 0.999f);
    EXPECT_NEAR(picked.getNormal().length(), 1, 1e-5);
}

TEST_F(SoRayPickActionTest, AgreesWithBruteForceOnRandomTriangles)
{
    TriangleScene scene(5);
    int hits = 0;
    for (int i = 0; i < 300; ++i) {
        if (i == 150) { // from now on separators are culled
            SoGetBoundingBoxAction bounds{SbViewportRegion()};
            bounds.apply(scene.root.get());
        }
        const SbVec3f from = scene.vector(1).normalized() * 25;
        const SbVec3f direction = scene.vector(6) - from;
        const auto expected = scene.bruteForce(from, direction);
        SoRayPickAction pick{SbViewportRegion()};
        pick.setRay(from, direction);
        pick.apply(scene.root.get());
        ASSERT_EQ(pick.getPickedPoint() != nullptr, !expected.empty()) << i;
        if (!expected.empty())
            expectSame(*pick.getPickedPoint(), expected[0].first, *expected[0].second, from,
                       direction);
        EXPECT_EQ(pick.getPickedPoint(1), nullptr);
        pick.setPickAll(true);
        pick.apply(scene.root.get());
        ASSERT_EQ(pick.getPickedPoints().size(), expected.size()) << i;
        for (std::size_t n = 0; n < expected.size(); ++n)
            expectSame(pick.getPickedPoints()[n], expected[n].first, *expected[n].second, from,
                       direction);
        hits += static_cast<int>(expected.size());
    }
    EXPECT_GT(hits, 300);
}

TEST_F(SoRayPickActionTest, RememberedBoxesSaveVisits)
{
    TriangleScene scene(6);
    SoRayPickAction pick{SbViewportRegion()};
    pick.setRay(SbVec3f(0, 0, 100), SbVec3f(1, 0, 0));
    pick.apply(scene.root.get());
    const auto visits = pick.getNumVisits();
    SoGetBoundingBoxAction bounds{SbViewportRegion()};
    bounds.apply(scene.root.get());
    pick.apply(scene.root.get());
    EXPECT_GT(visits, 100u);
    EXPECT_EQ(pick.getNumVisits(), 1u);
}

/// A camera at (0, 0, 10) that looks along -z, 45 degrees high, on a window of 200 by 100.
struct PixelPick {
    PixelPick() : region(200, 100), pick(region), root(new SoSeparator)
    {
        auto* view = new View;
        view->volume.perspective(0.785398, 2, 1, 20);
        view->volume.translateCamera(SbVec3f(0, 0, 10));
        volume = view->volume;
        root->addChild(view);
    }
    /// Where a world point is seen.
    SbVec2f pixelOf(const SbVec3f& p) const
    {
        SbVec3f on;
        volume.projectToScreen(p, on);
        return {on[0] * 200 - 0.5f, on[1] * 100 - 0.5f};
    }
    const SoPickedPoint* at(float x, float y)
    {
        pick.setPoint(
            SbVec2s(static_cast<short>(std::lround(x)), static_cast<short>(std::lround(y))));
        pick.apply(root.get());
        return pick.getPickedPoint();
    }
    SbViewportRegion region;
    SoRayPickAction pick;
    SoRef<SoSeparator> root;
    SbViewVolume volume;
};

TEST_F(SoRayPickActionTest, PixelsSeeWhatTheCameraSees)
{
    PixelPick p;
    p.root->addChild(new Mover(SbVec3f(2, 1, 0)));
    p.root->addChild(new SoCube);
    for (float dx : {-0.9f, 0.0f, 0.9f}) {
        const SbVec3f target(2 + dx, 1.5f, 1);
        const SbVec2f pixel = p.pixelOf(target);
        const SoPickedPoint* picked = p.at(pixel[0], pixel[1]);
        ASSERT_NE(picked, nullptr);
        EXPECT_TRUE(picked->getPoint().equals(target, 0.1f)) << "within a pixel";
        EXPECT_NEAR(picked->getPoint()[2], 1, 1e-4);
        EXPECT_TRUE(picked->getNormal().equals(SbVec3f(0, 0, 1), 1e-5f));
        EXPECT_TRUE(picked->getObjectPoint().equals(target - SbVec3f(2, 1, 0), 0.1f));
    }
    const SbVec2f beside = p.pixelOf(SbVec3f(3.3f, 1, 1));
    EXPECT_EQ(p.at(beside[0], beside[1]), nullptr) << "faces have no pick radius";
}

TEST_F(SoRayPickActionTest, LinesAndPointsArePickedWithinTheRadius)
{
    PixelPick p;
    auto* coordinates = new SoCoordinate3;
    const std::vector<SbVec3f> ends = {SbVec3f(-2, 0, 0), SbVec3f(2, 0, -8)};
    coordinates->point.setValues(0, ends);
    auto* shape = new SoGroup;
    p.root->addChild(coordinates);
    p.root->addChild(shape);
    shape->addChild(new SoLineSet);
    // The same number of pixels at both ends, although one is much farther away.
    for (float along : {0.02f, 0.5f, 0.98f}) {
        const SbVec2f pixel = p.pixelOf(ends[0] * (1 - along) + ends[1] * along);
        for (float off : {-6.5f, -4.0f, 4.0f, 6.5f}) {
            const SoPickedPoint* picked = p.at(pixel[0], pixel[1] + off);
            EXPECT_EQ(picked != nullptr, std::abs(off) < 5) << along << ' ' << off;
            if (picked) {
                EXPECT_NEAR(picked->getObjectPoint()[1], 0, 1e-5);
                EXPECT_TRUE(picked->getDetail()->isOfType(SoLineDetail::getClassTypeId()));
            }
        }
    }
    const SbVec2f beyond = p.pixelOf(ends[0] - SbVec3f(1, 0, 0));
    EXPECT_EQ(p.at(beyond[0], beyond[1]), nullptr);

    shape->replaceChild(0, new SoPointSet);
    const SbVec2f pixel = p.pixelOf(ends[1]);
    ASSERT_NE(p.at(pixel[0] + 4, pixel[1]), nullptr);
    EXPECT_EQ(p.pick.getPickedPoint()->getObjectPoint(), ends[1]);
    EXPECT_EQ(p.at(pixel[0] + 7, pixel[1]), nullptr);
    p.pick.setRadius(9);
    EXPECT_NE(p.at(pixel[0] + 7, pixel[1]), nullptr);
}

TEST_F(SoRayPickActionTest, NearAndFarLimitThePick)
{
    PixelPick p; // sees z from 9 down to -10
    auto* mover = new Mover;
    p.root->addChild(mover);
    p.root->addChild(new SoCube);
    const auto z = [&](float middle) {
        mover->by = SbVec3f(0, 0, middle);
        const SoPickedPoint* picked = p.at(100, 50);
        return picked ? picked->getPoint()[2] : -1000;
    };
    EXPECT_NEAR(z(0), 1, 1e-3);
    EXPECT_NEAR(z(9), 8, 1e-3) << "cut open by the near plane: the back of the cube";
    EXPECT_EQ(z(11.5f), -1000) << "before the near plane";
    EXPECT_NEAR(z(-10.5f), -9.5f, 1e-3);
    EXPECT_EQ(z(-11.5f), -1000) << "behind the far plane";

    SoRayPickAction ray{SbViewportRegion()};
    mover->by = SbVec3f(0, 0, 0);
    const auto distance = [&](float nearLimit, float farLimit) {
        ray.setRay(SbVec3f(0, 0, 10), SbVec3f(0, 0, -5), nearLimit, farLimit);
        ray.apply(p.root.get());
        return ray.getPickedPoint() ? ray.getPickedPoint()->getDistance() : -1;
    };
    EXPECT_NEAR(distance(-1, -1), 9, 1e-5);
    EXPECT_NEAR(distance(9.5f, -1), 11, 1e-5);
    EXPECT_EQ(distance(-1, 8.5f), -1);
    EXPECT_EQ(distance(12, -1), -1);
}

TEST_F(SoRayPickActionTest, PickStylesAreObeyed)
{
    PixelPick p;
    auto* style = new SoPickStyle;
    auto* coordinates = new SoCoordinate3;
    coordinates->point.setValues(0, std::vector<SbVec3f>{{-1, -1, 0}, {1, -1, 0}, {-1, 1, 0}});
    auto* faces = new SoIndexedFaceSet;
    faces->coordIndex.setValues(0, std::vector<std::int32_t>{0, 1, 2, -1});
    for (SoNode* node : std::initializer_list<SoNode*>{style, coordinates, faces})
        p.root->addChild(node);
    const SbVec2f full = p.pixelOf(SbVec3f(-0.5f, -0.5f, 0));
    const SbVec2f empty = p.pixelOf(SbVec3f(0.5f, 0.5f, 0));
    EXPECT_NE(p.at(full[0], full[1]), nullptr);
    EXPECT_EQ(p.at(empty[0], empty[1]), nullptr);
    style->style = SoPickStyle::BOUNDING_BOX;
    EXPECT_NE(p.at(empty[0], empty[1]), nullptr);
    style->style = SoPickStyle::UNPICKABLE;
    EXPECT_EQ(p.at(full[0], full[1]), nullptr);
}

TEST_F(SoRayPickActionTest, PointsAreKnownInEverySpaceOfTheirPath)
{
    SoRef<SoSeparator> root(new SoSeparator);
    auto* inner = new SoSeparator;
    auto* cube = new SoCube;
    root->addChild(new Mover(SbVec3f(5, 0, 0)));
    root->addChild(inner);
    inner->addChild(new Mover(SbVec3f(0, 7, 0)));
    inner->addChild(cube);
    SoRayPickAction pick{SbViewportRegion()};
    pick.setRay(SbVec3f(5.5f, 7.5f, 9), SbVec3f(0, 0, -1));
    pick.apply(root.get());
    ASSERT_NE(pick.getPickedPoint(), nullptr);
    const SoPickedPoint copy = *pick.getPickedPoint(); // outlives the action's next use
    pick.setRay(SbVec3f(100, 0, 0), SbVec3f(0, 0, -1));
    pick.apply(root.get());
    EXPECT_TRUE(pick.getPickedPoints().empty());
    EXPECT_TRUE(copy.getObjectPoint().equals(SbVec3f(0.5f, 0.5f, 1), 1e-5f));
    EXPECT_TRUE(copy.getObjectPoint(inner).equals(SbVec3f(0.5f, 7.5f, 1), 1e-5f));
    EXPECT_TRUE(copy.getObjectPoint(root.get()).equals(copy.getPoint(), 1e-5f));
    EXPECT_TRUE(
        copy.getWorldToObject(inner).point(SbVec3f(5, 0, 0)).equals(SbVec3f(0, 0, 0), 1e-5f));
    ASSERT_NE(copy.getDetail(), nullptr);
    auto errors = support::expectErrors();
    SoRef<Leaf> stranger(new Leaf);
    EXPECT_EQ(copy.getObjectToWorld(stranger.get()), copy.getObjectToWorld());
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(SoRayPickActionTest, NoCameraNoPick)
{
    SoRef<SoSeparator> root(new SoSeparator);
    root->addChild(new SoCube);
    SoRayPickAction pick{SbViewportRegion(200, 100)};
    pick.setPoint(SbVec2s(100, 50));
    pick.apply(root.get());
    EXPECT_EQ(pick.getPickedPoint(), nullptr);

    // A camera inside a separator serves only there, and its box does not speak for the outside.
    PixelPick p;
    auto* overlay = new SoSeparator;
    auto* view = new View;
    view->volume.ortho(-1, 1, -1, 1, -1, 1);
    auto* cube = new SoCube;
    overlay->addChild(view);
    for (int i = 0; i < 10; ++i)
        overlay->addChild(new SoGroup);
    overlay->addChild(new Mover(SbVec3f(500, 500, 0)));
    overlay->addChild(new Mover(SbVec3f(-500, -500, 0.5f)));
    overlay->addChild(cube);
    p.root->addChild(new Mover(SbVec3f(300, 0, 0)));
    p.root->addChild(overlay);
    view->volume.translateCamera(SbVec3f(300, 0, 0));
    SoGetBoundingBoxAction bounds{SbViewportRegion()};
    bounds.apply(p.root.get());
    ASSERT_NE(p.at(20, 20), nullptr);
    EXPECT_EQ(p.pick.getPickedPoint()->getPath()->getTail(), cube);
}

} // namespace
