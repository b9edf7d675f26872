#include "NodesSupport.h"
#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoMaterialBinding.h>
#include <kalmyr/nodes/SoNormal.h>
#include <kalmyr/nodes/SoNormalBinding.h>
#include <kalmyr/nodes/SoShapeHints.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/nodes/SoTextureCoordinate2.h>
#include <kalmyr/shapes/FaceBuilder.h>
#include <kalmyr/shapes/SoFaceSet.h>
#include <kalmyr/shapes/SoIndexedFaceSet.h>
#include <kalmyr/shapes/SoIndexedLineSet.h>
#include <kalmyr/shapes/SoIndexedPointSet.h>
#include <kalmyr/shapes/SoIndexedQuadSet.h>
#include <kalmyr/shapes/SoIndexedTriangleSet.h>
#include <kalmyr/shapes/SoIndexedTriangleStripSet.h>
#include <kalmyr/shapes/SoLineSet.h>
#include <kalmyr/shapes/SoPointSet.h>
#include <kalmyr/shapes/SoQuadMesh.h>
#include <kalmyr/shapes/SoQuadSet.h>
#include <kalmyr/shapes/SoTriangleStripSet.h>
#include <kalmyr/shapes/SoVertexProperty.h>

#include <cmath>
#include <random>
#include <set>

