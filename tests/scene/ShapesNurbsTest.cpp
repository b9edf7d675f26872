#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/details/SoFaceDetail.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoComplexity.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoCoordinate4.h>
#include <kalmyr/nodes/SoLinearProfile.h>
#include <kalmyr/nodes/SoNurbsProfile.h>
#include <kalmyr/nodes/SoProfileCoordinate2.h>
#include <kalmyr/nodes/SoProfileCoordinate3.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoShapeHints.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/shapes/SoIndexedNurbsCurve.h>
#include <kalmyr/shapes/SoIndexedNurbsSurface.h>
#include <kalmyr/shapes/SoNurbsCurve.h>
#include <kalmyr/shapes/SoNurbsSurface.h>

#include "support/ErrorGuard.h"

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <random>
#include <set>

#include <gtest/gtest.h>

namespace {

const float kHalf = std::sqrt(0.5f);
const std::vector<float> kCircleKnots{0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 4};
const std::vector<float> kArcKnots{0, 0, 0, 1, 1, 2, 2, 2};
const std::vector<float> kCubicKnots{0, 0, 0, 0, 1, 2, 2, 2, 2};
const std::vector<float> kLineKnots{0, 0, 1, 1};

/// A full circle of nine points: x, y and weight, not multiplied.
std::vector<SbVec3f> circle()
{
    return {{1, 0, 1},       {1, 1, kHalf}, {0, 1, 1},      {-1, 1, kHalf}, {-1, 0, 1},
            {-1, -1, kHalf}, {0, -1, 1},    {1, -1, kHalf}, {1, 0, 1}};
}

struct Triangle {
    std::array<SbVec3f, 3> p, normal;
    std::array<SbVec2f, 3> at; ///< parameters, with a texture
};

class Nurbs : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        m_root = new SoSeparator;
        m_effort = add<SoComplexity>();
    }

    template <class Node>
    Node* add()
    {
        auto* node = new Node;
        m_root->addChild(node);
        return node;
    }

    template <class Field, class Values>
    static void fill(Field& field, const Values& values)
    {
        field.setValues(0, static_cast<int>(values.size()), values.data());
    }

    /// A sphere of radius 1: half a circle turned about the y axis.
    void addSphere()
    {
        std::vector<SbVec4f> points;
        for (int j = 0; j < 5; ++j) {
            const SbVec3f side = circle()[static_cast<std::size_t>(j)]; // from +x over +y to -x
            for (const SbVec3f& round : circle()) {
                const float w = side[2] * round[2], radius = side[1], height = -side[0];
                points.emplace_back(radius * round[0] * w, height * w, -radius * round[1] * w, w);
            }
        }
        fill(add<SoCoordinate4>()->point, points);
        auto* sphere = add<SoNurbsSurface>();
        sphere->numUControlPoints = 9;
        sphere->numVControlPoints = 5;
        fill(sphere->uKnotVector, kCircleKnots);
        fill(sphere->vKnotVector, kArcKnots);
    }

    /// A wavy surface over -1 to 1, of parameters 0 to 2.
    SoNurbsSurface* addWave()
    {
        std::vector<SbVec3f> points;
        for (int j = 0; j < 5; ++j) {
            for (int i = 0; i < 5; ++i)
                points.emplace_back(0.5f * i - 1, 0.5f * j - 1, (i + j) % 2 ? 0.7f : -0.4f * i);
        }
        fill(add<SoCoordinate3>()->point, points);
        auto* wave = add<SoNurbsSurface>();
        wave->numUControlPoints = 5;
        wave->numVControlPoints = 5;
        fill(wave->uKnotVector, kCubicKnots);
        fill(wave->vKnotVector, kCubicKnots);
        return wave;
    }

    /// The unit square, flat; parameters are x and y.
    void addSquare()
    {
        fill(add<SoCoordinate3>()->point,
             std::vector<SbVec3f>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
        auto* square = add<SoNurbsSurface>();
        square->numUControlPoints = 2;
        square->numVControlPoints = 2;
        fill(square->uKnotVector, kLineKnots);
        fill(square->vKnotVector, kLineKnots);
    }

    void addRound(const SbVec2f& center, float radius, bool isHole, int linkage)
    {
        std::vector<SbVec3f> points;
        for (const SbVec3f& p : circle())
            points.emplace_back((center[0] + radius * p[0]) * p[2],
                                (center[1] + radius * (isHole ? -p[1] : p[1])) * p[2], p[2]);
        fill(add<SoProfileCoordinate3>()->point, points);
        auto* profile = add<SoNurbsProfile>();
        profile->linkage = linkage;
        fill(profile->knotVector, kCircleKnots);
    }

    void addOutline(const std::vector<SbVec2f>& points, int linkage)
    {
        fill(add<SoProfileCoordinate2>()->point, points);
        add<SoLinearProfile>()->linkage = linkage;
    }

    void addTexture() // for texture coordinates, which are parameters
    {
        add<SoTexture2>()->image.setValue(SbImage(SbVec2i32(1, 1), 3));
    }

    std::vector<Triangle> triangles()
    {
        std::vector<Triangle> all;
        SoCallbackAction action;
        action.addTriangleCallback(SoShape::getClassTypeId(),
                                   [&all](SoCallbackAction*, const SoNode*,
                                          const SoPrimitiveVertex& a, const SoPrimitiveVertex& b,
                                          const SoPrimitiveVertex& c) {
                                       all.push_back({{a.point, b.point, c.point},
                                                      {a.normal, b.normal, c.normal},
                                                      {a.texCoord, b.texCoord, c.texCoord}});
                                   });
        action.apply(m_root.get());
        return all;
    }

    std::vector<std::pair<SbVec3f, SbVec3f>> lines()
    {
        std::vector<std::pair<SbVec3f, SbVec3f>> all;
        SoCallbackAction action;
        action.addLineCallback(
            SoShape::getClassTypeId(),
            [&all](SoCallbackAction*, const SoNode*, const SoPrimitiveVertex& a,
                   const SoPrimitiveVertex& b) { all.emplace_back(a.point, b.point); });
        action.apply(m_root.get());
        return all;
    }

    static double areaOf(const std::vector<Triangle>& all)
    {
        double area = 0;
        for (const Triangle& t : all)
            area += (t.p[1] - t.p[0]).cross(t.p[2] - t.p[0]).length() / 2;
        return area;
    }

    bool isHit(float x, float y)
    {
        SoRayPickAction pick(SbViewportRegion(10, 10));
        pick.setRay(SbVec3f(x, y, 5), SbVec3f(0, 0, -1));
        pick.apply(m_root.get());
        return pick.getPickedPoint() != nullptr;
    }

    SoRef<SoSeparator> m_root;
    SoComplexity* m_effort = nullptr; // Not owned; the root is its parent.
};

