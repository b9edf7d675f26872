#include "NodesSupport.h"

#include <kalmyr/shapes/FaceBuilder.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <random>
#include <set>

namespace {

using Polygon = std::vector<SbVec2f>;
using PolygonTest = nodetest::NodesTest;

double twiceArea(const SbVec2f& a, const SbVec2f& b, const SbVec2f& c)
{
    return (double(b[0]) - a[0]) * (double(c[1]) - a[1])
           - (double(b[1]) - a[1]) * (double(c[0]) - a[0]);
}

double twiceArea(const Polygon& polygon)
{
    double sum = 0;
    for (std::size_t i = 1; i + 1 < polygon.size(); ++i)
        sum += twiceArea(polygon[0], polygon[i], polygon[i + 1]);
    return sum;
}

/// By the number of edges to its right.
bool isInside(const Polygon& polygon, const SbVec2f& p)
{
    bool inside = false;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const SbVec2f &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
        if ((a[1] > p[1]) != (b[1] > p[1]))
            inside ^= (b[1] > a[1]) == (twiceArea(a, b, p) > 0);
    }
    return inside;
}

class Shapes {
public:
    explicit Shapes(unsigned seed) : m_random(seed) {}
    int below(int n) { return static_cast<int>(m_random() % static_cast<unsigned>(n)); }
    float part() { return std::uniform_real_distribution<float>(0, 1)(m_random); }

    /// Jagged all round.
    Polygon star(int count)
    {
        Polygon made;
        for (int i = 0; i < count; ++i) {
            const double angle = 2 * std::acos(-1.0) * i / count, radius = 1 - 0.95 * part();
            made.push_back(at(angle, radius));
        }
        return made;
    }
    Polygon comb(int count)
    {
        Polygon made;
        const int teeth = count / 2;
        for (int i = 0; i < teeth; ++i) {
            made.emplace_back(static_cast<float>(i), 1 + 9 * part());
            made.emplace_back(static_cast<float>(i) + 0.5f, 0.2f * part());
        }
        made.emplace_back(static_cast<float>(teeth), -1.0f);
        made.emplace_back(-1.0f, -1.0f);
        return made;
    }
    Polygon spiral(int count)
    {
        Polygon made;
        for (int i = 0; i < count / 2; ++i)
            made.push_back(at(i * 0.3, 1 + i * 0.03));
        for (int i = count / 2; i-- > 0;)
            made.push_back(at(i * 0.3, 1.3 + i * 0.03));
        return made;
    }
    /// Rows of corners on one line, and steps straight up.
    Polygon stairs(int count)
    {
        Polygon made;
        for (int i = 0; i < count / 2; ++i)
            made.emplace_back(static_cast<float>(i), 0.0f);
        for (int i = count / 2; i-- > 0;)
            made.emplace_back(static_cast<float>(i - i % 2), static_cast<float>(1 + i / 4 + i % 2));
        return made;
    }
    Polygon any()
    {
        switch (below(4)) {
        case 0:
            return star(4 + below(60));
        case 1:
            return comb(4 + below(60));
        case 2:
            return spiral(8 + below(60));
        default:
            return stairs(8 + below(60));
        }
    }

private:
    static SbVec2f at(double angle, double radius)
    {
        return {static_cast<float>(radius * std::cos(angle)),
                static_cast<float>(radius * std::sin(angle))};
    }
    std::mt19937 m_random;
};

/// The polygon in a plane of space, seen from any side.
struct Face {
    std::vector<SbVec3f> corners;
    std::vector<std::int32_t> index;
    std::map<std::array<float, 3>, std::size_t> numbers;

    Face(const Polygon& polygon, const SbMatrix& place)
    {
        for (const SbVec2f& p : polygon) {
            corners.push_back(place.point({p[0], p[1], 0}));
            index.push_back(static_cast<std::int32_t>(index.size()));
            const SbVec3f& c = corners.back();
            numbers[{c[0], c[1], c[2]}] = corners.size() - 1;
        }
        index.push_back(-1);
    }

