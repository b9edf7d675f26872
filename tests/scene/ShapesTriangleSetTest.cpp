#include "NodesSupport.h"
#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/details/SoFaceDetail.h>
#include <kalmyr/io/SoInput.h>

#include <string>

namespace {

using Colors = std::vector<std::uint32_t>;

constexpr std::uint32_t kRed = 0xff0000ff, kGreen = 0x00ff00ff, kBlue = 0x0000ffff;

/// Two faces beside each other, each two units wide and one high, as each type says it.
struct FaceSet {
    const char* type;
    int corners;         ///< of a face
    const char* inOrder; ///< positions of a set without indices, or all and the indices
    const char* indices;
};

class FixedFaceSetTest : public nodetest::NodesTest, public testing::WithParamInterface<FaceSet> {
protected:
    static SoRef<SoSeparator> read(const std::string& body)
    {
        const std::string text = "#Kalmyr V1.0 ascii\nSeparator { " + body + " }";
        SoInput in;
        in.setBuffer(text.data(), text.size());
        return SoRef<SoSeparator>(SoDB::readAll(&in));
    }
    /// The two faces with `before` in front of them and more fields.
    static SoRef<SoSeparator> scene(const std::string& before = "", const std::string& fields = "")
    {
        const FaceSet& set = GetParam();
        return read(before + " Coordinate3 { point [ " + set.inOrder + " ] } " + set.type + " { "
                    + set.indices + " " + fields + " }");
    }
    static bool isIndexed() { return std::string(GetParam().indices) != ""; }
    static Colors colorsOf(const SoGeometry& g)
    {
        Colors seen;
        for (const std::uint32_t i : g.triangles)
            seen.push_back(g.colors[i]);
        return seen;
    }
    /// The colour of every corner of the triangles of the two faces, by face.
    static Colors twoColors(std::uint32_t first, std::uint32_t second)
    {
        const auto half = static_cast<std::size_t>(GetParam().corners - 2) * 3;
        Colors colors(half, first);
        colors.insert(colors.end(), half, second);
        return colors;
    }
    static const SoFaceDetail* pickAt(SoRayPickAction& pick, SoNode* root, float x, float y)
    {
        pick.setRay({x, y, 5}, {0, 0, -1});
        pick.apply(root);
        const SoPickedPoint* picked = pick.getPickedPoint();
        return picked ? static_cast<const SoFaceDetail*>(picked->getDetail()) : nullptr;
    }
};

const std::string kColors = "Material { diffuseColor [ 1 0 0, 0 1 0, 0 0 1 ] } ";

} // namespace

TEST_P(FixedFaceSetTest, IsMeasuredCountedAndPicked)
{
    const auto root = scene();
    const auto perFace = static_cast<unsigned>(GetParam().corners - 2);
    SoGetPrimitiveCountAction count;
    count.apply(root.get());
    EXPECT_EQ(count.getTriangleCount(), 2u * perFace);
    SoGetBoundingBoxAction measure(SbViewportRegion(100, 100));
    measure.apply(root.get());
    EXPECT_EQ(measure.getBoundingBox(), SbBox3f(0, 0, 0, 4, 1, 0));
    const auto g = nodetest::geometryOf(root.get());
    EXPECT_NEAR(nodetest::facingArea(*g, {0, 0, 1}), 2.0f * static_cast<float>(perFace), 1e-5f);
    for (const SbVec3f& normal : g->normals)
        EXPECT_EQ(normal, SbVec3f(0, 0, 1));

    SoRayPickAction pick(SbViewportRegion(100, 100));
    for (const int face : {0, 1}) {
        const float x = 0.3f + 2 * static_cast<float>(face);
        const SoFaceDetail* detail = pickAt(pick, root.get(), x, 0.1f);
        ASSERT_TRUE(detail);
        EXPECT_EQ(detail->getFaceIndex(), face);
        EXPECT_TRUE(pick.getPickedPoint(0)->getPoint().equals({x, 0.1f, 0}, 1e-5f));
    }
    EXPECT_EQ(pickAt(pick, root.get(), 4.5f, 0.1f), nullptr);
}

TEST_P(FixedFaceSetTest, BindingsCountFacesAndCorners)
{
    const auto bound = [](const char* binding, const std::string& fields = "") {
        const auto root = scene(kColors + "MaterialBinding { value " + binding + " }", fields);
        return nodetest::geometryOf(root.get());
    };
    EXPECT_TRUE(bound("OVERALL")->colors.empty());
    EXPECT_EQ(colorsOf(*bound("PER_FACE")), twoColors(kRed, kGreen));
    EXPECT_EQ(colorsOf(*bound("PER_PART")), twoColors(kRed, kGreen));
    if (isIndexed()) {
        const auto g = bound("PER_FACE_INDEXED", "materialIndex [ 2, 1 ]");
        EXPECT_EQ(colorsOf(*g), twoColors(kBlue, kGreen));
    }
    // The second corner of the second face has a colour of its own, however the corners are
    // counted.
    std::string numbers, values;
    for (int i = 0; i < 2 * GetParam().corners; ++i) {
        const bool marked = i == GetParam().corners + 1;
        numbers += marked ? "1 " : "0 ";
        values += marked ? "0 1 0, " : "1 0 0, ";
    }
    const auto corners =
        isIndexed() ? bound("PER_VERTEX_INDEXED", "materialIndex [ " + numbers + "]")
                    : nodetest::geometryOf(scene("Material { diffuseColor [ " + values
                                                 + " ] } MaterialBinding { value PER_VERTEX }")
                                               .get());
    ASSERT_EQ(corners->colors.size(), corners->positions.size());
    int marked = 0;
    for (std::size_t v = 0; v < corners->colors.size(); ++v) {
        if (corners->colors[v] != kGreen)
            continue;
        ++marked;
        EXPECT_EQ(corners->positions[v], SbVec3f(4, 0, 0));
    }
    EXPECT_EQ(marked, 1);
}