/// Edges that only one triangle has, by the parameters of their ends.
std::vector<std::array<SbVec2f, 2>> openEdges(const std::vector<Triangle>& all)
{
    const auto key = [](const SbVec3f& p) { return std::array<float, 3>{p[0], p[1], p[2]}; };
    std::map<std::array<std::array<float, 3>, 2>, int> sides;
    for (const Triangle& t : all) {
        for (std::size_t i = 0; i < 3; ++i)
            ++sides[{key(t.p[i]), key(t.p[(i + 1) % 3])}];
    }
    std::vector<std::array<SbVec2f, 2>> open;
    for (const Triangle& t : all) {
        for (std::size_t i = 0; i < 3; ++i) {
            if (!sides.count({key(t.p[(i + 1) % 3]), key(t.p[i])}))
                open.push_back({t.at[i], t.at[(i + 1) % 3]});
        }
    }
    return open;
}

TEST_F(Nurbs, CircleStaysOnTheCircleAndFollowsTheComplexity)
{
    std::vector<SbVec4f> points;
    for (const SbVec3f& p : circle())
        points.emplace_back(p[0] * p[2], p[1] * p[2], 0.0f, p[2]);
    fill(add<SoCoordinate4>()->point, points);
    auto* curve = add<SoNurbsCurve>();
    curve->numControlPoints = 9;
    fill(curve->knotVector, kCircleKnots);
    std::size_t before = 0;
    for (const float effort : {0.0f, 0.5f, 1.0f}) {
        m_effort->value = effort;
        const auto drawn = lines();
        ASSERT_GT(drawn.size(), before);
        before = drawn.size();
        double length = 0, off = 0;
        for (const auto& [a, b] : drawn) {
            EXPECT_NEAR(a.length(), 1, 1e-6);
            off = std::max(off, 1.0 - ((a + b) / 2).length());
            length += (b - a).length();
        }
        EXPECT_EQ(drawn.front().first, SbVec3f(1, 0, 0));
        EXPECT_EQ(drawn.back().second, SbVec3f(1, 0, 0));
        EXPECT_LE(off, 2 * 1e-2 * std::pow(100, -effort)); // of the size, 2
        EXPECT_GT(length, 2 * std::numbers::pi * (1 - off));
    }
    EXPECT_LT(before, 1000u);

    // Without weights the same points are another curve; indices choose among them.
    std::vector<SbVec3f> plain;
    for (const SbVec3f& p : circle())
        plain.emplace_back(p[0], p[1], 0.0f);
    fill(add<SoCoordinate3>()->point, plain);
    m_root->addChild(m_root->getChild(2));
    m_root->removeChild(2);
    EXPECT_GT(lines()[lines().size() / 8].first.length(), 1.05f);
    auto* indexed = new SoIndexedNurbsCurve;
    m_root->replaceChild(3, indexed);
    indexed->numControlPoints = 2;
    fill(indexed->coordIndex, std::vector<std::int32_t>{0, 3});
    fill(indexed->knotVector, kLineKnots);
    ASSERT_EQ(lines().size(), 1u);
    EXPECT_EQ(lines()[0].second, plain[3]);
}

