#include "Reference.h"

#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/base/SbViewVolume.h>

#include <algorithm>

#include <gtest/gtest.h>

namespace {

constexpr int kRounds = 300;

SbViewVolume randomVolume(reference::Random& random, int kind)
{
    SbViewVolume v;
    const float nearDist = random.number(0.5, 2), farDist = nearDist + random.number(5, 50);
    switch (kind % 3) {
    case 0:
        v.ortho(random.number(-4, -1), random.number(1, 4), random.number(-4, -1),
                random.number(1, 4), -nearDist, farDist);
        break;
    case 1:
        v.perspective(random.number(0.3, 2), random.number(0.5, 2), nearDist, farDist);
        break;
    default:
        v.frustum(random.number(-2, -0.2), random.number(0.2, 2), random.number(-2, -0.2),
                  random.number(0.2, 2), nearDist, farDist);
    }
    v.rotateCamera(random.rotation());
    v.translateCamera(random.vector());
    if (kind % 2) {
        SbMatrix m;
        m.setScale(SbVec3f(1, 1, kind % 4 == 1 ? -1.f : 1.f));
        v.transform(m * random.affine());
    }
    return v;
}

SbVec3f pointOnScreen(const SbViewVolume& v, const SbVec2f& screen, float between)
{
    SbVec3f nearPoint, farPoint;
    v.projectPointToLine(screen, nearPoint, farPoint);
    return nearPoint + (farPoint - nearPoint) * between;
}

} // namespace

TEST(SbViewVolume, ProjectsAndUnprojectsAlike)
{
    reference::Random random(30);
    for (int i = 0; i < kRounds; ++i) {
        const SbViewVolume v = randomVolume(random, i);
        const SbVec2f screen(random.number(-0.5, 1.5), random.number(-0.5, 1.5));
        const SbVec3f world = pointOnScreen(v, screen, random.number(0, 1));
        SbVec3f back;
        v.projectToScreen(world, back);
        EXPECT_NEAR(back[0], screen[0], 2e-3) << i;
        EXPECT_NEAR(back[1], screen[1], 2e-3) << i;
        SbLine line;
        v.projectPointToLine(screen, line);
        EXPECT_TRUE(line.getClosestPoint(world).equals(world, 0.05f)) << i;
        const bool inside = screen[0] > 0 && screen[0] < 1 && screen[1] > 0 && screen[1] < 1;
        EXPECT_EQ(v.intersect(pointOnScreen(v, screen, 0.5f)), inside) << i;
    }
}

TEST(SbViewVolume, MatrixMapsTheVolumeToTheClipCube)
{
    reference::Random random(31);
    for (int i = 0; i < kRounds; ++i) {
        const SbViewVolume v = randomVolume(random, i);
        SbMatrix affine, projection;
        v.getMatrices(affine, projection);
        const SbMatrix m = v.getMatrix();
        EXPECT_LT(reference::difference(
                      reference::product(reference::from(affine), reference::from(projection)), m),
                  1e-3);
        for (int corner = 0; corner < 8; ++corner) {
            const SbVec3f clip(corner & 1 ? 1.f : -1.f, corner & 2 ? 1.f : -1.f,
                               corner & 4 ? 1.f : -1.f);
            const SbVec3f world = pointOnScreen(v, SbVec2f(clip[0] / 2 + 0.5f, clip[1] / 2 + 0.5f),
                                                corner & 4 ? 1.f : 0.f);
            EXPECT_TRUE(m.point(world).equals(clip, 5e-3f)) << i << ' ' << corner;
            SbVec3f screen;
            v.projectToScreen(world, screen);
            EXPECT_NEAR(screen[2], corner & 4 ? 1 : 0, 1e-3);
        }
        const SbVec3f between = pointOnScreen(v, SbVec2f(0.3f, 0.6f), 0.1f);
        SbVec3f screen;
        v.projectToScreen(between, screen);
        EXPECT_TRUE(m.point(between).equals(screen * 2 - SbVec3f(1, 1, 1), 5e-3f)) << i;
        const SbVec3f away =
            pointOnScreen(v, SbVec2f(0.5f, 0.5f), 1) - pointOnScreen(v, SbVec2f(0.5f, 0.5f), 0);
        EXPECT_NEAR(away.dot(v.getProjectionDirection()), v.getDepth(), v.getDepth() * 1e-3f) << i;
        EXPECT_LT(reference::difference(reference::identity(), v.getCameraSpaceMatrix() * affine),
                  1e-3);
    }
}

