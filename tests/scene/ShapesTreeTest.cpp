#include <kalmyr/shapes/TriangleTree.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <set>

using kalmyr::TriangleTree;

namespace {

struct Soup {
    std::vector<SbVec3f> positions;
    std::vector<std::uint32_t> triangles;

    void add(const SbVec3f& a, const SbVec3f& b, const SbVec3f& c)
    {
        for (const SbVec3f& p : {a, b, c}) {
            triangles.push_back(static_cast<std::uint32_t>(positions.size()));
            positions.push_back(p);
        }
    }
};

class Random {
public:
    float number(float low, float high)
    {
        return std::uniform_real_distribution<float>(low, high)(m_engine);
    }
    SbVec3f vector(float size)
    {
        return {number(-size, size), number(-size, size), number(-size, size)};
    }

private:
    std::mt19937 m_engine{7};
};

/// The same question without a tree, in double.
std::set<std::uint32_t> bruteForce(const Soup& soup, const SbVec3f& o, const SbVec3f& d, float tMin,
                                   float tMax, float margin)
{
    std::set<std::uint32_t> met;
    for (std::uint32_t i = 0; i * 3 < soup.triangles.size(); ++i) {
        const SbVec3d a(soup.positions[soup.triangles[i * 3]]);
        const SbVec3d e1 = SbVec3d(soup.positions[soup.triangles[i * 3 + 1]]) - a;
        const SbVec3d e2 = SbVec3d(soup.positions[soup.triangles[i * 3 + 2]]) - a;
        const SbVec3d p = SbVec3d(d).cross(e2);
        const double det = e1.dot(p);
        if (!(std::abs(det) > 0))
            continue;
        const SbVec3d s = SbVec3d(o) - a;
        const double u = s.dot(p) / det;
        const SbVec3d q = s.cross(e1);
        const double v = SbVec3d(d).dot(q) / det, t = e2.dot(q) / det;
        if (u >= -margin && v >= -margin && u + v <= 1 + margin && t >= tMin - margin
            && t <= tMax + margin)
            met.insert(i);
    }
    return met;
}

/// Shoots rays from all around, each of them past a place where there are triangles.
template <class Aim>
void expectLikeBruteForce(const Soup& soup, Random& random, Aim&& aim)
{
    const TriangleTree tree(soup.positions, soup.triangles);
    EXPECT_EQ(tree.getNumTriangles(), soup.triangles.size() / 3);
    int hits = 0;
    for (int i = 0; i < 500; ++i) {
        const SbVec3f origin = aim(random);
        // Every third ray runs along an axis, where slabs divide by zero.
        SbVec3f direction = random.vector(1);
        if (i % 3 == 0) {
            direction = SbVec3f();
            direction[i % 9 / 3] = i % 2 ? 1.0f : -1.0f;
        }
        std::set<std::uint32_t> found;
        float nearest = 50;
        tree.intersectAll(origin, direction, 0, 50, [&](const TriangleTree::Hit& hit) {
            found.insert(hit.triangle);
            nearest = std::min(nearest, hit.t);
            EXPECT_NEAR(hit.barycentric[0] + hit.barycentric[1] + hit.barycentric[2], 1, 1e-4f);
            return true;
        });
        // Rays that graze an edge may go either way.
        for (const std::uint32_t t : bruteForce(soup, origin, direction, 0, 50, -1e-4f))
            EXPECT_TRUE(found.count(t)) << i;
        const auto most = bruteForce(soup, origin, direction, 0, 50, 1e-4f);
        for (const std::uint32_t t : found)
            EXPECT_TRUE(most.count(t)) << i;
        TriangleTree::Hit hit;
        ASSERT_EQ(tree.intersect(origin, direction, 0, 50, hit), !found.empty());
        if (found.empty())
            continue;
        ++hits;
        EXPECT_EQ(hit.t, nearest);
    }
    EXPECT_GT(hits, 30);
}

} // namespace

TEST(TriangleTree, FindsWhatBruteForceFinds)
{
    Random random;
    Soup soup;
    for (int i = 0; i < 3000; ++i) {
        const SbVec3f at = random.vector(10);
        soup.add(at, at + random.vector(0.8f), at + random.vector(0.8f));
    }
    expectLikeBruteForce(soup, random, [](Random& r) { return r.vector(15); });
}

