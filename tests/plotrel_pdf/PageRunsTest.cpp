#include "page/PageRuns.h"
#include "Drawings.h"
#include "page/PageMesh.h"
#include "page/PageOutline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

using namespace support;
using namespace kalmyr::detail;

namespace {

/// Whether two convex polygons have a place in common that is not on their sides: some of many
/// places within the first lies within the second as well.
class Overlap {
public:
    explicit Overlap(const VectorDrawing& drawing) : m_drawing(drawing) {}

    bool operator()(std::size_t a, std::size_t b)
    {
        const VectorPrimitive &first = m_drawing.primitives[a], &second = m_drawing.primitives[b];
        const VectorVertex* v = &m_drawing.vertices[first.first];
        for (int i = 0; i < 200; ++i) {
            std::array<float, 4> share{};
            float sum = 0;
            for (std::uint32_t k = 0; k < first.count; ++k)
                sum += share[k] = std::uniform_real_distribution<float>(0.02f, 1)(m_random);
            float x = 0, y = 0;
            for (std::uint32_t k = 0; k < first.count; ++k) {
                x += v[k].x * share[k] / sum;
                y += v[k].y * share[k] / sum;
            }
            if (contains(second, x, y))
                return true;
        }
        return false;
    }

private:
    bool contains(const VectorPrimitive& one, float x, float y) const
    {
        const VectorVertex* v = &m_drawing.vertices[one.first];
        int left = 0, right = 0;
        for (std::uint32_t i = 0; i < one.count; ++i) {
            const VectorVertex &a = v[i], &b = v[(i + 1) % one.count];
            const double side =
                (double(b.x) - a.x) * (y - a.y) - (double(b.y) - a.y) * (double(x) - a.x);
            left += side > 0.05;
            right += side < -0.05;
        }
        return left == int(one.count) || right == int(one.count);
    }