TEST(SbViewVolume, TransformCarriesEveryPointAlong)
{
    reference::Random random(34);
    for (int i = 0; i < kRounds; ++i) {
        const SbViewVolume v = randomVolume(random, i);
        SbViewVolume moved = v;
        const SbMatrix m = random.affine();
        moved.transform(m);
        const SbVec2f screen(random.number(0, 1), random.number(0, 1));
        const SbVec3f expected = m.point(pointOnScreen(v, screen, 0.5f));
        EXPECT_TRUE(
            pointOnScreen(moved, screen, 0.5f).equals(expected, 1e-5f * expected.length() + 1e-3f))
            << i;
    }
}

TEST(SbViewVolume, PlanesFaceInwardsAndAgreeWithThePointTest)
{
    reference::Random random(32);
    for (int i = 0; i < kRounds; ++i) {
        const SbViewVolume v = randomVolume(random, i);
        const auto planes = v.getPlanes();
        const SbBox3f around = v.getBoundingBox();
        for (int k = 0; k < 20; ++k) {
            SbVec3f p;
            for (int j = 0; j < 3; ++j)
                p[j] = random.number(around.getMin()[j], around.getMax()[j]);
            float least = 1e30f;
            for (const SbPlane& plane : planes)
                least = std::min(least, plane.getDistance(p));
            const bool inside = v.intersect(p);
            EXPECT_TRUE(std::fabs(least) < 0.05f || inside == (least > 0)) << i;
            EXPECT_TRUE(!inside || v.intersect(SbBox3f(p, p + SbVec3f(1, 1, 1)))) << i;
        }
        const SbVec3f beside = around.getMax() + SbVec3f(1, 1, 1);
        EXPECT_FALSE(v.intersect(SbBox3f(beside, beside + SbVec3f(1, 1, 1))));
    }
}

TEST(SbViewVolume, NarrowedVolumeShowsThePartOfTheScreen)
{
    reference::Random random(33);
    for (int i = 0; i < kRounds; ++i) {
        const SbViewVolume v = randomVolume(random, i);
        const SbViewVolume part = v.narrow(0.25f, 0.5f, 0.75f, 0.75f);
        const SbVec3f p = pointOnScreen(part, SbVec2f(0.5f, 0.5f), 0.7f);
        SbVec3f screen;
        v.projectToScreen(p, screen);
        EXPECT_TRUE(SbVec2f(screen.getValue()).equals(SbVec2f(0.5f, 0.625f), 2e-3f)) << i;
        const SbViewVolume slice = v.zNarrow(0.75f, 0.25f);
        EXPECT_NEAR(slice.getDepth(), v.getDepth() / 2, v.getDepth() * 1e-3f);
        slice.projectToScreen(p, screen);
        EXPECT_TRUE(SbVec2f(screen.getValue()).equals(SbVec2f(0.5f, 0.625f), 2e-3f)) << i;
    }
}