TEST(TriangleTree, FindsTheSameWhereTrianglesAreUneven)
{
    Random random;
    // Most of it in one spot of a wide plain, and in spots within the spot.
    Soup nested;
    for (int i = 0; i < 4000; ++i) {
        const float size = i % 100 == 0 ? 20.0f : i % 10 == 0 ? 1.0f : 0.05f;
        const SbVec3f at = SbVec3f(3, 2, 1) + random.vector(size);
        nested.add(at, at + random.vector(size * 0.1f), at + random.vector(size * 0.1f));
    }
    expectLikeBruteForce(nested, random,
                         [](Random& r) { return SbVec3f(3, 2, 1) + r.vector(0.2f); });
    // Along a line, long needles across all of it, and many at the same place.
    Soup needles;
    for (int i = 0; i < 1500; ++i) {
        const SbVec3f at(random.number(-10, 10), 0, 0);
        needles.add(at, at + random.vector(0.3f), at + random.vector(0.3f));
        if (i % 5 == 0)
            needles.add({-10, 0.3f, at[0]}, {10, -0.3f, at[0]}, {10, 0.3f, 0});
        if (i % 3 == 0)
            needles.add({1, -1, -1}, {1, 1, -1}, {1, 0, 1});
    }
    expectLikeBruteForce(needles, random, [](Random& r) {
        return SbVec3f(r.number(-10, 10), 0, 0) + r.vector(0.3f);
    });
}

TEST(TriangleTree, KeepsToTheRaysLimitsAndTellsTheSide)
{
    Soup soup;
    for (float z : {0.0f, 5.0f})
        soup.add({-1, -1, z}, {1, -1, z}, {0, 1, z});
    const TriangleTree tree(soup.positions, soup.triangles);
    TriangleTree::Hit hit;
    ASSERT_TRUE(tree.intersect({0, 0, 10}, {0, 0, -2}, 0, 100, hit));
    EXPECT_EQ(hit.triangle, 1u);
    EXPECT_EQ(hit.t, 2.5f);
    EXPECT_TRUE(hit.front);
    ASSERT_TRUE(tree.intersect({0, 0, 10}, {0, 0, -2}, 3, 100, hit));
    EXPECT_EQ(hit.triangle, 0u);
    EXPECT_FALSE(tree.intersect({0, 0, 10}, {0, 0, -2}, 0, 2, hit));
    ASSERT_TRUE(tree.intersect({0, 0, -10}, {0, 0, 1}, 0, 100, hit));
    EXPECT_FALSE(hit.front);
    int seen = 0;
    tree.intersectAll({0, 0, 10}, {0, 0, -1}, 0, 100,
                      [&seen](const TriangleTree::Hit&) { return ++seen < 1; });
    EXPECT_EQ(seen, 1);
}

TEST(TriangleTree, LeavesNoGapBetweenNeighbours)
{
    // A bumpy sheet of small triangles: every ray down must meet it, edges and corners included.
    Soup soup;
    constexpr int n = 40;
    const auto at = [](int x, int y) {
        return SbVec3f(static_cast<float>(x) * 0.1f, static_cast<float>(y) * 0.1f,
                       std::sin(static_cast<float>(x * 7 + y * 3)));
    };
    for (int y = 0; y < n; ++y) {
        for (int x = 0; x < n; ++x) {
            soup.add(at(x, y), at(x + 1, y), at(x + 1, y + 1));
            soup.add(at(x, y), at(x + 1, y + 1), at(x, y + 1));
        }
    }
    const TriangleTree tree(soup.positions, soup.triangles);
    TriangleTree::Hit hit;
    for (int y = 1; y < 2 * n; ++y) {
        for (int x = 1; x < 2 * n; ++x) {
            const SbVec3f origin(static_cast<float>(x) * 0.05f, static_cast<float>(y) * 0.05f, 10);
            EXPECT_TRUE(tree.intersect(origin, {0, 0, -1}, 0, 100, hit)) << x << ' ' << y;
        }
    }
}

TEST(TriangleTree, SurvivesOddTriangles)
{
    constexpr float nan = std::numeric_limits<float>::quiet_NaN(),
                    inf = std::numeric_limits<float>::infinity();
    Soup soup;
    soup.add({nan, 0, 0}, {1, 0, 0}, {0, 1, 0});
    soup.add({0, inf, 0}, {1, 0, 0}, {0, 1, 0});
    soup.add({3e38f, 3e38f, 0}, {-3e38f, 0, 0}, {0, -3e38f, 0});
    for (int i = 0; i < 1000; ++i)
        soup.add({1, 1, 1}, {1, 1, 1}, {1, 1, 1}); // all in one place, no area
    for (int i = 0; i < 1000; ++i)
        soup.add({0, 0, 5}, {1, 0, 5}, {0, 1, 5}); // all the same
    const TriangleTree tree(soup.positions, soup.triangles);
    TriangleTree::Hit hit;
    ASSERT_TRUE(tree.intersect({0.2f, 0.2f, 10}, {0, 0, -1}, 0, 6, hit));
    EXPECT_EQ(hit.t, 5);
    int seen = 0;
    tree.intersectAll({0.2f, 0.2f, 10}, {0, 0, -1}, 0, 6,
                      [&seen](const TriangleTree::Hit&) { return ++seen > 0; });
    EXPECT_EQ(seen, 1000);
    EXPECT_FALSE(TriangleTree({}, {}).intersect({0, 0, 0}, {0, 0, 1}, 0, 1, hit));
}
