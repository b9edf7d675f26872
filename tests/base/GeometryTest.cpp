#include "Reference.h"

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbLine.h>
#include <kalmyr/base/SbPlane.h>
#include <kalmyr/base/SbSphere.h>

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

namespace {

constexpr int kRounds = 500;

SbBox3f randomBox(reference::Random& random)
{
    SbBox3f box;
    box.extendBy(random.vector());
    box.extendBy(random.vector());
    return box;
}

SbVec3f pointIn(const SbBox3f& box, reference::Random& random)
{
    SbVec3f p;
    for (int i = 0; i < 3; ++i)
        p[i] = random.number(box.getMin()[i], box.getMax()[i]);
    return p;
}

float volumeOf(const SbXfBox3f& box)
{
    return box.getVolume() * std::fabs(box.getTransform().det3());
}

SbBox3f boxOfCorners(const SbBox3f& box, const SbMatrix& m)
{
    SbBox3f r;
    for (int i = 0; i < 8; ++i)
        r.extendBy(m.point(box.getCorner(i)));
    return r;
}

} // namespace

TEST(SbBox, StartsEmptyAndGrows)
{
    SbBox3f box;
    EXPECT_TRUE(box.isEmpty());
    EXPECT_EQ(box.getSize(), SbVec3f(0, 0, 0));
    EXPECT_FALSE(box.intersect(SbVec3f(0, 0, 0)));
    box.extendBy(SbBox3f());
    EXPECT_TRUE(box.isEmpty());
    box.extendBy(SbVec3f(-1, 2, 3));
    EXPECT_FALSE(box.isEmpty());
    EXPECT_EQ(box, SbBox3f(-1, 2, 3, -1, 2, 3));
    box.extendBy(SbVec3f(NAN, 5, 3));
    EXPECT_EQ(box, SbBox3f(-1, 2, 3, -1, 5, 3));
    EXPECT_EQ(SbBox2s(SbVec2s(-32768, 0), SbVec2s(32767, 10)).getCenter(), SbVec2s(0, 5));
}

TEST(SbBox, TransformIsTheBoxOfTheTransformedCorners)
{
    reference::Random random(20);
    for (int i = 0; i < kRounds; ++i) {
        const SbBox3f box = randomBox(random);
        SbMatrix m = random.affine();
        if (i % 2)
            m[2][3] = 0.01f;
        const SbBox3f expected = boxOfCorners(box, m);
        SbBox3f moved = box;
        moved.transform(m);
        EXPECT_TRUE(moved.getMin().equals(expected.getMin(), 2e-4f)
                    && moved.getMax().equals(expected.getMax(), 2e-4f));
    }
    SbBox3f empty;
    empty.transform(random.affine());
    EXPECT_TRUE(empty.isEmpty());
}

TEST(SbBox, WholeNumbersUseTheirWholeRange)
{
    std::minstd_rand random(23);
    const auto number = [&random] { return static_cast<short>(random()); };
    for (int round = 0; round < kRounds; ++round) {
        SbBox3s box;
        long low = 40000, high = -40000; // along x
        for (int i = 0; i < 4; ++i) {
            const SbVec3s p(number(), number(), number());
            box.extendBy(p);
            low = std::min<long>(low, p[0]);
            high = std::max<long>(high, p[0]);
        }
        EXPECT_EQ(box.getMin()[0], low);
        EXPECT_EQ(box.getMax()[0], high);
        EXPECT_EQ(box.getCenter()[0], (low + high) / 2);
        const SbVec3s other(number(), number(), number());
        const SbVec3s closest = box.getClosestPoint(other);
        EXPECT_EQ(closest[0], std::clamp<long>(other[0], low, high));
        EXPECT_EQ(box.intersect(other), closest == other);
    }
}

TEST(SbBox, ThroughInfinityBecomesAllSpace)
{
    SbMatrix m;
    m[2][3] = 1;
    m[3][3] = 0;
    SbBox3f box(-1, -1, -1, 1, 1, 1);
    box.transform(m);
    EXPECT_TRUE(box.intersect(SbVec3f(1e30f, -1e30f, 0)));
    // And stays a box whatever comes next.
    box.transform(reference::Random(21).affine());
    EXPECT_FALSE(box.isEmpty());
    EXPECT_TRUE(box.intersect(SbVec3f(0, 0, 0)));
}

TEST(SbXfBox, HoldsEverythingThatWasAddedAndNoLooserThanAPlainBox)
{
    reference::Random random(22);
    for (int i = 0; i < kRounds; ++i) {
        const SbXfBox3f a(randomBox(random), random.affine()),
            b(randomBox(random), random.affine());
        SbXfBox3f both = a;
        both.extendBy(b);
        SbBox3f plain = a.project();
        plain.extendBy(b.project());
        // A point inside makes the box no larger, whichever comes first.
        SbXfBox3f inside(SbBox3f(b.getCenter(), b.getCenter()));
        SbXfBox3f around = b;
        around.extendBy(inside);
        EXPECT_NEAR(volumeOf(around) / volumeOf(b), 1, 1e-3);
        inside.extendBy(b);
        EXPECT_NEAR(volumeOf(inside) / volumeOf(b), 1, 1e-3);
        EXPECT_LE(volumeOf(both), plain.getVolume() * 1.001f);
        SbBox3f grown = both;
        const SbVec3f slack = (grown.getSize() + SbVec3f(1, 1, 1)) * 1e-4f;
        grown = SbBox3f(grown.getMin() - slack, grown.getMax() + slack);
        for (const SbXfBox3f& part : {a, b}) {
            const SbVec3f p = part.getTransform().point(pointIn(part, random));
            EXPECT_TRUE(grown.intersect(both.getInverse().point(p))) << i;
        }
    }
}