TEST_P(FixedFaceSetTest, TakesNormalsAndTextureCoordinates)
{
    const auto root = scene("Texture2 { image 1 1 1 0xff } NormalBinding { value PER_FACE } "
                            "Normal { vector [ 0 0 2, 3 0 0 ] } TextureCoordinate2 { point [ 0 0, "
                            "1 1, 2 2, 3 3, 4 4, 5 5, 6 6, 7 7 ] }");
    const auto g = nodetest::geometryOf(root.get());
    ASSERT_TRUE(g);
    EXPECT_EQ(g->normals[g->triangles.front()], SbVec3f(0, 0, 1));
    EXPECT_EQ(g->normals[g->triangles.back()], SbVec3f(1, 0, 0));
    ASSERT_EQ(g->texCoords.size(), g->positions.size());
    EXPECT_EQ(g->texCoords[g->triangles[1]], SbVec2f(1, 1));
}

TEST_P(FixedFaceSetTest, LeavesOutWhatIsWrongAndSaysSo)
{
    const std::string type = GetParam().type;
    auto errors = support::expectErrors();
    errors.mayStayEmpty();
    const auto shown = [](SoNode* root) {
        const auto g = nodetest::geometryOf(root);
        return g ? g->triangleFaces.size() : 0;
    };
    const std::string points = std::string("Coordinate3 { point [ ") + GetParam().inOrder + " ] } ";
    const auto perFace = static_cast<std::size_t>(GetParam().corners - 2);
    if (isIndexed()) {
        // A bad face, one that a -1 cuts short, and the last with a corner too few.
        const bool quads = GetParam().corners == 4;
        const std::string fields =
            quads ? "0 1 99 2 0 1 2 -1 0 1 2 3 -1 0 1 2" : "0 1 99 0 1 -1 0 1 2 -1 0 1";
        const auto root = read(points + type + " { coordIndex [ " + fields + " ] }");
        const auto g = nodetest::geometryOf(root.get());
        EXPECT_TRUE(errors.contains("coordIndex[2] is 99"));
        ASSERT_TRUE(g);
        EXPECT_EQ(g->triangleFaces, std::vector<std::int32_t>(perFace, 1));
        return;
    }
    const std::string number = type == "QuadSet" ? "numQuads " : "numTriangles ";
    const auto with = [&](const std::string& fields) {
        return read(points + type + " { " + fields + " }");
    };
    EXPECT_EQ(nodetest::geometryOf(with("startIndex 1").get())->getNumTriangles(), perFace);
    EXPECT_EQ(nodetest::geometryOf(with(number + "1").get())->getNumTriangles(), perFace);
    EXPECT_EQ(nodetest::geometryOf(with(number + "0").get()), nullptr);
    EXPECT_EQ(errors.count(), 0u);
    EXPECT_EQ(nodetest::geometryOf(with(number + "2000000000").get())->getNumTriangles(),
              2 * perFace);
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_TRUE(errors.contains("out of the range"));
    shown(with("startIndex -2147483647").get());
    EXPECT_EQ(shown(with("startIndex 2147483647 " + number + "7").get()), 0u);
    EXPECT_EQ(errors.count(), 3u);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, FixedFaceSetTest,
    testing::Values(FaceSet{"TriangleSet", 3, "0 0 0, 2 0 0, 0 1 0, 2 0 0, 4 0 0, 2 1 0", ""},
                    FaceSet{"IndexedTriangleSet", 3, "0 0 0, 2 0 0, 0 1 0, 4 0 0, 2 1 0",
                            "coordIndex [ 0, 1, 2, 1, 3, 4 ]"},
                    FaceSet{"QuadSet", 4, "0 0 0, 2 0 0, 2 1 0, 0 1 0, 2 0 0, 4 0 0, 4 1 0, 2 1 0",
                            ""},
                    FaceSet{"IndexedQuadSet", 4, "0 0 0, 2 0 0, 2 1 0, 0 1 0, 4 0 0, 4 1 0",
                            "coordIndex [ 0, 1, 2, 3, 1, 4, 5, 2 ]"}),
    [](const auto& info) { return std::string(info.param.type); });