TEST_F(Nurbs, SphereIsRoundClosedAndFacesOutwards)
{
    addSphere();
    for (const float effort : {0.0f, 0.5f, 1.0f}) {
        m_effort->value = effort;
        const std::vector<Triangle> all = triangles();
        ASSERT_GT(all.size(), 20u);
        double off = 0;
        for (const Triangle& t : all) {
            for (std::size_t i = 0; i < 3; ++i) {
                ASSERT_NEAR(t.p[i].length(), 1, 1e-6);
                ASSERT_GT(t.normal[i].dot(t.p[i]), 0.9999f);
            }
            const SbVec3f middle = (t.p[0] + t.p[1] + t.p[2]) / 3;
            EXPECT_GT((t.p[1] - t.p[0]).cross(t.p[2] - t.p[0]).dot(middle), 0);
            off = std::max(off, 1.0 - middle.length());
        }
        EXPECT_LE(off, 2 * 1e-2 * std::pow(100, -effort));
        EXPECT_TRUE(openEdges(all).empty()) << openEdges(all).size();
    }
    auto* hints = new SoShapeHints;
    hints->vertexOrdering = SoShapeHints::CLOCKWISE;
    m_root->insertChild(hints, 0);
    for (const Triangle& t : triangles()) {
        ASSERT_LT(t.normal[0].dot(t.p[0]), -0.9999f);
        ASSERT_LT((t.p[1] - t.p[0]).cross(t.p[2] - t.p[0]).dot(t.p[0]), 0);
    }
}