TEST(SbXfBox, OverlapsABoxExactlyWhenNoPlaneParts)
{
    reference::Random random(23);
    int hits = 0;
    for (int i = 0; i < kRounds; ++i) {
        const SbXfBox3f turned(randomBox(random), random.affine());
        const SbBox3f box = randomBox(random);
        bool common = false;
        for (int k = 0; k < 400 && !common; ++k)
            common = box.intersect(turned.getTransform().point(pointIn(turned, random)));
        hits += common;
        EXPECT_TRUE(!common || turned.intersect(box)) << i;
        // A speck just outside one of the faces.
        SbVec3f outside = pointIn(turned, random);
        outside[i % 3] = turned.getMax()[i % 3] + 0.5f;
        const SbVec3f speck = turned.getTransform().point(outside);
        EXPECT_FALSE(turned.intersect(SbBox3f(speck, speck))) << i;
        outside = pointIn(box, random);
        outside[i % 3] = box.getMax()[i % 3] + 0.5f;
        EXPECT_FALSE(SbXfBox3f(SbBox3f(outside, outside)).intersect(box)) << i;
    }
    EXPECT_GT(hits, kRounds / 20);
    // A diagonal box beside a corner: the plain boxes overlap, the bodies do not.
    SbMatrix m;
    m.setRotate(SbRotation(SbVec3f(0, 0, 1), float(M_PI / 4)));
    const SbXfBox3f diagonal(SbBox3f(-2, -0.1f, -1, 2, 0.1f, 1), m);
    EXPECT_FALSE(diagonal.intersect(SbBox3f(0.8f, -1.4f, -1, 1.4f, -0.8f, 1)));
    const SbBox3f plain = diagonal.project();
    EXPECT_TRUE(plain.intersect(SbBox3f(0.8f, -1.4f, -1, 1.4f, -0.8f, 1)));
    // A square rod that passes an edge of a cube askew: only the plane along both edges parts them.
    m.setTransform({1.05f, 1.05f, 0},
                   SbRotation(SbVec3f(1, 0, 0), float(M_PI / 4))
                       * SbRotation({1, 0, 0}, {1, -1, 1}),
                   {1, 1, 1});
    const SbBox3f cube(-1, -1, -1, 1, 1, 1);
    const SbXfBox3f rod(SbBox3f(-5, -0.02f, -0.02f, 5, 0.02f, 0.02f), m);
    EXPECT_FALSE(rod.intersect(cube));
    EXPECT_TRUE(rod.intersect(SbBox3f(-1.1f, -1.1f, -1, 1.1f, 1.1f, 1)));
    EXPECT_TRUE(diagonal.intersect(SbVec3f(1, 1, 0)) && !diagonal.intersect(SbVec3f(1, 0.5f, 0)));
}

TEST(SbLine, ClosestPointsAreJoinedSquareToBothLines)
{
    reference::Random random(24);
    for (int i = 0; i < kRounds; ++i) {
        const SbLine a(random.vector(), random.vector()), b(random.vector(), random.vector());
        SbVec3f p, q;
        if (!a.getClosestPoints(b, p, q)
            || a.getDirection().cross(b.getDirection()).length() < 0.05f)
            continue;
        EXPECT_NEAR((p - q).dot(a.getDirection()), 0, 1e-3);
        EXPECT_NEAR((p - q).dot(b.getDirection()), 0, 1e-3);
        EXPECT_TRUE(a.getClosestPoint(p).equals(p, 1e-3f));
        EXPECT_TRUE(b.getClosestPoint(q).equals(q, 1e-3f));
    }
    SbVec3f p, q;
    EXPECT_FALSE(SbLine({0, 0, 0}, {1, 0, 0}).getClosestPoints(SbLine({0, 1, 0}, {5, 1, 0}), p, q));
}