namespace {

using kalmyr::FaceBuilder;
using kalmyr::FaceInput;
using FaceBuilderTest = nodetest::NodesTest;
using VertexShapeTest = nodetest::NodesTest;

const std::vector<SbVec3f> kSquare{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
const std::vector<SbVec3f> kCubeCorners{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                        {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
const std::vector<std::int32_t> kCubeFaces{0, 3, 2, 1, -1, 4, 5, 6, 7, -1, 0, 1, 5, 4, -1,
                                           2, 3, 7, 6, -1, 0, 4, 7, 3, -1, 1, 2, 6, 5, -1};

SoRef<SoGeometry> build(const FaceInput& input)
{
    SoRef<SoGeometry> geometry(new SoGeometry);
    FaceBuilder(input).build(*geometry);
    return geometry;
}

FaceInput inputOf(const std::vector<SbVec3f>& positions, const std::vector<std::int32_t>& faces)
{
    FaceInput input;
    input.positions = positions;
    input.coordIndex = faces;
    return input;
}

/// A square grid with a height, as triangles.
struct Grid {
    std::vector<SbVec3f> positions;
    std::vector<std::int32_t> faces;

    explicit Grid(int n)
    {
        for (int y = 0; y <= n; ++y) {
            for (int x = 0; x <= n; ++x) {
                const auto fx = static_cast<float>(x), fy = static_cast<float>(y);
                positions.emplace_back(fx, fy, std::sin(fx * 0.1f) * std::cos(fy * 0.1f));
            }
        }
        for (int y = 0; y < n; ++y) {
            for (int x = 0; x < n; ++x) {
                const int a = y * (n + 1) + x, b = a + 1, c = a + n + 1, d = c + 1;
                faces.insert(faces.end(), {a, b, d, -1, a, d, c, -1});
            }
        }
    }
};

} // namespace

TEST_F(FaceBuilderTest, CreaseAngleDecidesBetweenSharpAndSmooth)
{
    FaceInput input = inputOf(kCubeCorners, kCubeFaces);
    const auto sharp = build(input);
    EXPECT_EQ(sharp->getNumTriangles(), 12u);
    EXPECT_EQ(sharp->positions.size(), 24u);
    EXPECT_EQ(sharp->triangleFaces[11], 5);
    input.creaseAngle = 1.5f;
    EXPECT_EQ(build(input)->positions.size(), 24u);
    for (const float angle : {1.6f, 3.2f}) {
        input.creaseAngle = angle;
        const auto smooth = build(input);
        EXPECT_EQ(smooth->positions.size(), 8u);
        for (std::size_t v = 0; v < 8; ++v) {
            const SbVec3f out = (smooth->positions[v] - SbVec3f(0.5f, 0.5f, 0.5f)).normalized();
            EXPECT_TRUE(smooth->normals[v].equals(out, 1e-5f)) << angle;
        }
    }
    // Outward whichever way: the sum over a closed surface is its volume.
    for (int axis = 0; axis < 3; ++axis) {
        SbVec3f direction;
        direction[axis] = 1;
        EXPECT_NEAR(nodetest::facingArea(*sharp, direction), 0, 1e-6f);
    }
}

TEST_F(FaceBuilderTest, CreasesOnlyAcrossSharpEdges)
{
    // A roof: two planes at right angles sharing the edge 1-2, the second divided in two.
    const std::vector<SbVec3f> positions{{-1, 0, 0}, {0, 0, 1}, {0, 1, 1},
                                         {-1, 1, 0}, {1, 0, 0}, {1, 1, 0}};
    const std::vector<std::int32_t> faces{0, 1, 2, 3, -1, 1, 4, 5, -1, 1, 5, 2, -1};
    FaceInput input = inputOf(positions, faces);
    input.creaseAngle = 1;
    const auto roof = build(input);
    EXPECT_EQ(roof->positions.size(), 8u); // only the two on the ridge are doubled
    for (std::size_t v = 0; v < roof->positions.size(); ++v)
        EXPECT_NEAR(std::abs(roof->normals[v][0]), 0.70710678f, 1e-5f);
}

TEST_F(FaceBuilderTest, ClockwiseFacesAreTurnedRound)
{
    const std::vector<std::int32_t> clockwise{3, 2, 1, 0, -1};
    FaceInput input = inputOf(kSquare, clockwise);
    input.clockwise = true;
    input.solid = true;
    const auto square = build(input);
    EXPECT_NEAR(nodetest::facingArea(*square, {0, 0, 1}), 1, 1e-6f);
    EXPECT_EQ(square->normals[0], SbVec3f(0, 0, 1));
    EXPECT_TRUE(square->solid);
    EXPECT_FALSE(square->twoSided);
}

TEST_F(FaceBuilderTest, TessellatesWhatIsNotConvex)
{
    struct Case {
        const char* name;
        std::vector<SbVec3f> outline;
        float area;
        float tolerance;
    };
    const std::vector<Case> cases{
        {"arrow", {{0, 0, 0}, {4, 0, 0}, {1, 1, 0}, {0, 4, 0}}, 4, 1e-5f},
        {"reversed start", {{4, 0, 0}, {1, 1, 0}, {0, 4, 0}, {0, 0, 0}}, 4, 1e-5f},
        {"convex", {{0, 0, 0}, {2, 0, 0}, {3, 1, 0}, {2, 2, 0}, {0, 2, 0}}, 5, 1e-5f},
        // A square with a square hole, joined by a cut that is walked twice.
        {"hole",
         {{0, 0, 0},
          {4, 0, 0},
          {4, 4, 0},
          {0, 4, 0},
          {0, 0, 0},
          {1, 1, 0},
          {1, 2, 0},
          {2, 2, 0},
          {2, 1, 0},
          {1, 1, 0}},
         15,
         1e-4f},
        // Its middle is wound twice and stays open.
        {"star",
         {{0, 1, 0},
          {-0.5877853f, -0.809017f, 0},
          {0.9510565f, 0.309017f, 0},
          {-0.9510565f, 0.309017f, 0},
          {0.5877853f, -0.809017f, 0}},
         0.77567f,
         1e-3f},
    };
    for (const Case& c : cases) {
        std::vector<std::int32_t> face(c.outline.size());
        for (std::size_t i = 0; i < face.size(); ++i)
            face[i] = static_cast<std::int32_t>(i);
        FaceInput input = inputOf(c.outline, face);
        input.convex = false;
        const auto g = build(input);
        EXPECT_NEAR(nodetest::facingArea(*g, {0, 0, 1}), c.area, c.tolerance) << c.name;
        for (std::size_t i = 0; i < g->triangles.size(); i += 3) {
            const SbVec3f& a = g->positions[g->triangles[i]];
            const SbVec3f n = (g->positions[g->triangles[i + 1]] - a)
                                  .cross(g->positions[g->triangles[i + 2]] - a);
            EXPECT_GE(n[2], -1e-5f) << c.name;
        }
        for (const SbVec3f& n : g->normals)
            EXPECT_TRUE(n.equals({0, 0, 1}, 1e-4f)) << c.name;
    }
}

TEST_F(FaceBuilderTest, EndlesslyCrossingPolygonsTakeNoEndlessTime)
{
    constexpr int kCorners = 3000;
    std::vector<SbVec3f> tangled, comb;
    std::vector<std::int32_t> face;
    std::minstd_rand random;
    for (int i = 0; i < kCorners; ++i) {
        const auto at = [&] { return static_cast<float>(random() % 100'000); };
        tangled.emplace_back(at(), at(), 0.f);
        // Teeth of a saw above a floor that leads back: concave, and never crossing.
        const auto x = static_cast<float>(i);
        comb.emplace_back(x, i == 0 || i == kCorners - 1 ? 0.f : 1.f + i % 2, 0.f);
        face.push_back(i);
    }
    FaceInput input = inputOf(tangled, face);
    input.convex = false;
    EXPECT_EQ(build(input)->getNumTriangles(), kCorners - 2u); // a plain fan
    // However it lies; a tooth that hangs through the floor crosses it.
    comb[kCorners / 2][1] = -1;
    const int places[][3] = {{0, 1, 2}, {1, 0, 2}, {2, 0, 1}, {0, 2, 1}, {1, 2, 0}};
    for (const auto& place : places) {
        std::vector<SbVec3f> lying(comb.size());
        for (std::size_t i = 0; i < comb.size(); ++i)
            for (int k = 0; k < 3; ++k)
                lying[i][place[k]] = comb[i][k];
        input = inputOf(lying, face);
        input.convex = false;
        const SoRef<SoGeometry> geometry = build(input);
        EXPECT_EQ(geometry->getNumTriangles(), kCorners - 2u);
        EXPECT_FLOAT_EQ(geometry->getBox().getMax()[place[1]], 2.f);
        double area = 0;
        for (std::size_t i = 0; i < geometry->triangles.size(); i += 3) {
            const SbVec3f a = geometry->positions[geometry->triangles[i]];
            area += 0.5
                    * (geometry->positions[geometry->triangles[i + 1]] - a)
                          .cross(geometry->positions[geometry->triangles[i + 2]] - a)
                          .length();
        }
        EXPECT_NEAR(area, 1.5 * kCorners, 5.0);
    }
}

TEST_F(FaceBuilderTest, LeavesOutFacesWithBadIndicesAndSaysSoOnce)
{
    const std::vector<std::int32_t> faces{0, 1,  2, -1, 0,  1,  99, -1, 0, -7,
                                          2, -1, 0, 1,  -1, -1, 2,  3,  0};
    const SoRef<SoIndexedFaceSet> node(new SoIndexedFaceSet);
    node->setName("broken");
    FaceInput input = inputOf(kSquare, faces);
    input.node = node.get();
    auto errors = support::expectErrors();
    const auto g = build(input);
    EXPECT_EQ(errors.count(), 1u);
    for (const char* part : {"broken", "coordIndex[6]", "99", "0 to 3"})
        EXPECT_TRUE(errors.contains(part)) << part;
    EXPECT_EQ(g->triangleFaces, (std::vector<std::int32_t>{0, 5}));
    for (const std::uint32_t i : g->triangles)
        EXPECT_LT(i, g->positions.size());
}

TEST_F(FaceBuilderTest, ChecksTheIndicesOfAttributes)
{
    const std::vector<SbVec3f> normals{{0, 0, 2}};
    const std::vector<std::int32_t> faces{0, 1, 2, -1, 0, 2, 3, -1},
        normalIndex{0, 0, 0, -1, 0, 5, 0, -1};
    FaceInput input = inputOf(kSquare, faces);
    input.normals.values = normals;
    input.normals.indices = normalIndex;
    input.normals.indexField = "normalIndex";
    input.normals.binding = SoBinding::PER_VERTEX_INDEXED;
    auto errors = support::expectErrors();
    const auto g = build(input);
    EXPECT_TRUE(errors.contains("normalIndex[5] is 5"));
    EXPECT_EQ(g->getNumTriangles(), 1u);
    EXPECT_EQ(g->normals[0], SbVec3f(0, 0, 1)); // unit length
    errors.clear();
    errors.mayStayEmpty();
    // Too few without indices: new ones are made, and every face is there.
    input.normals.indices = {};
    input.normals.binding = SoBinding::PER_VERTEX;
    EXPECT_EQ(build(input)->getNumTriangles(), 2u);
    EXPECT_EQ(errors.count(), 0u);
}

TEST_F(FaceBuilderTest, BindingsReachTheRightCorners)
{
    const std::vector<std::int32_t> faces{0, 1, 2, -1, 0, 2, 3, -1};
    const std::vector<std::uint32_t> colors{10, 11, 12, 13, 14, 15};
    const std::vector<std::int32_t> byFace{5, 3}, byCorner{0, 1, 2, -1, 5, 4, 3, -1};
    struct Case {
        int binding;
        std::vector<std::int32_t> indices;
        std::vector<std::uint32_t> expected; ///< of the six corners
    };
    const std::vector<Case> cases{
        {SoBinding::OVERALL, {}, {10, 10, 10, 10, 10, 10}},
        {SoBinding::PER_FACE, {}, {10, 10, 10, 11, 11, 11}},
        {SoBinding::PER_FACE_INDEXED, byFace, {15, 15, 15, 13, 13, 13}},
        {SoBinding::PER_VERTEX, {}, {10, 11, 12, 13, 14, 15}},
        {SoBinding::PER_VERTEX_INDEXED, byCorner, {10, 11, 12, 15, 14, 13}},
        {SoBinding::PER_VERTEX_INDEXED, {}, {10, 11, 12, 10, 12, 13}},
        {SoBinding::PER_VERTEX_INDEXED, {-1}, {10, 11, 12, 10, 12, 13}},
    };
    for (const Case& c : cases) {
        FaceInput input = inputOf(kSquare, faces);
        input.colors.values = colors;
        input.colors.indices = c.indices;
        input.colors.binding = c.binding;
        const auto g = build(input);
        std::vector<std::uint32_t> seen;
        for (const std::uint32_t i : g->triangles)
            seen.push_back(g->colors[i]);
        EXPECT_EQ(seen, c.expected) << c.binding;
    }
}

TEST_F(FaceBuilderTest, StripsTurnAllTrianglesOneWay)
{
    const std::vector<SbVec3f> zigzag{{0, 1, 0}, {0, 0, 0}, {1, 1, 0},
                                      {1, 0, 0}, {2, 1, 0}, {2, 0, 0}};
    const std::vector<std::int32_t> strips{0, 1, 2, 3, 4, 5, -1, 0, 1, 2};
    const std::vector<std::uint32_t> colors{1, 2, 3, 4, 5};
    FaceInput input = inputOf(zigzag, strips);
    input.strips = true;
    input.colors.values = colors;
    input.colors.binding = SoBinding::PER_PART;
    auto g = build(input);
    EXPECT_EQ(g->getNumTriangles(), 5u);
    EXPECT_NEAR(nodetest::facingArea(*g, {0, 0, 1}), 2.5f, 1e-5f);
    EXPECT_EQ(g->colors[g->triangles[9]], 1u);
    EXPECT_EQ(g->colors[g->triangles[12]], 2u);
    input.colors.binding = SoBinding::PER_FACE;
    g = build(input);
    for (std::size_t t = 0; t < 5; ++t)
        EXPECT_EQ(g->colors[g->triangles[t * 3]], t + 1);
}

TEST_F(FaceBuilderTest, StaysLinearAroundOneVertex)
{
    // A fan of very many faces with a colour each around one corner, smooth and not.
    constexpr int kFaces = 200000;
    std::vector<SbVec3f> positions{{0, 0, 0.1f}};
    std::vector<std::int32_t> faces;
    std::vector<std::uint32_t> colors;
    for (int i = 0; i < kFaces; ++i) {
        const float angle = 6.2831853f * static_cast<float>(i) / kFaces;
        positions.emplace_back(std::cos(angle), std::sin(angle), i % 2 ? 0.0f : 0.3f);
        faces.insert(faces.end(), {0, i + 1, (i + 1) % kFaces + 1, -1});
        colors.push_back(static_cast<std::uint32_t>(i));
    }
    FaceInput input = inputOf(positions, faces);
    input.colors.values = colors;
    input.colors.binding = SoBinding::PER_FACE;
    // Quadratic work would take minutes.
    for (const float angle : {0.0f, 0.2f, 0.8f, 3.2f}) {
        input.creaseAngle = angle;
        EXPECT_EQ(build(input)->getNumTriangles(), std::size_t(kFaces));
    }
}

TEST_F(FaceBuilderTest, SmoothGridSharesEveryVertex)
{
    const Grid grid(50);
    FaceInput input = inputOf(grid.positions, grid.faces);
    input.creaseAngle = 0.5f;
    const auto g = build(input);
    EXPECT_EQ(g->positions.size(), grid.positions.size());
    EXPECT_TRUE(g->triangleFaces.empty());
    for (std::size_t v = 0; v < g->positions.size(); ++v) {
        const SbVec3f& p = g->positions[v];
        if (p[0] < 1 || p[0] > 49 || p[1] < 1 || p[1] > 49)
            continue;
        const SbVec3f exact = SbVec3f(-0.1f * std::cos(p[0] * 0.1f) * std::cos(p[1] * 0.1f),
                                      0.1f * std::sin(p[0] * 0.1f) * std::sin(p[1] * 0.1f), 1)
                                  .normalized();
        EXPECT_TRUE(g->normals[v].equals(exact, 2e-3f));
    }
}

TEST_F(FaceBuilderTest, SurvivesDegenerateInput)
{
    const std::vector<SbVec3f> none,
        odd{{0, 0, 0}, {0, 0, 0}, {NAN, 0, 0}, {1, INFINITY, 0}, {1, 1, 1}};
    const std::vector<std::int32_t> empty, ends{-1, -1, -1},
        faces{0, 1, 0, -1, 0, 1, 2, 3, 4, -1, 3, 4, 2, 0};
    EXPECT_TRUE(build(inputOf(none, empty))->isEmpty());
    EXPECT_TRUE(build(inputOf(none, ends))->isEmpty());
    for (const float angle : {0.0f, 1.0f, 4.0f}) {
        FaceInput input = inputOf(odd, faces);
        input.convex = false;
        input.creaseAngle = angle;
        input.makeTexCoords = true;
        const auto g = build(input);
        for (const std::uint32_t i : g->triangles)
            ASSERT_LT(i, g->positions.size());
        EXPECT_EQ(g->normals.size(), g->positions.size());
        EXPECT_EQ(g->texCoords.size(), g->positions.size());
    }
}

namespace {

/// A scene of one vertex shape.
struct Scene {
    SoRef<SoSeparator> root{new SoSeparator};
    template <class Node>
    Node* add(Node* node)
    {
        root->addChild(node);
        return node;
    }
    SoCoordinate3* square()
    {
        auto* coordinates = add(new SoCoordinate3);
        coordinates->point.setValues(0, kSquare);
        return coordinates;
    }
    SoRef<SoGeometry> geometry() const { return nodetest::geometryOf(root.get()); }
};

} // namespace

TEST_F(VertexShapeTest, AllFaceShapesMakeTheSameSquare)
{
    const std::vector<SbVec3f> rows{{0, 1, 0}, {1, 1, 0}, {0, 0, 0}, {1, 0, 0}};
    const std::vector<SbVec3f> strip{{0, 1, 0}, {0, 0, 0}, {1, 1, 0}, {1, 0, 0}};
    auto* mesh = new SoQuadMesh;
    mesh->verticesPerColumn.setValue(2);
    mesh->verticesPerRow.setValue(2);
    auto* indexed = new SoIndexedFaceSet;
    indexed->coordIndex.setValues({0, 1, 2, 3, -1});
    auto* indexedStrip = new SoIndexedTriangleStripSet;
    indexedStrip->coordIndex.setValues({0, 1, 2, 3, -1});
    auto* triangles = new SoIndexedTriangleSet;
    triangles->coordIndex.setValues({0, 1, 2, 0, 2, 3});
    auto* quads = new SoIndexedQuadSet;
    quads->coordIndex.setValues({3, 0, 1, 2});
    struct Case {
        SoVertexShape* shape;
        const std::vector<SbVec3f>* positions;
    };
    for (const Case& c :
         {Case{new SoFaceSet, &kSquare}, Case{indexed, &kSquare},
          Case{new SoTriangleStripSet, &strip}, Case{indexedStrip, &strip}, Case{mesh, &rows},
          Case{triangles, &kSquare}, Case{new SoQuadSet, &kSquare}, Case{quads, &kSquare}}) {
        Scene scene;
        scene.add(new SoShapeHints); // smooth across flat edges
        scene.add(new SoCoordinate3)->point.setValues(0, *c.positions);
        scene.add(c.shape);
        const auto g = scene.geometry();
        ASSERT_TRUE(g) << c.shape->getTypeId().getName().getString();
        EXPECT_EQ(g->getNumTriangles(), 2u);
        EXPECT_EQ(g->positions.size(), 4u) << c.shape->getTypeId().getName().getString();
        EXPECT_NEAR(nodetest::facingArea(*g, {0, 0, 1}), 1, 1e-6f)
            << c.shape->getTypeId().getName().getString();
    }
}

TEST_F(VertexShapeTest, GeometryIsRebuiltOnlyWhenSomethingItUsesChanges)
{
    Scene scene;
    auto* material = scene.add(new SoMaterial);
    auto* hints = scene.add(new SoShapeHints);
    auto* binding = scene.add(new SoMaterialBinding);
    auto* coordinates = scene.square();
    auto* shape = scene.add(new SoIndexedFaceSet);
    shape->coordIndex.setValues({0, 1, 2, 3, -1});
    std::uint64_t last = scene.geometry()->getId();
    const auto isNew = [&] {
        const std::uint64_t id = scene.geometry()->getId();
        return std::exchange(last, id) != id;
    };
    EXPECT_FALSE(isNew());
    material->diffuseColor.setValue(1, 0, 0);
    EXPECT_FALSE(isNew());
    coordinates->point.set1Value(0, -1, 0, 0);
    EXPECT_TRUE(isNew());
    hints->vertexOrdering.setValue(SoShapeHints::CLOCKWISE);
    EXPECT_TRUE(isNew());
    binding->value.setValue(SoMaterialBinding::PER_FACE);
    EXPECT_TRUE(isNew());
    material->diffuseColor.setValue(0, 1, 0);
    EXPECT_TRUE(isNew());
    EXPECT_EQ(scene.geometry()->colors[0], 0x00ff00ffu);
    shape->coordIndex.setValues({0, 1, 2, -1});
    EXPECT_TRUE(isNew());
    EXPECT_FALSE(isNew());
}

TEST_F(VertexShapeTest, OneShapeUnderSeveralCoordinatesKeepsBothResults)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    const SoRef<SoFaceSet> shape(new SoFaceSet);
    for (const float height : {1.0f, 2.0f}) {
        auto* part = new SoSeparator;
        auto* coordinates = new SoCoordinate3;
        coordinates->point.setValues({{0, 0, 0}, {1, 0, 0}, {0, height, 0}});
        part->addChild(coordinates);
        part->addChild(shape.get());
        root->addChild(part);
    }
    std::vector<std::uint64_t> ids;
    for (int pass = 0; pass < 2; ++pass) {
        nodetest::atShapes(root.get(), [&](SoState* state, SoShape* s) {
            ids.push_back(s->getGeometry(state)->getId());
        });
    }
    ASSERT_EQ(ids.size(), 4u);
    EXPECT_NE(ids[0], ids[1]);
    EXPECT_EQ(ids[0], ids[2]);
    EXPECT_EQ(ids[1], ids[3]);
}

TEST_F(VertexShapeTest, VertexPropertyComesBeforeTheState)
{
    Scene scene;
    scene.square();
    auto* shape = scene.add(new SoFaceSet);
    auto* property = new SoVertexProperty;
    property->vertex.setValues({{0, 0, 0}, {5, 0, 0}, {0, 5, 0}});
    property->orderedRGBA.setValues({0xff0000ffu, 0x00ff00ffu, 0x0000ffffu});
    property->materialBinding.setValue(SoVertexProperty::PER_VERTEX);
    shape->vertexProperty.setValue(property);
    auto g = scene.geometry();
    EXPECT_EQ(g->getBox(), SbBox3f(0, 0, 0, 5, 5, 0));
    EXPECT_EQ(g->colors[1], 0x00ff00ffu);
    property->vertex.set1Value(1, 7, 0, 0);
    EXPECT_EQ(scene.geometry()->getBox(), SbBox3f(0, 0, 0, 7, 5, 0));
    shape->vertexProperty.setIgnored(true);
    EXPECT_EQ(scene.geometry()->getBox(), SbBox3f(0, 0, 0, 1, 1, 0));
}

TEST_F(VertexShapeTest, TextureCoordinatesAppearWithATexture)
{
    Scene scene;
    auto* texture = scene.add(new SoTexture2);
    auto* coordinates = scene.add(new SoCoordinate3);
    coordinates->point.setValues({{0, 0, 0}, {4, 0, 0}, {4, 2, 0}, {0, 2, 0}});
    scene.add(new SoFaceSet);
    EXPECT_TRUE(scene.geometry()->texCoords.empty());
    texture->image.setValue(SbVec2i32(1, 1), 1, reinterpret_cast<const unsigned char*>("x"));
    const auto g = scene.geometry();
    ASSERT_EQ(g->texCoords.size(), 4u);
    EXPECT_EQ(g->texCoords[2], SbVec2f(1, 0.5f));
    auto* given = new SoTextureCoordinate2;
    given->point.setValues({{9, 9}, {8, 8}, {7, 7}, {6, 6}});
    scene.root->insertChild(given, 0);
    EXPECT_EQ(scene.geometry()->texCoords[3], SbVec2f(6, 6));
}

TEST_F(VertexShapeTest, NormalsOfTheStateAreBoundAsTold)
{
    Scene scene;
    auto* normals = scene.add(new SoNormal);
    normals->vector.setValues({{3, 0, 0}, {0, 3, 0}});
    auto* binding = scene.add(new SoNormalBinding);
    binding->value.setValue(SoNormalBinding::PER_FACE);
    scene.square();
    auto* shape = scene.add(new SoIndexedFaceSet);
    shape->coordIndex.setValues({0, 1, 2, -1, 0, 2, 3, -1});
    auto g = scene.geometry();
    EXPECT_EQ(g->normals[g->triangles[0]], SbVec3f(1, 0, 0));
    EXPECT_EQ(g->normals[g->triangles[3]], SbVec3f(0, 1, 0));
    binding->value.setValue(SoNormalBinding::PER_FACE_INDEXED);
    shape->normalIndex.setValues({1, 0});
    g = scene.geometry();
    EXPECT_EQ(g->normals[g->triangles[0]], SbVec3f(0, 1, 0));
}

TEST_F(VertexShapeTest, LinesAndPoints)
{
    Scene scene;
    auto* material = scene.add(new SoMaterial);
    material->diffuseColor.setValues({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    auto* binding = scene.add(new SoMaterialBinding);
    binding->value.setValue(SoMaterialBinding::PER_PART);
    scene.square();
    auto* lines = new SoIndexedLineSet;
    lines->coordIndex.setValues({0, 1, 2, -1, 3, -1, 2, 3});
    scene.add(lines);
    auto g = scene.geometry();
    ASSERT_EQ(g->getNumLines(), 3u);
    EXPECT_EQ(g->colors[g->lines[2]], 0x00ff00ffu);
    EXPECT_EQ(g->colors[g->lines[5]], 0x0000ffffu);
    EXPECT_TRUE(g->normals.empty());
    {
        auto errors = support::expectErrors();
        lines->coordIndex.setValues({0, 1, 44, -1, 2, 3});
        EXPECT_EQ(scene.geometry()->getNumLines(), 1u);
        EXPECT_TRUE(errors.contains("coordIndex[2] is 44"));
    }
    auto* set = new SoLineSet;
    set->startIndex.setValue(1);
    set->numVertices.setValues({2, -1});
    scene.root->replaceChild(lines, set);
    g = scene.geometry();
    EXPECT_EQ(g->getNumLines(), 1u);
    EXPECT_EQ(g->positions[g->lines[0]], kSquare[1]);

    auto* points = new SoPointSet;
    points->startIndex.setValue(2);
    scene.root->replaceChild(set, points);
    g = scene.geometry();
    ASSERT_EQ(g->points.size(), 2u);
    EXPECT_EQ(g->positions[g->points[1]], kSquare[3]);
    EXPECT_EQ(g->colors[g->points[1]], 0x00ff00ffu);
    points->startIndex.setValue(4);
    EXPECT_FALSE(scene.geometry());
}

TEST_F(VertexShapeTest, IndexedPointsTakeTheColorsOfTheirBinding)
{
    Scene scene;
    auto* material = scene.add(new SoMaterial);
    material->diffuseColor.setValues({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    auto* binding = scene.add(new SoMaterialBinding);
    scene.square();
    auto* points = scene.add(new SoIndexedPointSet);
    points->coordIndex.setValues({3, -1, 1});
    const auto expect = [&](int value, std::initializer_list<std::uint32_t> colors) {
        binding->value.setValue(value);
        const auto g = scene.geometry();
        ASSERT_EQ(g->points.size(), 2u);
        EXPECT_EQ(g->positions[g->points[0]], kSquare[3]);
        EXPECT_EQ(g->positions[g->points[1]], kSquare[1]);
        std::vector<std::uint32_t> seen;
        for (const std::uint32_t i : g->points)
            seen.push_back(g->colors[i]);
        EXPECT_EQ(seen, std::vector<std::uint32_t>(colors)) << value;
    };
    for (const int counting : {SoBinding::PER_PART, SoBinding::PER_FACE, SoBinding::PER_VERTEX})
        expect(counting, {0xff0000ffu, 0x00ff00ffu});
    points->materialIndex.setValues({2, 0});
    expect(SoBinding::PER_FACE_INDEXED, {0x0000ffffu, 0xff0000ffu});
    points->materialIndex.setValues({2, -1, 0});
    expect(SoBinding::PER_VERTEX_INDEXED, {0x0000ffffu, 0xff0000ffu});
    SoRayPickAction pick(SbViewportRegion(100, 100));
    pick.setRay({1, 0, 5}, {0, 0, -1});
    pick.apply(scene.root.get());
    ASSERT_TRUE(pick.getPickedPoint(0));
    EXPECT_TRUE(pick.getPickedPoint(0)->getPoint().equals(kSquare[1], 1e-4f));
    binding->value.setValue(SoBinding::OVERALL);
    points->coordIndex.setValues({0, 17, -9, 2});
    auto errors = support::expectErrors();
    EXPECT_EQ(scene.geometry()->points.size(), 2u);
    EXPECT_TRUE(errors.contains("coordIndex[1] is 17"));
    EXPECT_EQ(errors.count(), 1u);
    points->coordIndex.setNum(0);
    EXPECT_FALSE(scene.geometry());
}

TEST_F(VertexShapeTest, HugeCountsNeitherCrashNorTakeMemory)
{
    Scene scene;
    scene.square();
    auto* mesh = new SoQuadMesh;
    mesh->verticesPerColumn.setValue(2000000000);
    mesh->verticesPerRow.setValue(2);
    scene.add(mesh);
    auto errors = support::expectErrors();
    EXPECT_EQ(scene.geometry()->getNumTriangles(), 2u);
    auto* faces = new SoFaceSet;
    faces->numVertices.setValues({2147483647, 3});
    scene.root->replaceChild(mesh, faces);
    EXPECT_FALSE(scene.geometry());
    faces->startIndex.setValue(-3);
    faces->numVertices.setValues({3});
    EXPECT_FALSE(scene.geometry());
    EXPECT_EQ(errors.count(), 3u);
    auto* points = new SoPointSet;
    points->startIndex.setValue(-2147483647);
    scene.root->replaceChild(faces, points);
    EXPECT_EQ(scene.geometry()->points.size(), 4u);
    EXPECT_EQ(errors.count(), 4u);
}

TEST_F(VertexShapeTest, GridsThatStartTooEarlyLoseOnlyTheirFirstQuadrilateral)
{
    Scene scene;
    scene.add(new SoCoordinate3)
        ->point.setValues({{1, 1, 0}, {2, 1, 0}, {0, 0, 0}, {1, 0, 0}, {2, 0, 0}});
    auto* mesh = scene.add(new SoQuadMesh);
    mesh->startIndex.setValue(-1);
    mesh->verticesPerColumn.setValue(2);
    mesh->verticesPerRow.setValue(3);
    auto errors = support::expectErrors();
    const auto g = scene.geometry();
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_EQ(g->triangleFaces, (std::vector<std::int32_t>{1, 1}));
    EXPECT_EQ(g->getBox(), SbBox3f(1, 0, 0, 2, 1, 0));
}