TEST(SbViewVolume, KnowsItsCamera)
{
    SbViewVolume v;
    v.perspective(M_PI / 2, 2, 1, 11);
    v.rotateCamera(SbRotation(SbVec3f(0, 1, 0), float(M_PI / 2)));
    v.translateCamera({5, 0, 0});
    EXPECT_EQ(v.getProjectionType(), SbViewVolume::PERSPECTIVE);
    EXPECT_EQ(v.getProjectionPoint(), SbVec3f(5, 0, 0));
    EXPECT_TRUE(v.getProjectionDirection().equals({-1, 0, 0}, 1e-6f));
    EXPECT_TRUE(v.getViewUp().equals({0, 1, 0}, 1e-6f));
    EXPECT_TRUE(v.getViewRight().equals({0, 0, -1}, 1e-6f));
    EXPECT_NEAR(v.getWidth(), 4, 1e-5);
    EXPECT_NEAR(v.getHeight(), 2, 1e-5);
    EXPECT_NEAR(v.getNearDist(), 1, 1e-6);
    EXPECT_NEAR(v.getDepth(), 10, 1e-5);
    EXPECT_TRUE(v.getSightPoint(3).equals({2, 0, 0}, 1e-5f));
    EXPECT_TRUE(v.getPlanePoint(3, {1, 1}).equals({2, 3, -6}, 1e-5f));
    const SbPlane plane = v.getPlane(3);
    EXPECT_NEAR(plane.getDistance({2, 7, 7}), 0, 1e-5);
    EXPECT_TRUE(plane.isInHalfSpace(v.getProjectionPoint()));
    // At distance 3 the screen is 6 high: a tenth of it is 0.6.
    EXPECT_NEAR(v.getWorldToScreenScale({2, 1, 0}, 0.1f), 0.6, 1e-5);
    const SbRotation align = v.getAlignRotation();
    EXPECT_TRUE(align.rotated({1, 0, 0}).equals({0, 0, -1}, 1e-6f)
                && align.rotated({0, 1, 0}).equals({0, 1, 0}, 1e-6f));
    v.rotateCamera(SbRotation(SbVec3f(1, 1, 1), 0.2f));
    EXPECT_TRUE(v.getAlignRotation(true).equals(align, 1e-6f));
    const SbVec2f size = v.projectBox(SbBox3f(-5, -1, -1, -4, 1, 1));
    EXPECT_TRUE(size[0] > 0.04f && size[0] < 0.3f && size[1] > 0.1f && size[1] < 0.4f);
    EXPECT_EQ(v.projectBox(SbBox3f(-5, -1, -1, 6, 1, 1)), SbVec2f(1, 1));
}

TEST(SbViewVolume, PerspectiveSurvivesANearDistanceOfZero)
{
    SbViewVolume v;
    v.perspective(1, 1, 0, 100);
    EXPECT_GT(v.getNearDist(), 0);
    SbVec3f screen;
    v.projectToScreen({0, 0, -50}, screen);
    EXPECT_TRUE(screen.equals({0.5f, 0.5f, screen[2]}, 1e-6f) && screen[2] > 0 && screen[2] < 1);
}

TEST(SbViewportRegion, ViewportFollowsTheWindow)
{
    SbViewportRegion r(400, 200);
    EXPECT_EQ(r.getViewportAspectRatio(), 2);
    r.setViewport(0.25f, 0.5f, 0.5f, 0.25f);
    EXPECT_EQ(r.getViewportOriginPixels(), SbVec2s(100, 100));
    EXPECT_EQ(r.getViewportSizePixels(), SbVec2s(200, 50));
    r.setWindowSize(800, 800);
    EXPECT_EQ(r.getViewportSizePixels(), SbVec2s(400, 200));
    r.setViewportPixels(10, 20, 80, 40);
    EXPECT_EQ(r.getViewportSize(), SbVec2f(0.1f, 0.05f));
    EXPECT_EQ(r.normalize(SbVec2s(49, 39)), SbVec2f(0.49375f, 0.4875f));
    r.scaleViewport(0.5f, 100);
    EXPECT_EQ(r.getViewportSizePixels()[0], 40);
    EXPECT_EQ(r.getViewportOrigin()[1], 0);
    SbViewportRegion same(r);
    EXPECT_TRUE(same == r);
    same.setPixelsPerInch(144);
    EXPECT_FALSE(same == r);
    EXPECT_EQ(same.getPixelsPerPoint(), 2);
    EXPECT_EQ(SbViewportRegion(0, -5).getWindowSize(), SbVec2s(1, 1));
}