TEST(SbLine, EntersAndLeavesBoxesOnTheirSurface)
{
    reference::Random random(25);
    for (int i = 0; i < kRounds; ++i) {
        const SbXfBox3f box(randomBox(random), random.affine());
        const SbVec3f target = box.getTransform().point(pointIn(box, random));
        const SbLine line(random.vector(-90, 90), target);
        SbVec3f enter, exit;
        ASSERT_TRUE(line.intersect(box, enter, exit)) << i;
        EXPECT_LE((enter - line.getPosition()).dot(line.getDirection()),
                  (exit - line.getPosition()).dot(line.getDirection()) + 1e-3f);
        const SbBox3f local = box;
        for (const SbVec3f& p : {enter, exit}) {
            const SbVec3f inside = box.getInverse().point(p);
            EXPECT_TRUE(local.getClosestPoint(inside).equals(inside, 5e-3f)) << i;
        }
    }
    SbVec3f enter, exit;
    const SbBox3f unit(0, 0, 0, 1, 1, 1);
    EXPECT_FALSE(SbLine({0, 2, 0}, {1, 2, 0}).intersect(unit, enter, exit));
    EXPECT_TRUE(SbLine({0, 2, 0}, {1, 2, 0}).intersect(1.f, unit));
    EXPECT_FALSE(SbLine({0, 0, 0}, {1, 0, 0}).intersect(SbBox3f(), enter, exit));
}

TEST(SbLine, MeetsTrianglesFromBothSides)
{
    reference::Random random(26);
    for (int i = 0; i < kRounds; ++i) {
        const SbVec3f v[3] = {random.vector(), random.vector(), random.vector()};
        const SbVec3f weights(random.number(-0.5, 1), random.number(-0.5, 1), 0);
        const SbVec3f b(weights[0], weights[1], 1 - weights[0] - weights[1]);
        const SbVec3f target = v[0] * b[0] + v[1] * b[1] + v[2] * b[2];
        const SbVec3f from = random.vector();
        const SbVec3f normal = (v[1] - v[0]).cross(v[2] - v[0]);
        const float height = normal.normalized().dot(from - v[0]);
        const float margin = std::min({std::fabs(b[0]), std::fabs(b[1]), std::fabs(b[2])});
        if (std::fabs(height) < 0.1f || normal.length() < 1 || margin < 1e-3f)
            continue;
        const bool inside = b[0] > 0 && b[1] > 0 && b[2] > 0;
        SbVec3f point, barycentric;
        bool front;
        ASSERT_EQ(SbLine(from, target).intersect(v[0], v[1], v[2], point, barycentric, front),
                  inside)
            << i;
        if (inside) {
            EXPECT_TRUE(point.equals(target, 1e-3f) && barycentric.equals(b, 1e-3f)) << i;
            EXPECT_EQ(front, height > 0) << i;
        }
    }
    SbVec3f point, barycentric;
    bool front;
    EXPECT_FALSE(SbLine({0, 0, 1}, {0, 0, 0})
                     .intersect({0, 0, 0}, {1, 1, 0}, {2, 2, 0}, point, barycentric, front));
}

TEST(SbPlane, FollowsItsPointsThroughATransform)
{
    reference::Random random(27);
    for (int i = 0; i < kRounds; ++i) {
        const SbVec3f p0 = random.vector(), p1 = random.vector(), p2 = random.vector();
        SbPlane plane(p0, p1, p2);
        EXPECT_NEAR(plane.getDistance(p2), 0, 1e-3);
        const SbVec3f above = p0 + plane.getNormal();
        SbMatrix m = random.affine();
        plane.transform(m);
        for (const SbVec3f& p : {p0, p1, p2})
            EXPECT_NEAR(plane.getDistance(m.point(p)), 0, 2e-3);
        EXPECT_TRUE(plane.isInHalfSpace(m.point(above)));
    }
}

TEST(SbPlane, CutsLinesAndPlanes)
{
    reference::Random random(28);
    for (int i = 0; i < kRounds; ++i) {
        const SbPlane a(random.axis(), random.vector()), b(random.axis(), random.vector());
        SbLine common;
        if (a.getNormal().cross(b.getNormal()).length() < 0.1f)
            continue;
        ASSERT_TRUE(a.intersect(b, common));
        EXPECT_NEAR(a.getDistance(common.getPoint(3)), 0, 2e-3);
        EXPECT_NEAR(b.getDistance(common.getPoint(-3)), 0, 2e-3);
        SbVec3f point;
        const SbLine line(random.vector(), random.vector());
        if (std::fabs(a.getNormal().dot(line.getDirection())) > 0.1f) {
            ASSERT_TRUE(a.intersect(line, point));
            EXPECT_NEAR(a.getDistance(point), 0, 1e-3);
        }
    }
    SbVec3f point;
    EXPECT_FALSE(SbPlane().intersect(SbLine({0, 0, 1}, {1, 0, 1}), point));
}

TEST(SbSphere, IsCutWhereTheLineCrossesItsSurface)
{
    SbVec3f enter, exit;
    const SbSphere sphere({1, 0, 0}, 2);
    ASSERT_TRUE(sphere.intersect(SbLine({-9, 0, 0}, {0, 0, 0}), enter, exit));
    EXPECT_TRUE(enter.equals({-1, 0, 0}, 1e-5f) && exit.equals({3, 0, 0}, 1e-5f));
    EXPECT_FALSE(sphere.intersect(SbLine({0, 2.1f, 0}, {1, 2.1f, 0}), enter, exit));
    SbSphere around;
    around.circumscribe(SbBox3f(-1, -2, -2, 1, 2, 2));
    EXPECT_FLOAT_EQ(around.getRadius(), 3);
}
