#include "NodesSupport.h"
#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/details/SoTextDetail.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/shapes/SoText3.h>

#include <cmath>
#include <map>
#include <set>
#include <string>
#include <tuple>

namespace {

class Text3Test : public nodetest::NodesTest {
protected:
    static SoRef<SoSeparator> scene(const std::string& body)
    {
        const std::string text = "#Kalmyr V1.0 ascii\nSeparator { " + body + " }";
        SoInput in;
        in.setBuffer(text.data(), text.size());
        return SoRef<SoSeparator>(SoDB::readAll(&in));
    }
    static SoRef<SoGeometry> built(const std::string& fields, const std::string& before = "")
    {
        return nodetest::geometryOf(
            scene("Font { size 2 } " + before + " Text3 { " + fields + " }").get());
    }
    static float volumeOf(const SoGeometry& g)
    {
        float volume = 0;
        for (std::size_t i = 0; i < g.triangles.size(); i += 3) {
            const SbVec3f &a = g.positions[g.triangles[i]], &b = g.positions[g.triangles[i + 1]],
                          &c = g.positions[g.triangles[i + 2]];
            volume += a.dot(b.cross(c)) / 6;
        }
        return volume;
    }
};

using Place = std::tuple<float, float, float>;

Place placeOf(const SbVec3f& p)
{
    return {p[0], p[1], p[2]};
}

/// Edges of triangles that no other triangle runs along the other way.
std::size_t openEdges(const SoGeometry& g)
{
    std::map<std::pair<Place, Place>, int> edges;
    for (std::size_t i = 0; i < g.triangles.size(); ++i) {
        const std::size_t next = i % 3 == 2 ? i - 2 : i + 1;
        const Place from = placeOf(g.positions[g.triangles[i]]);
        const Place to = placeOf(g.positions[g.triangles[next]]);
        ++edges[{from, to}];
        --edges[{to, from}];
    }
    std::size_t open = 0;
    for (const auto& [edge, count] : edges)
        open += count > 0 ? 1 : 0;
    return open;
}

} // namespace

TEST_F(Text3Test, LettersAreClosedSolids)
{
    // Holes, curves, points apart, accents, an overlap or two, and a gap.
    for (const char* string : {"I", "B8", "i:%", "\xc3\x84 \xc3\xa7@", "&Qwg"}) {
        const std::string fields = std::string("string \"") + string + "\" depth 0.5";
        const auto g = built(fields);
        ASSERT_TRUE(g) << string;
        EXPECT_EQ(openEdges(*g), 0u) << string;
        EXPECT_TRUE(g->solid);
        const auto front = built(fields + " parts FRONT");
        const float area = nodetest::facingArea(*front, {0, 0, 1});
        EXPECT_GT(area, 0.05f);
        EXPECT_NEAR(volumeOf(*g), area * 0.5f, area * 1e-3f) << string;
        EXPECT_FLOAT_EQ(g->getBox().getMax()[2], 0);
        EXPECT_FLOAT_EQ(g->getBox().getMin()[2], -0.5f);
    }
}

TEST_F(Text3Test, NormalsAreSmoothAlongCurvesOnly)
{
    const auto g = built("string \"OI\" parts SIDES");
    for (std::size_t i = 0; i < g->triangles.size(); i += 3) {
        const SbVec3f& a = g->positions[g->triangles[i]];
        const SbVec3f face = (g->positions[g->triangles[i + 1]] - a)
                                 .cross(g->positions[g->triangles[i + 2]] - a)
                                 .normalized();
        EXPECT_NEAR(face[2], 0, 1e-5f);
        for (std::size_t k = 0; k < 3; ++k) {
            const SbVec3f& normal = g->normals[g->triangles[i + k]];
            EXPECT_NEAR(normal.length(), 1, 1e-4f);
            EXPECT_GT(normal.dot(face), 0.8f);
        }
    }
    const auto lids = built("string \"OI\" parts (FRONT | BACK)");
    for (const SbVec3f& normal : lids->normals)
        EXPECT_NEAR(std::abs(normal[2]), 1, 1e-4f);
}

TEST_F(Text3Test, PartsAndDepthChooseWhatThereIs)
{
    const auto count = [](const std::string& fields) {
        const auto g = built("string \"H8\" " + fields);
        return g ? g->getNumTriangles() : 0;
    };
    const std::size_t front = count("parts FRONT"), sides = count("parts SIDES");
    EXPECT_GT(front, 10u);
    EXPECT_GT(sides, 10u);
    EXPECT_EQ(count("parts BACK"), front);
    EXPECT_EQ(count(""), 2 * front + sides);
    EXPECT_EQ(count("parts 0"), 0u);
    for (const char* depth : {"depth 0", "depth -3"}) {
        EXPECT_EQ(count(depth), 2 * front);
        EXPECT_EQ(count(std::string("parts SIDES ") + depth), 0u);
    }
    EXPECT_EQ(count("string [ ]"), 0u);
    EXPECT_FALSE(built("string \"H\" parts (FRONT | SIDES)")->solid);
}