    /// Triangles as numbers of corners; -1 for points that are none.
    std::vector<std::array<int, 3>> cut() const
    {
        kalmyr::FaceInput input;
        input.positions = corners;
        input.coordIndex = index;
        input.convex = false;
        const SoRef<SoGeometry> geometry(new SoGeometry);
        kalmyr::FaceBuilder(input).build(*geometry);
        std::vector<std::array<int, 3>> triangles(geometry->triangles.size() / 3);
        for (std::size_t i = 0; i < geometry->triangles.size(); ++i) {
            const SbVec3f& p = geometry->positions[geometry->triangles[i]];
            const auto known = numbers.find({p[0], p[1], p[2]});
            triangles[i / 3][i % 3] = known == numbers.end() ? -1 : static_cast<int>(known->second);
        }
        return triangles;
    }
};

} // namespace

TEST_F(PolygonTest, SimplePolygonsAreCoveredOnce)
{
    Shapes shapes(11);
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        Polygon polygon = shapes.any();
        if (shapes.below(2))
            std::reverse(polygon.begin(), polygon.end());
        SbMatrix place;
        place.setTransform({shapes.part(), 2, 3},
                           SbRotation(SbVec3f(shapes.part(), 1, shapes.part()), 6 * shapes.part()),
                           SbVec3f(1, 1, 1));
        const auto triangles = Face(polygon, place).cut();
        ASSERT_EQ(triangles.size(), polygon.size() - 2);
        const double whole = twiceArea(polygon), sign = whole > 0 ? 1 : -1;
        double sum = 0;
        std::set<int> used;
        for (const auto& [a, b, c] : triangles) {
            ASSERT_GE(std::min({a, b, c}), 0) << "a new point";
            used.insert({a, b, c});
            const double area = twiceArea(polygon[static_cast<std::size_t>(a)],
                                          polygon[static_cast<std::size_t>(b)],
                                          polygon[static_cast<std::size_t>(c)]);
            EXPECT_GE(area * sign, -1e-4) << "turned over";
            sum += area;
        }
        EXPECT_EQ(used.size(), polygon.size());
        EXPECT_NEAR(sum, whole, 1e-4 * std::abs(whole));
        SbVec2f min = polygon[0], max = polygon[0];
        for (const SbVec2f& p : polygon)
            for (int i = 0; i < 2; ++i) {
                min[i] = std::min(min[i], p[i]);
                max[i] = std::max(max[i], p[i]);
            }
        for (int probe = 0; probe < 30; ++probe) {
            const SbVec2f p(min[0] + (max[0] - min[0]) * shapes.part(),
                            min[1] + (max[1] - min[1]) * shapes.part());
            int covers = 0;
            for (const auto& [a, b, c] : triangles)
                covers += isInside({polygon[static_cast<std::size_t>(a)],
                                    polygon[static_cast<std::size_t>(b)],
                                    polygon[static_cast<std::size_t>(c)]},
                                   p);
            EXPECT_EQ(covers, isInside(polygon, p));
        }
    }
}

/// Corners a rounding error away from each other's edges, and on them.
TEST_F(PolygonTest, NearlyTouchingPolygonsKeepTheirArea)
{
    std::mt19937 random(5);
    for (int round = 0; round < 200; ++round) {
        Polygon polygon{{0, 0}};
        const auto height = [&random](float base, int steps) {
            float y = base;
            for (unsigned k = random() % static_cast<unsigned>(steps + 1); k > 0; --k)
                y = std::nextafter(y, 2.0f);
            return y;
        };
        for (int i = 1; i < 40; ++i)
            polygon.emplace_back(static_cast<float>(i) / 3, height(1, 1));
        polygon.emplace_back(20.0f, 0.0f);
        polygon.emplace_back(20.0f, 2.0f);
        for (int i = 40; i-- > 1;)
            polygon.emplace_back(static_cast<float>(i) / 3 + 0.1f,
                                 std::nextafter(height(1, 1), 2.0f));
        polygon.emplace_back(0.0f, 2.0f);
        const Face face(polygon, SbMatrix());
        kalmyr::FaceInput input;
        input.positions = face.corners;
        input.coordIndex = face.index;
        input.convex = false;
        const SoRef<SoGeometry> geometry(new SoGeometry);
        kalmyr::FaceBuilder(input).build(*geometry);
        const double area = nodetest::facingArea(*geometry, {0, 0, 1});
        EXPECT_NEAR(std::abs(area), std::abs(twiceArea(polygon)) / 2, 1e-3) << round;
    }
}