TEST_F(Nurbs, TrimmedFlatPartsHaveTheAreaOfTheirOutlines)
{
    constexpr double kPi = std::numbers::pi;
    m_effort->value = 1;
    const std::vector<SbVec2f> whole{{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    addOutline(whole, SoProfile::START_FIRST);
    addRound({0.5f, 0.5f}, 0.3f, true, SoProfile::START_NEW);
    addRound({0.5f, 0.5f}, 0.2f, false, SoProfile::START_NEW); // an island
    addSquare();
    EXPECT_NEAR(areaOf(triangles()), 1 - kPi * 0.09 + kPi * 0.04, 2e-4);
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-0.1f, 1.1f);
    for (int i = 0; i < 500; ++i) {
        const float x = place(random), y = place(random);
        const float r = std::hypot(x - 0.5f, y - 0.5f);
        if (std::abs(r - 0.3f) < 1e-3f || std::abs(r - 0.2f) < 1e-3f)
            continue;
        const bool inside = x > 0 && x < 1 && y > 0 && y < 1;
        EXPECT_EQ(isHit(x, y), inside && (r > 0.3f || r < 0.2f)) << x << ' ' << y;
    }

    // A hole alone, one outline of two profiles, outlines beyond the surface and crossing it.
    while (m_root->getNumChildren() > 1)
        m_root->removeChild(1);
    addRound({0, 0}, 0.5f, true, SoProfile::START_FIRST);
    addSquare();
    EXPECT_NEAR(areaOf(triangles()), 1 - kPi * 0.25 / 4, 2e-4);
    while (m_root->getNumChildren() > 1)
        m_root->removeChild(1);
    addRound({0, 0}, 0.1f, true, SoProfile::START_FIRST); // does not count any more
    addOutline({{0, 0}, {1, 0}}, SoProfile::START_FIRST);
    addOutline({{1, 1}, {0.5f, 0.5f}, {0, 1}}, SoProfile::ADD_TO_CURRENT);
    addSquare();
    EXPECT_NEAR(areaOf(triangles()), 0.75, 1e-6);
    while (m_root->getNumChildren() > 1)
        m_root->removeChild(1);
    addOutline({{-3, 0.25f}, {4, 0.25f}, {4, 0.75f}, {-3, 0.75f}}, SoProfile::START_FIRST);
    addOutline({{0.5f, -2}, {3, -2}, {3, 2}, {0.5f, 2}}, SoProfile::START_NEW);
    addSquare();
    EXPECT_NEAR(areaOf(triangles()), 0.75, 1e-6); // both together
}

TEST_F(Nurbs, TrimmedWavesOpenNowhereButAtTheirOutlines)
{
    // Corners on lines of the grid, edges along them, and islands.
    addTexture();
    addOutline({{0, 0}, {2, 0}, {2, 2}, {0, 2}}, SoProfile::START_FIRST);
    addRound({1, 1}, 0.8f, true, SoProfile::START_NEW);
    addOutline({{0.75f, 1}, {1.25f, 1}, {1.25f, 1.5f}, {1, 1.5f}, {1, 1.1f}}, SoProfile::START_NEW);
    addWave();
    const auto onOutline = [this](const SbVec2f& unit) {
        const SbVec2f p = unit * 2;
        const auto near = [](float a, float b) { return std::abs(a - b) < 1e-6f; };
        const bool border = near(p[0], 0) || near(p[0], 2) || near(p[1], 0) || near(p[1], 2);
        // A profile may be off by a quarter of what a surface may.
        const float off = 0.0026f * 1.6f * std::pow(100.0f, -m_effort->value.getValue());
        const bool hole = std::abs(std::hypot(p[0] - 1, p[1] - 1) - 0.8f) < off + 1e-5f;
        const auto onEdge = [&](SbVec2f a, SbVec2f b) {
            const SbVec2f ab = b - a;
            const float t = std::clamp((p - a).dot(ab) / ab.dot(ab), 0.0f, 1.0f);
            return (a + ab * t - p).length() < 1e-4f;
        };
        const SbVec2f island[] = {{0.75f, 1}, {1.25f, 1}, {1.25f, 1.5f}, {1, 1.5f}, {1, 1.1f}};
        bool isIsland = false;
        for (std::size_t i = 0; i < 5; ++i)
            isIsland = isIsland || onEdge(island[i], island[(i + 1) % 5]);
        return border || hole || isIsland;
    };
    for (const float effort : {0.0f, 0.5f, 0.9f}) {
        m_effort->value = effort;
        const std::vector<Triangle> all = triangles();
        ASSERT_GT(all.size(), 20u);
        const auto open = openEdges(all);
        EXPECT_GT(open.size(), 20u);
        for (const auto& edge : open) {
            ASSERT_TRUE(onOutline(edge[0]) && onOutline(edge[1]))
                << effort << ": " << edge[0][0] << ' ' << edge[0][1] << " to " << edge[1][0] << ' '
                << edge[1][1];
        }
    }
}

TEST_F(Nurbs, PicksNameThePatchAndBoxesHoldTheSurface)
{
    addWave();
    SoRayPickAction pick(SbViewportRegion(10, 10));
    pick.setRay(SbVec3f(0.6f, -0.55f, 5), SbVec3f(0, 0, -1));
    pick.apply(m_root.get());
    ASSERT_TRUE(pick.getPickedPoint());
    const SoDetail* detail = pick.getPickedPoint()->getDetail();
    ASSERT_TRUE(detail && detail->isOfType(SoFaceDetail::getClassTypeId()));
    EXPECT_EQ(static_cast<const SoFaceDetail*>(detail)->getFaceIndex(), 1); // of 2 by 2
    SoGetBoundingBoxAction box(SbViewportRegion(10, 10));
    box.apply(m_root.get());
    EXPECT_NEAR(box.getBoundingBox().getMax()[0], 1, 1e-6);
    // Trimmed to a quarter, under the same box cache.
    auto* outline = new SoProfileCoordinate2;
    fill(outline->point, std::vector<SbVec2f>{{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    m_root->insertChild(outline, 1);
    m_root->insertChild(new SoLinearProfile, 2);
    box.apply(m_root.get());
    EXPECT_NEAR(box.getBoundingBox().getMax()[0], 0, 1e-5);
}

TEST_F(Nurbs, CreasesAreSharpAndTwistsAreSmooth)
{
    // Degree 1 in u with a bend in the middle; both sides keep their normals.
    fill(add<SoCoordinate3>()->point,
         std::vector<SbVec3f>{{-1, 0, 0}, {0, 0, 1}, {1, 0, 0}, {-1, 1, 0}, {0, 1, 1}, {1, 1, 0}});
    auto* roof = add<SoNurbsSurface>();
    roof->numUControlPoints = 3;
    roof->numVControlPoints = 2;
    fill(roof->uKnotVector, std::vector<float>{0, 0, 1, 2, 2});
    fill(roof->vKnotVector, kLineKnots);
    const auto sides = triangles();
    ASSERT_EQ(sides.size(), 4u);
    for (const Triangle& t : sides) {
        const SbVec3f flat = (t.p[1] - t.p[0]).cross(t.p[2] - t.p[0]).normalized();
        for (const SbVec3f& normal : t.normal)
            EXPECT_GT(normal.dot(flat), 0.9999f);
    }
    m_root->removeChild(2);
    m_root->removeChild(1);
    // z = x y
    fill(add<SoCoordinate3>()->point,
         std::vector<SbVec3f>{{-1, -1, 1}, {1, -1, -1}, {-1, 1, -1}, {1, 1, 1}});
    auto* saddle = add<SoNurbsSurface>();
    saddle->numUControlPoints = 2;
    saddle->numVControlPoints = 2;
    fill(saddle->uKnotVector, kLineKnots);
    fill(saddle->vKnotVector, kLineKnots);
    for (const Triangle& t : triangles()) {
        const SbVec3f middle = (t.p[0] + t.p[1] + t.p[2]) / 3;
        EXPECT_NEAR(middle[2], middle[0] * middle[1], 2e-3f);
    }
}

TEST_F(Nurbs, NormalsOfStraightLinesTurnInSteps)
{
    // Straight lines from an arch to a trough.
    fill(add<SoCoordinate3>()->point,
         std::vector<SbVec3f>{
             {-1, -1, 0}, {0, -1, 2}, {1, -1, 0}, {-1, 1, 0}, {0, 1, -2}, {1, 1, 0}});
    auto* ribbon = add<SoNurbsSurface>();
    ribbon->numUControlPoints = 3;
    ribbon->numVControlPoints = 2;
    fill(ribbon->uKnotVector, std::vector<float>{0, 0, 0, 1, 1, 1});
    fill(ribbon->vKnotVector, kLineKnots);
    const auto pieces = triangles();
    EXPECT_LT(pieces.size(), 2000u);
    for (const Triangle& t : pieces) {
        EXPECT_GT(t.normal[0].dot(t.normal[1]), 0.9f);
        EXPECT_GT(t.normal[1].dot(t.normal[2]), 0.9f);
    }
}

TEST_F(Nurbs, NothingIsSaidOfWhatHasNoPoints)
{
    SoNurbsSurface* wave = addWave();
    static_cast<SoCoordinate3*>(m_root->getChild(1))->point.deleteValues(0);
    EXPECT_TRUE(triangles().empty());
    m_root->removeChild(1);
    EXPECT_TRUE(triangles().empty());
    wave->uKnotVector.deleteValues(0);
    EXPECT_TRUE(triangles().empty());
}

TEST_F(Nurbs, FaultsAreToldOnceAndDrawNothing)
{
    auto errors = support::expectErrors();
    SoNurbsSurface* wave = addWave();
    const auto expectFault = [&](const char* what) {
        errors.clear();
        EXPECT_TRUE(triangles().empty()) << what;
        EXPECT_EQ(errors.count(), 1u) << what;
        triangles();
        EXPECT_EQ(errors.count(), 1u) << what;
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<std::vector<float>> wrong{
        {},
        {0, 0, 0, 0, 1, 2, 2, 2},
        {0, 0, 0, 0, 1, 2, 2, 1, 2},
        {0, 0, 0, 0, nan, 2, 2, 2, 2},
        {1, 1, 1, 1, 1, 1, 1, 1, 1},
    };
    for (const auto& knots : wrong) {
        wave->uKnotVector.deleteValues(0);
        fill(wave->uKnotVector, knots);
        if (knots.size() == 8) // a lower order fits as well
            continue;
        expectFault("knots");
    }
    wave->uKnotVector.deleteValues(0);
    fill(wave->uKnotVector, kCubicKnots);
    for (const int count : {-5, 1, 2'000'000'000}) {
        wave->numVControlPoints = count;
        expectFault("count");
    }
    wave->numVControlPoints = 5;
    auto* points = static_cast<SoCoordinate3*>(m_root->getChild(1));
    points->point.set1Value(7, SbVec3f(nan, 0, 0));
    expectFault("point");
    points->point.set1Value(7, SbVec3f(0, 0, 0));
    errors.clear();
    EXPECT_FALSE(triangles().empty());

    // Profiles: a wrong index leaves the profile out, and the surface whole.
    const double whole = areaOf(triangles());
    auto* outline = new SoProfileCoordinate2;
    fill(outline->point, std::vector<SbVec2f>{{0, 0}, {1, 0}, {1, 1}});
    auto* profile = new SoLinearProfile;
    fill(profile->index, std::vector<std::int32_t>{0, 1, 3});
    m_root->insertChild(outline, 1);
    m_root->insertChild(profile, 2);
    EXPECT_NEAR(areaOf(triangles()), whole, 1e-6);
    EXPECT_EQ(errors.count(), 1u);
    triangles();
    EXPECT_EQ(errors.count(), 1u);
    // Outlines that cross themselves everywhere are refused in no time.
    std::mt19937 random(3);
    std::uniform_real_distribution<float> place(0, 2);
    std::vector<SbVec2f> scribble;
    for (int i = 0; i < 20'000; ++i)
        scribble.emplace_back(place(random), place(random));
    fill(outline->point, scribble);
    profile->index.deleteValues(0);
    expectFault("scribble");
    errors.mayStayEmpty();
}

TEST_F(Nurbs, HighEffortHasABound)
{
    // A thousand patches, each with more bends than can be shown.
    std::vector<SbVec3f> points;
    constexpr int kSide = 40;
    for (int j = 0; j < kSide; ++j) {
        for (int i = 0; i < kSide; ++i)
            points.emplace_back(0.01f * i, 0.01f * j, (i + j) % 2 ? 1e6f : -1e6f);
    }
    fill(add<SoCoordinate3>()->point, points);
    auto* surface = add<SoIndexedNurbsSurface>();
    surface->numUControlPoints = kSide;
    surface->numVControlPoints = kSide;
    std::vector<std::int32_t> indices;
    for (int i = 0; i < kSide * kSide; ++i)
        indices.push_back(i);
    fill(surface->coordIndex, indices);
    std::vector<float> knots{0, 0};
    for (int i = 0; i < kSide; ++i)
        knots.push_back(static_cast<float>(i));
    knots.insert(knots.end(), 2, kSide - 1.0f);
    fill(surface->uKnotVector, knots);
    fill(surface->vKnotVector, knots);
    m_effort->value = 1;
    const std::size_t count = triangles().size();
    EXPECT_GT(count, 100'000u);
    EXPECT_LT(count, 2'100'000u);
}

} // namespace