TEST_F(Text3Test, ProfilesShapeTheSides)
{
    // A bevel of 0.02 in front, a rim that goes outwards, and back again.
    const std::string bevel = "profile [ 0 -0.02, 0.02 0, 0.3 0, 0.32 0.03, 0.5 0.03 ] ";
    for (const char* string : {"H", "B8", "&Q\xc3\x84"}) {
        const std::string text = std::string("string \"") + string + "\" ";
        const auto g = built(text + bevel), plain = built(text + "depth 0.5");
        EXPECT_EQ(openEdges(*g), 0u) << string;
        EXPECT_EQ(g->getNumTriangles() - built(text + bevel + "parts SIDES")->getNumTriangles(),
                  2 * built(text + "parts FRONT")->getNumTriangles());
        const SbBox3f &box = g->getBox(), &like = plain->getBox();
        EXPECT_FLOAT_EQ(box.getMin()[2], -0.5f);
        EXPECT_GT(box.getMax()[0], like.getMax()[0] + 0.029f);
        EXPECT_LT(box.getMin()[1], like.getMin()[1] - 0.029f);
        EXPECT_LT(box.getMax()[0], like.getMax()[0] + 0.1f); // spikes are cut
        EXPECT_GT(volumeOf(*g), volumeOf(*plain));
        const auto front = built(text + bevel + "parts FRONT");
        EXPECT_LT(nodetest::facingArea(*front, {0, 0, 1}),
                  nodetest::facingArea(*built(text + "parts FRONT"), {0, 0, 1}));
    }
    EXPECT_EQ(built("string \"H\" profile [ 0 0 ] depth 0.25")->getBox().getMin()[2], -0.25f);
}

TEST_F(Text3Test, LettersOfTooManyFacesAreCut)
{
    const auto root = scene("Text3 { string \"HO\" }");
    auto* text = static_cast<SoText3*>(root->getChild(0));
    std::vector<SbVec2f> profile(1'500'000);
    for (std::size_t i = 0; i < profile.size(); ++i)
        profile[i] = SbVec2f(static_cast<float>(i) * 1e-6f, 0);
    text->profile.setValues(0, profile);
    {
        auto errors = support::expectErrors();
        EXPECT_FALSE(nodetest::geometryOf(root.get()));
        EXPECT_TRUE(errors.contains("too long for its profile"));
        EXPECT_EQ(errors.count(), 1u);
    }
    // Without sides the ends of the profile are enough.
    text->parts = SoText3::FRONT | SoText3::BACK;
    EXPECT_FLOAT_EQ(nodetest::geometryOf(root.get())->getBox().getMin()[2], -1.499999f);
}

TEST_F(Text3Test, StandsWhereFlatTextStands)
{
    for (const char* fields :
         {"string [ \"One\", \"second\" ] spacing 1.5", "string \"Fit\" width 7",
          "string [ \"a\", \"bcd\" ] justification CENTER",
          "string \"right\" justification RIGHT"}) {
        const auto g = built(fields);
        const auto flat = nodetest::geometryOf(
            scene(std::string("Font { size 2 } AsciiText { ") + fields + " }").get());
        const SbBox3f &box = g->getBox(), &like = flat->getBox();
        for (int k = 0; k < 2; ++k) {
            EXPECT_FLOAT_EQ(box.getMin()[k], like.getMin()[k]) << fields;
            EXPECT_FLOAT_EQ(box.getMax()[k], like.getMax()[k]) << fields;
        }
    }
}

TEST_F(Text3Test, PartsTakeMaterialsOfTheirOwn)
{
    const std::string binding = "MaterialBinding { value PER_PART } ";
    const auto root = scene(binding
                            + "Material { diffuseColor [ 1 0 0, 0 1 0, 0 0 1 ] } "
                              "Text3 { string \"T\" }");
    const auto g = nodetest::geometryOf(root.get());
    std::set<std::uint32_t> seen;
    for (std::size_t v = 0; v < g->positions.size(); ++v) {
        const float z = g->normals[v][2];
        const std::uint32_t expected = z > 0.5f    ? 0xff0000ffu
                                       : z < -0.5f ? 0x0000ffffu
                                                   : 0x00ff00ffu;
        EXPECT_EQ(g->colors[v], expected);
        seen.insert(g->colors[v]);
    }
    EXPECT_EQ(seen.size(), 3u);
    ASSERT_TRUE(root->getChild(1)->set("diffuseColor [ 1 1 1, 0 0 0 ]"));
    const auto repainted = nodetest::geometryOf(root.get());
    for (std::size_t v = 0; v < repainted->positions.size(); ++v)
        EXPECT_EQ(repainted->colors[v],
                  repainted->normals[v][2] > 0.5f ? 0xffffffffu : 0x000000ffu);
    ASSERT_TRUE(root->getChild(0)->set("value OVERALL"));
    EXPECT_TRUE(nodetest::geometryOf(root.get())->colors.empty());
}

TEST_F(Text3Test, IsPickedByLines)
{
    // Two bars, one above the other.
    const auto root = scene("Font { size 10 } Text3 { string [ \"I\", \"I\" ] justification "
                            "CENTER depth 2 }");
    SoRayPickAction pick(SbViewportRegion(100, 100));
    pick.setPickAll(true);
    for (const int line : {0, 1}) {
        const float y = 3.5f - 10 * static_cast<float>(line);
        pick.setRay({0, y, 10}, {0, 0, -1});
        pick.apply(root.get());
        ASSERT_EQ(pick.getPickedPoints().size(), 2u);
        EXPECT_NEAR(pick.getPickedPoint(0)->getPoint()[2], 0, 1e-4f);
        EXPECT_NEAR(pick.getPickedPoint(1)->getPoint()[2], -2, 1e-4f);
        const auto* detail = static_cast<const SoTextDetail*>(pick.getPickedPoint(0)->getDetail());
        EXPECT_EQ(detail->getStringIndex(), line);
    }
    // A side from the right.
    pick.setRay({20, 3.5f, -1}, {-1, 0, 0});
    pick.apply(root.get());
    ASSERT_FALSE(pick.getPickedPoints().empty());
    EXPECT_GT(pick.getPickedPoint(0)->getNormal()[0], 0.9f);
}