    const VectorDrawing& m_drawing;
    std::mt19937 m_random{7};
};

/// Polygons here and there, in few colours and opacities, small and large, flat and shaded.
VectorDrawing randomDrawing(unsigned seed, int count, bool clear)
{
    std::mt19937 random(seed);
    const auto number = [&random](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    VectorDrawing drawing = emptyPage();
    for (int i = 0; i < count; ++i) {
        const float size = random() % 4 ? number(0.5f, 3) : number(5, 25);
        const float x = number(6, 94 - size), y = number(6, 54 - size);
        const float shade = static_cast<float>(random() % 3) / 2;
        VectorPrimitive& one =
            polygon(drawing, {{x, y, shade, 0, 0},
                              {x + size, y + number(0, 0.3f) * size, shade, 1, 0},
                              {x + number(0.2f, 1) * size, y + size, shade, 0, 1}});
        one.shaded = random() % 3 == 0;
        one.opacity = clear && random() % 2 ? 0.5f : 1;
    }
    return drawing;
}

/// Checks what runs promise, and returns how many of them have more than one primitive.
int checkRuns(const VectorDrawing& drawing, const PageRuns& all)
{
    std::vector<int> place(drawing.primitives.size(), -1), runOf(place);
    int next = 0, gathered = 0;
    for (std::size_t i = 0; i < all.runs.size(); ++i) {
        gathered += all.runs[i].count > 1;
        all.forEach(all.runs[i], [&](std::uint32_t at) {
            EXPECT_EQ(place[at], -1);
            place[at] = next++;
            runOf[at] = static_cast<int>(i);
        });
    }
    EXPECT_EQ(next, int(drawing.primitives.size()));
    Overlap overlaps(drawing);
    for (std::size_t b = 0; b < place.size(); ++b)
        for (std::size_t a = 0; a < b; ++a) {
            const bool moved = place[a] > place[b];
            const bool mixed = runOf[a] == runOf[b] && all.runs[runOf[a]].opacity < 255;
            if (moved || mixed) {
                EXPECT_FALSE(overlaps(a, b)) << a << " and " << b;
            }
        }
    return gathered;
}

using Triangle = std::array<std::array<double, 5>, 3>;

/// Reads a mesh as its format's readers do.
std::vector<Triangle> unpack(const PageMesh::Packed& mesh)
{
    std::vector<Triangle> result;
    std::array<std::array<double, 5>, 3> last{};
    const auto* at = reinterpret_cast<const unsigned char*>(mesh.bytes.data());
    const auto* const end = at + mesh.bytes.size();
    const double most = (1 << mesh.coordinateBits) - 1;
    int waiting = 0;
    while (at < end) {
        const int flag = *at++;
        std::array<double, 5> corner{};
        for (int i = 0; i < 2; ++i) {
            double value = 0;
            for (int k = 0; k < mesh.coordinateBits / 8; ++k)
                value = value * 256 + *at++;
            corner[i] =
                mesh.range[2 * i] + value * (mesh.range[2 * i + 1] - mesh.range[2 * i]) / most;
        }
        for (int i = 2; i < 5; ++i)
            corner[i] = *at++;
        if (waiting > 0) {
            last[3 - waiting--] = corner;
        } else if (flag == 0) {
            last[0] = corner;
            waiting = 2;
        } else {
            last =
                flag == 1 ? Triangle{last[1], last[2], corner} : Triangle{last[0], last[2], corner};
        }
        if (waiting == 0)
            result.push_back(last);
    }
    EXPECT_EQ(waiting, 0);
    return result;
}

} // namespace

TEST(PageRuns, KeepTheOrderOfWhatOverlaps)
{
    int gathered = 0;
    for (unsigned seed = 1; seed <= 6; ++seed)
        gathered += checkRuns(randomDrawing(seed, 150, seed % 2 == 0),
                              PageRuns(randomDrawing(seed, 150, seed % 2 == 0), seed % 3 != 0));
    EXPECT_GT(gathered, 60);
}

TEST(PageRuns, GatherWhatIsApartAcrossOtherThings)
{
    VectorDrawing drawing = emptyPage();
    // Two rows of alternating colours, far from each other.
    for (int i = 0; i < 40; ++i) {
        const float x = 6 + 2 * static_cast<float>(i);
        polygon(drawing, {red(x, 10), red(x + 8, 10), red(x + 8, 20), red(x, 20)});
        polygon(drawing, {blue(x, 40), blue(x + 8, 40), blue(x + 8, 50), blue(x, 50)});
    }
    EXPECT_EQ(PageRuns(drawing).runs.size(), 2U);

    // One above the other they keep their turns.
    for (std::size_t i = 0; i < drawing.vertices.size(); ++i)
        if (drawing.vertices[i].y >= 40)
            drawing.vertices[i].y -= 30;
    EXPECT_EQ(PageRuns(drawing).runs.size(), 80U);
}

TEST(PageRuns, MakeMeshesOfSmallPolygonsOnly)
{
    VectorDrawing drawing = emptyPage();
    const auto fan = [&drawing](float size) {
        for (int i = 0; i < 40; ++i) {
            const float x = 6 + static_cast<float>(i), shade = static_cast<float>(i) / 40;
            polygon(
                drawing,
                {{x, 10, shade, 0, 0}, {x + size, 10, shade, 0, 0}, {x, 10 + size, shade, 0, 0}});
        }
    };
    fan(1);
    ASSERT_EQ(PageRuns(drawing).runs.size(), 1U);
    EXPECT_EQ(PageRuns(drawing).runs[0].kind, PageRun::SHADED);
    EXPECT_EQ(PageRuns(drawing, false).runs[0].kind, PageRun::FLAT);
    drawing = emptyPage();
    fan(20);
    EXPECT_EQ(PageRuns(drawing).runs[0].kind, PageRun::FLAT);

    // A surface of transparent triangles is one group.
    drawing = emptyPage();
    for (int i = 0; i < 3000; ++i) {
        const float x = 6 + static_cast<float>(i % 60), y = 6 + static_cast<float>(i / 60) / 2;
        const float shade = static_cast<float>(i % 7) / 7;
        polygon(drawing, {{x, y, shade, 0, 0},
                          {x + 1, y, shade, 0, 0},
                          {x + 1, y + 0.5f, shade, 0, 0},
                          {x, y + 0.5f, shade, 0, 0}})
            .opacity = 0.5f;
    }
    EXPECT_EQ(PageRuns(drawing).runs.size(), 1U);
    // The same once more lies above it.
    const VectorPrimitive copy = drawing.primitives[100];
    drawing.primitives.push_back(copy);
    EXPECT_EQ(PageRuns(drawing).runs.size(), 2U);
}

TEST(PageMesh, KeepsItsTrianglesInOrderWithinTwoMicrometres)
{
    for (const double size : {50.0, 900.0}) {
        std::mt19937 random(3);
        const auto vertex = [&](int x, int y) {
            const auto shade = static_cast<float>((x * 7 + y * 13) % 256) / 255;
            return VectorVertex{static_cast<float>(size / 20 * x + 0.3),
                                static_cast<float>(size / 20 * y - 7), shade, 1 - shade, 0.2f};
        };
        PageMesh mesh;
        std::vector<std::array<VectorVertex, 3>> given;
        for (int y = 0; y < 20; ++y)
            for (int x = 0; x < 20; ++x)
                for (std::array<VectorVertex, 3> one :
                     {std::array{vertex(x, y), vertex(x + 1, y), vertex(x + 1, y + 1)},
                      std::array{vertex(x, y), vertex(x + 1, y + 1), vertex(x, y + 1)}}) {
                    std::shuffle(one.begin(), one.end(), random);
                    given.push_back(one);
                    mesh.addTriangle(one[0], one[1], one[2]);
                    mesh.addTriangle(one[0], one[0], one[2]); // nothing of it
                }
        for (int i = 0; i < 8; ++i) {
            constexpr std::array<std::array<int, 2>, 9> kRim{
                {{4, 4}, {6, 3}, {8, 4}, {9, 6}, {8, 8}, {6, 9}, {4, 8}, {3, 6}, {4, 4}}};
            given.push_back({vertex(6, 6), vertex(kRim[i][0], kRim[i][1]),
                             vertex(kRim[i + 1][0], kRim[i + 1][1])});
            mesh.addTriangle(given.back()[0], given.back()[1], given.back()[2]);
        }
        const PageMesh::Packed packed = mesh.take();
        EXPECT_EQ(packed.coordinateBits, size < 256 ? 16 : 24);
        // The second triangle of each square adds one corner to the three of the first; those of a
        // fan behind the first one as well.
        const std::size_t corner = size < 256 ? 8 : 10;
        EXPECT_EQ(packed.bytes.size(), ((given.size() - 8) * 2 + 10) * corner);

        const std::vector<Triangle> read = unpack(packed);
        ASSERT_EQ(read.size(), given.size());
        for (std::size_t i = 0; i < read.size(); ++i)
            for (const VectorVertex& corner : given[i])
                EXPECT_TRUE(std::any_of(read[i].begin(), read[i].end(), [&](const auto& one) {
                    return std::abs(one[0] - corner.x) < 0.00201
                           && std::abs(one[1] - corner.y) < 0.00201
                           && std::abs(one[2] - corner.red * 255) < 0.51
                           && std::abs(one[3] - corner.green * 255) < 0.51;
                })) << i;
        EXPECT_TRUE(mesh.take().bytes.empty());
    }
}

TEST(PageOutline, HasTheWindingsOfItsPolygons)
{
    // Squares of a grid in both windings, some of them twice, some missing.
    std::mt19937 random(5);
    std::vector<std::array<VectorVertex, 4>> squares;
    for (int i = 0; i < 120; ++i) {
        const auto x = static_cast<float>(random() % 10), y = static_cast<float>(random() % 10);
        std::array square{red(x, y), red(x + 1, y), red(x + 1, y + 1), red(x, y + 1)};
        if (random() % 2)
            std::reverse(square.begin(), square.end());
        squares.push_back(square);
    }
    PageOutline outline;
    for (const auto& square : squares)
        outline.addPolygon(square.data(), square.size());
    const std::vector<std::vector<PagePlace>> paths = outline.take();
    std::size_t corners = 0;
    for (const auto& path : paths)
        corners += path.size();
    EXPECT_LT(corners, squares.size() * 3);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x) {
            int expected = 0, winding = 0;
            for (const auto& square : squares)
                expected += std::min(square[0].x, square[2].x) == float(x)
                            && std::min(square[0].y, square[2].y) == float(y);
            // Sides that cross a ray to the right of the square's middle.
            for (const auto& path : paths)
                for (std::size_t i = 0; i < path.size(); ++i) {
                    const PagePlace &a = path[i], &b = path[(i + 1) % path.size()];
                    if (a.x > 1000 * x + 500 && a.x == b.x) {
                        winding += a.y <= 1000 * y && b.y > 1000 * y;
                        winding -= b.y <= 1000 * y && a.y > 1000 * y;
                    }
                }
            EXPECT_EQ(winding, expected) << x << " " << y;
        }

    // A fan of triangles around a square's middle is the square.
    const std::array corner{red(0, 0), red(4, 0), red(4, 4), red(0, 4)};
    for (int i = 0; i < 4; ++i) {
        const std::array triangle{corner[i], red(2, 2), corner[(i + 1) % 4]};
        outline.addPolygon(triangle.data(), 3);
    }
    EXPECT_EQ(outline.take(),
              (std::vector<std::vector<PagePlace>>{{{0, 0}, {4000, 0}, {4000, 4000}, {0, 4000}}}));
    EXPECT_TRUE(outline.take().empty());
}
