#include "U3DReader.h"

#include "support/ErrorGuard.h"
#include "support/Program.h"

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoImageFile.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoMaterialBinding.h>
#include <kalmyr/nodes/SoMatrixTransform.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoShapeHints.h>
#include <kalmyr/nodes/SoTexture2.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/plotrel/SoToU3DAction.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoIndexedFaceSet.h>
#include <kalmyr/shapes/SoPointSet.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

SoRef<SoNode> readAll(SoInput& in)
{
    if (in.isFileVRML2())
        return SoRef<SoNode>(SoDB::readAllVRML(&in));
    return SoRef<SoNode>(SoDB::readAll(&in));
}

SoRef<SoNode> sceneOf(const std::string& text)
{
    SoDB::init();
    SoInput in;
    in.setBuffer(text.data(), text.size());
    return readAll(in);
}

SoRef<SoNode> kalmyrScene(const std::string& nodes)
{
    return sceneOf("#Kalmyr V1.0 ascii\n" + nodes);
}

SoRef<SoNode> vrmlScene(const std::string& nodes)
{
    return sceneOf("#VRML V2.0 utf8\n" + nodes);
}

u3d::File written(const SoRef<SoNode>& scene, bool compressed = false)
{
    SoToU3DAction action;
    action.setCompression(compressed);
    std::string bytes;
    if (!scene || !action.writeToMemory(scene.get(), bytes)) {
        ADD_FAILURE() << "not written";
        return {};
    }
    return u3d::read(bytes);
}

/// Triangles, lines and points with the box of all, in the world.
struct Content {
    std::size_t triangles = 0, lines = 0, points = 0;
    SbBox3f box;

    void add(const SbVec3f& p) { box.extendBy(p); }
};

Content contentOf(SoNode* scene)
{
    Content content;
    SoCallbackAction walk;
    const auto add = [&](SoCallbackAction* action, const SoPrimitiveVertex& vertex) {
        content.add(action->getModelMatrix().point(vertex.point));
    };
    walk.addTriangleCallback(SoShape::getClassTypeId(),
                             [&](auto* action, auto*, auto& a, auto& b, auto& c) {
                                 ++content.triangles;
                                 for (const auto* vertex : {&a, &b, &c})
                                     add(action, *vertex);
                             });
    walk.addLineCallback(SoShape::getClassTypeId(), [&](auto* action, auto*, auto& a, auto& b) {
        ++content.lines;
        add(action, a);
        add(action, b);
    });
    walk.addPointCallback(SoShape::getClassTypeId(), [&](auto* action, auto*, auto& a) {
        ++content.points;
        add(action, a);
    });
    walk.apply(scene);
    return content;
}

SbVec3f toVec(const u3d::Vec3& p)
{
    return SbVec3f(static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2]));
}

Content contentOf(const u3d::File& file)
{
    Content content;
    for (const u3d::Node& node : file.nodes) {
        if (node.kind != u3d::Node::MODEL)
            continue;
        const u3d::Matrix matrix = file.toWorld(node);
        const u3d::Generator& generator = file.generators.at(node.resource);
        const auto add = [&](std::uint32_t i) {
            content.add(toVec(u3d::File::transformed(matrix, generator.positions[i])));
        };
        content.triangles += generator.faces.size();
        for (const u3d::Face& face : generator.faces) {
            for (const u3d::Corner& corner : face.corners)
                add(corner.position);
        }
        const bool isLines = generator.kind == u3d::Generator::LINES;
        (isLines ? content.lines : content.points) += generator.wires.size();
        for (const u3d::Wire& wire : generator.wires) {
            add(wire.end);
            add(isLines ? wire.other : wire.end);
        }
    }
    return content;
}

void expectSame(const Content& actual, const Content& expected)
{
    EXPECT_EQ(actual.triangles, expected.triangles);
    EXPECT_EQ(actual.lines, expected.lines);
    EXPECT_EQ(actual.points, expected.points);
    const float tolerance = 1e-5f * expected.box.getSize().length();
    EXPECT_LT((actual.box.getMin() - expected.box.getMin()).length(), tolerance);
    EXPECT_LT((actual.box.getMax() - expected.box.getMax()).length(), tolerance);
}

std::set<std::string> namesOf(const u3d::File& file, u3d::Node::Kind kind)
{
    std::set<std::string> names;
    for (const u3d::Node& node : file.nodes) {
        if (node.kind == kind)
            names.insert(node.name);
    }
    return names;
}

/// The origin of a node's space in the world, and the direction of its -z axis.
SbVec3f placeOf(const u3d::File& file, const std::string& name)
{
    return toVec(u3d::File::transformed(file.toWorld(*file.find(name)), {0, 0, 0}));
}

SbVec3f directionOf(const u3d::File& file, const std::string& name)
{
    return toVec(u3d::File::transformed(file.toWorld(*file.find(name)), {0, 0, -1}))
           - placeOf(file, name);
}

const u3d::Material& materialOf(const u3d::File& file, const u3d::Node& model, std::size_t i = 0)
{
    return file.materials.at(file.shaders.at(model.shaders[i][0]).material);
}

SbImage imageOf(const u3d::Texture& texture)
{
    SbImage image;
    const auto* bytes = reinterpret_cast<const unsigned char*>(texture.image.data());
    EXPECT_TRUE(SoImageFile::readMemory({bytes, texture.image.size()}, image));
    return image;
}

std::string fileText(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class U3DFile : public testing::Test, protected support::TempFolder {
protected:
    void SetUp() override { SoDB::init(); }
};

class U3DSample : public testing::TestWithParam<std::string> {};

fs::path scenesDir()
{
    return fs::path(MIRABO_SOURCE_DIR) / "examples" / "scenes";
}

std::vector<std::string> sampleNames()
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(scenesDir())) {
        const std::string kind = entry.path().extension().string();
        if (kind == ".ky" || kind == ".wrl" || kind == ".gz")
            names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

// ---- what stands where

TEST_P(U3DSample, HasAllPrimitivesAtTheirPlaces)
{
    SoDB::init();
    SoInput in;
    ASSERT_TRUE(in.openFile(SbString((scenesDir() / GetParam()).string())));
    const SoRef<SoNode> scene = readAll(in);
    ASSERT_TRUE(scene);
    const Content expected = contentOf(scene.get());
    ASSERT_GT(expected.triangles, 0u);
    for (const bool compressed : {false, true})
        expectSame(contentOf(written(scene, compressed)), expected);
}

INSTANTIATE_TEST_SUITE_P(Scenes, U3DSample, testing::ValuesIn(sampleNames()), [](const auto& info) {
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
});

TEST(U3DHierarchy, GroupsCarryTransformationsAndGeometryIsShared)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        DEF Car Separator {
            Translation { translation 10 0 0 }
            DEF Wheel Separator {
                Transform { rotation 0 0 1 1.570796 scaleFactor 2 1 1 }
                Cylinder { }
            }
            Separator { Translation { translation 0 5 0 } USE Wheel }
            DEF Empty Separator { Material { } }
            Cylinder { radius 3 }
        })");
    const u3d::File file = written(scene);
    EXPECT_EQ(file.count(u3d::Node::MODEL), 3);
    EXPECT_EQ(file.generators.size(), 2u);
    EXPECT_FALSE(file.find("Empty")) << "nothing is in it";
    const u3d::Node* first = file.find("Cylinder 1");
    const u3d::Node* second = file.find("Cylinder 2");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->parents[0].name, "Wheel");
    EXPECT_EQ(second->parents[0].name, "Wheel 2");
    EXPECT_EQ(file.find("Wheel")->parents[0].name, "Car");
    EXPECT_EQ(first->resource, second->resource);
    EXPECT_EQ(placeOf(file, "Car"), SbVec3f(10, 0, 0));
    EXPECT_LT((placeOf(file, "Cylinder 2") - SbVec3f(10, 5, 0)).length(), 1e-5f);
    // The wheel's own turn and scale are its node's; the shape stands still in it.
    const u3d::Matrix& turn = file.find("Wheel")->parents[0].matrix;
    EXPECT_NEAR(turn[1], 2, 1e-5f) << "the x axis points along y, twice as long";
    EXPECT_NEAR(turn[4], -1, 1e-5f);
    const u3d::Matrix& still = first->parents[0].matrix;
    EXPECT_EQ(still[0], 1);
    EXPECT_EQ(still[12], 0);
    expectSame(contentOf(file), contentOf(scene.get()));
}

TEST(U3DHierarchy, PlacesWhatStandsInFlatOrMirroredSpaces)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        Separator {
            Scale { scaleFactor 1 0 1 }
            PerspectiveCamera { } OrthographicCamera { nearDistance 1e7 farDistance 1e7 }
            DirectionalLight { direction 0 1 0 } SpotLight { direction 0 1 0 }
            Cube { }
            Separator { Translation { translation 3 4 5 } Cube { } }
            ResetTransform { }
            Translation { translation 0 7 0 }
            Sphere { }
        }
        Separator { Scale { scaleFactor -1 1 1 } Translation { translation 9 0 0 } Cube { } }
        Separator { Scale { scaleFactor 0 0 0 } PerspectiveCamera { } SpotLight { } })");
    const u3d::File file = written(scene);
    expectSame(contentOf(file), contentOf(scene.get()));
    EXPECT_EQ(file.find("Sphere 1")->visibility, 1u) << "solid";
    EXPECT_EQ(file.find("Cube 3")->visibility, 3u) << "mirrored: its back faces are in front";
}

TEST(U3DHierarchy, KeepsNamesReadableAndUnique)
{
    const SoRef<SoNode> scene = kalmyrScene("Separator { DEF Grün_色 Cube { } DEF Cube_1 Cube { "
                                            "height 3 } Cube { width 3 } Cone { } }");
    // Another node may have the same name, one may have that of a number, one may be no UTF-8.
    auto* group = static_cast<SoSeparator*>(scene.get());
    for (const char* name : {"Grün_色", "Caf\xe9"}) {
        auto* cube = new SoCube;
        cube->depth = 7;
        cube->setName(name);
        group->addChild(cube);
    }
    const std::string longName(3000, 'x');
    auto* last = new SoCube;
    last->setName(longName.c_str());
    group->addChild(last);
    const u3d::File file = written(scene);
    const std::set<std::string> names = namesOf(file, u3d::Node::MODEL);
    EXPECT_EQ(names.size(), 7u);
    for (const char* name : {"Grün_色", "Grün_色 2", "Café", "Cube_1", "Cube 1", "Cone 1"})
        EXPECT_EQ(names.count(name), 1u) << name;
}

TEST(U3DHierarchy, WritesGraphsOfAnyDepth)
{
    SoDB::init();
    constexpr int kLevels = 100'000;
    const SoRef<SoSeparator> root(new SoSeparator);
    SoSeparator* last = root.get();
    for (int i = 0; i < kLevels; ++i) {
        auto* next = new SoSeparator;
        auto* step = new SoTranslation;
        step->translation = SbVec3f(0.001f, 0, 0);
        last->addChild(step);
        last->addChild(next);
        last = next;
    }
    last->addChild(new SoCube);
    const u3d::File file = written(root);
    EXPECT_EQ(file.count(u3d::Node::MODEL), 1);
    EXPECT_LE(file.count(u3d::Node::GROUP), 1000);
    const Content expected = contentOf(root.get());
    EXPECT_LT((contentOf(file).box.getMax() - expected.box.getMax()).length(), 1e-3f);
}

TEST(U3DHierarchy, ShowsWhatTheTraversalShows)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        Switch { whichChild 1 Cone { } Cube { } }
        Switch { whichChild -1 Cone { } }
        Separator { DrawStyle { style INVISIBLE } Cone { } }
        LOD { Sphere { } Cone { } })");
    EXPECT_EQ(namesOf(written(scene), u3d::Node::MODEL),
              (std::set<std::string>{"Cube 1", "Sphere 1"}));
}

TEST(U3DHierarchy, FollowsAPath)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        Separator { Translation { translation 4 0 0 } Cube { } Sphere { } })");
    support::TempFolder folder;
    const SoRef<SoPath> path(new SoPath(scene.get()));
    path->append(static_cast<SoSeparator*>(scene.get())->getChild(2), 2);
    SoToU3DAction action;
    const std::string name = folder.path("path.u3d");
    ASSERT_TRUE(action.openFile(name.c_str()));
    action.apply(path.get());
    ASSERT_TRUE(action.closeFile());
    const u3d::File file = u3d::read(fileText(name));
    EXPECT_EQ(namesOf(file, u3d::Node::MODEL), std::set<std::string>{"Sphere 1"});
    EXPECT_EQ(placeOf(file, "Sphere 1"), SbVec3f(4, 0, 0));
}

/// Scenes of all three languages, with shapes of all kinds.
TEST(U3DHierarchy, TakesShapesOfAllLanguages)
{
    const SoRef<SoNode> scenes[] = {
        sceneOf("#VRML V1.0 ascii\nSeparator { Material { diffuseColor 1 0 0 } AsciiText { string "
                "\"Text\" } Cone { parts SIDES } Coordinate3 { point [ 0 0 0, 1 0 0, 5 1 0 ] } "
                "IndexedLineSet { coordIndex [ 0, 1, 2, -1, 2, 0 ] } PointSet { numPoints 2 } }"),
        kalmyrScene(
            "ShapeKit { } SeparatorKit { } Coordinate3 { point [ 0 0 0, 1 0 0, 1 1 0, 0 1 0 "
            "] } QuadMesh { verticesPerRow 2 verticesPerColumn 2 } TriangleStripSet { "
            "numVertices 4 } FaceSet { numVertices 4 }"),
        vrmlScene(R"(
            PROTO Post [ field SFFloat size 1 ] {
                Transform { translation 3 0 0 children Shape { geometry Box { } } } }
            Post { } Post { }
            Shape { geometry Text { string [ "Two", "Lines" ] } }
            Shape { geometry ElevationGrid { xDimension 2 zDimension 2 height [ 0 1 0 1 ] } }
            Shape { geometry Extrusion { spine [ 0 0 0, 0 2 0 ] } }
            Shape { geometry IndexedLineSet { coord Coordinate { point [ 0 0 0, 0 9 0 ] }
                    coordIndex [ 0 1 ] color Color { color [ 1 0 0, 0 1 0 ] } } }
            Shape { geometry PointSet { coord Coordinate { point [ 0 0 0, 0 0 9 ] } } })")};
    for (const SoRef<SoNode>& scene : scenes) {
        ASSERT_TRUE(scene);
        const Content expected = contentOf(scene.get());
        ASSERT_GT(expected.triangles, 0u);
        expectSame(contentOf(written(scene)), expected);
    }
}

// ---- looks

TEST(U3DLooks, SharesEqualMaterials)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        Separator { DEF Red Material { diffuseColor 1 0 0 specularColor 0.5 0.5 0.5
                                       shininess 0.75 transparency 0.25 } Cube { } }
        Separator { Material { diffuseColor 1 0 0 specularColor 0.5 0.5 0.5
                               shininess 0.75 transparency 0.25 } Sphere { } }
        Separator { LightModel { model BASE_COLOR } Material { diffuseColor 0 1 0 } Cone { } })");
    const u3d::File file = written(scene);
    EXPECT_EQ(file.materials.size(), 2u);
    EXPECT_EQ(file.shaders.size(), 2u);
    const u3d::Material& red = file.materials.at("Red");
    EXPECT_EQ(red.diffuse, (std::array<float, 3>{1, 0, 0}));
    EXPECT_EQ(red.specular, (std::array<float, 3>{0.5f, 0.5f, 0.5f}));
    EXPECT_EQ(red.shininess, 0.75f);
    EXPECT_EQ(red.opacity, 0.75f);
    const u3d::Node& cube = *file.find("Cube 1");
    EXPECT_EQ(cube.shaders, file.find("Sphere 1")->shaders);
    const u3d::Material& unlit = materialOf(file, *file.find("Cone 1"));
    EXPECT_EQ(unlit.emissive, (std::array<float, 3>{0, 1, 0})) << "shines whatever the lights";
    EXPECT_EQ(unlit.diffuse, (std::array<float, 3>{0, 0, 0}));
}

TEST(U3DLooks, WritesColorsOfVertices)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        Material { diffuseColor [ 1 0 0, 0 1 0, 0 0 1 ] transparency [ 0, 0, 0.6 ] }
        MaterialBinding { value PER_VERTEX_INDEXED }
        Coordinate3 { point [ 0 0 0, 1 0 0, 1 1 0, 0 1 0 ] }
        IndexedFaceSet { coordIndex [ 0, 1, 2, 3, -1 ] materialIndex [ 0, 1, 2, 0, -1 ] })");
    const u3d::File file = written(scene);
    const u3d::Node& model = *file.find("IndexedFaceSet 1");
    const u3d::Generator& mesh = file.generators.at(model.resource);
    EXPECT_EQ(file.shaders.at(model.shaders[0][0]).attributes & 4u, 4u);
    EXPECT_EQ(mesh.numColors, 3u) << "equal ones are written once";
    ASSERT_EQ(mesh.faces.size(), 2u);
    int blue = 0;
    for (const u3d::Face& face : mesh.faces) {
        for (const u3d::Corner& corner : face.corners) {
            const u3d::Vec3& at = mesh.positions[corner.position];
            const auto& color = mesh.colors[corner.color];
            const bool isCorner = at[0] == 1 && at[1] == 1;
            EXPECT_EQ(color[2] == 1, isCorner);
            blue += isCorner;
            EXPECT_NEAR(color[3], isCorner ? 0.4f : 1.0f, 0.01f);
        }
    }
    EXPECT_GT(blue, 0);
    EXPECT_EQ(materialOf(file, model).opacity, 1);
}

TEST(U3DLooks, EmbedsEachImageOnce)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        DEF Tiles Texture2 { image 3 2 3 0xff0000 0x00ff00 0x0000ff 0x112233 0x445566 0x778899
                             wrapS CLAMP }
        Cube { }
        Separator { Texture2Transform { scaleFactor 4 4 } Cube { } }
        Texture2 { }
        Cube { }
        Texture2 { image 1 1 2 0xff80 } Sphere { })");
    const u3d::File file = written(scene);
    ASSERT_EQ(file.textures.size(), 2u);
    const u3d::Texture& tiles = file.textures.at("Tiles");
    EXPECT_EQ(tiles.width, 3u);
    EXPECT_EQ(tiles.height, 2u);
    EXPECT_EQ(tiles.type, 0x0e);
    EXPECT_EQ(file.textures.at("Texture 1").type, 0x11);
    const auto& layers = file.shaders.at(file.find("Cube 1")->shaders[0][0]).layers;
    ASSERT_EQ(layers.size(), 1u);
    EXPECT_EQ(layers[0].texture, "Tiles");
    EXPECT_EQ(layers[0].repeat, 2) << "upwards only";
    // The cube's texture goes from 0 to 1, four times as far where it is scaled.
    const auto reachOf = [&](const char* name) {
        float reach = 0;
        for (const auto& t : file.generators.at(file.find(name)->resource).texCoords)
            reach = std::max(reach, std::abs(t[0]));
        return reach;
    };
    EXPECT_EQ(reachOf("Cube 1"), 1);
    EXPECT_EQ(reachOf("Cube 2"), 4);
    EXPECT_EQ(file.generators.at(file.find("Cube 3")->resource).numTexCoords, 0u);
    EXPECT_TRUE(file.shaders.at(file.find("Cube 3")->shaders[0][0]).layers.empty());
}

TEST(U3DLooks, KeepThePixelsOfImages)
{
    const char* images[] = {"2 3 1 0 0x20 0x40 0x60 0x80 0xff", "1 2 2 0xff40 0x2010",
                            "2 1 3 0xff8000 0x0080ff", "3 1 4 0x11223344 0x55667788 0x99aabbcc"};
    for (const char* image : images) {
        const SoRef<SoNode> scene =
            kalmyrScene("DEF Paint Texture2 { image " + std::string(image) + " } Cube { }");
        const u3d::File file = written(scene);
        auto* texture =
            static_cast<SoTexture2*>(static_cast<SoSeparator*>(scene.get())->getChild(0));
        EXPECT_EQ(imageOf(file.textures.at("Paint")), texture->getPicture()) << image;
    }
}

TEST(U3DLooks, BringAllKindsOfTexturingToMultiplication)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        Material { diffuseColor 1 0 0 transparency 0.5 }
        Separator { Texture2 { image 1 1 3 0x0000ff model REPLACE } DEF Replaced Cube { } }
        Separator { Texture2 { image 1 1 3 0x0000ff model DECAL } DEF Covered Cube { } }
        Separator { Texture2 { image 1 1 4 0x0000ff80 model DECAL } DEF Stained Cube { } }
        Separator { Texture2 { image 1 1 1 0x80 model BLEND blendColor 0 1 0 } DEF Blended Cube { } })");
    const u3d::File file = written(scene);
    const auto seen = [&](const char* name) {
        const u3d::Shader& shader = file.shaders.at(file.find(name)->shaders[0][0]);
        const u3d::Material& material = file.materials.at(shader.material);
        const SbImage image = imageOf(file.textures.at(shader.layers[0].texture));
        std::string text = material.emissive[0] > 0 ? "shines" : "lit";
        for (int i = 0; i < image.getComponents(); ++i)
            text += ' ' + std::to_string(image.getPixel(0, 0)[i]);
        return text + ' ' + std::to_string(material.opacity).substr(0, 3);
    };
    EXPECT_EQ(seen("Replaced"), "shines 0 0 255 1.0");
    EXPECT_EQ(seen("Covered"), "shines 0 0 255 0.5");
    EXPECT_EQ(seen("Stained"), "lit 127 0 128 0.5");
    EXPECT_EQ(seen("Blended"), "lit 127 128 0 0.5");
}

// ---- lights and views

TEST(U3DLights, ShineWhereTheyStandInTheScene)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        Separator {
            Transform { translation 1 2 3 rotation 0 1 0 1.570796 scaleFactor 2 2 2 }
            DEF Sun DirectionalLight { direction 0 0 -1 color 1 0.5 0 intensity 0.5 }
            DEF Lamp PointLight { location 1 0 0 }
            DEF Torch SpotLight { location 0 0 0 direction 1 0 0 cutOffAngle 0.523599
                                  dropOffRate 0.5 }
            PointLight { on FALSE }
            Cube { }
        })");
    const u3d::File file = written(scene);
    EXPECT_EQ(file.count(u3d::Node::LIGHT), 3);
    EXPECT_LT((directionOf(file, "Sun") - SbVec3f(-1, 0, 0)).length(), 1e-5f) << "not scaled";
    EXPECT_LT((placeOf(file, "Lamp") - SbVec3f(1, 2, 1)).length(), 1e-5f);
    EXPECT_LT((placeOf(file, "Torch") - SbVec3f(1, 2, 3)).length(), 1e-5f);
    EXPECT_LT((directionOf(file, "Torch") - SbVec3f(0, 0, -1)).length(), 1e-5f);
    const u3d::Light& sun = file.lights.at(file.find("Sun")->resource);
    EXPECT_EQ(sun.type, 1);
    EXPECT_EQ(sun.color[1], 0.5f);
    EXPECT_EQ(sun.intensity, 0.5f);
    EXPECT_EQ(file.lights.at(file.find("Lamp")->resource).type, 2);
    const u3d::Light& torch = file.lights.at(file.find("Torch")->resource);
    EXPECT_EQ(torch.type, 3);
    EXPECT_NEAR(torch.angle, 60, 1e-3f);
    EXPECT_EQ(torch.attributes & 4u, 4u);
}

TEST(U3DViews, LookWhereTheCamerasLook)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        Separator {
            Transform { translation 0 0 5 rotation 0 1 0 1.570796 }
            DEF Front PerspectiveCamera { position 1 0 0 heightAngle 0.5235988
                                          nearDistance 0.5 farDistance 20 aspectRatio 2 }
            DEF Plan OrthographicCamera { height 7 nearDistance 1 farDistance 9 }
        }
        Cube { })");
    const u3d::File file = written(scene);
    const u3d::Node& front = *file.find("Front");
    EXPECT_LT((placeOf(file, "Front") - SbVec3f(0, 0, 4)).length(), 1e-5f);
    EXPECT_LT((directionOf(file, "Front") - SbVec3f(-1, 0, 0)).length(), 1e-5f);
    EXPECT_EQ(front.attributes, 0u);
    EXPECT_NEAR(front.extent, 30, 1e-3f);
    EXPECT_NEAR(front.nearDistance, 0.5f, 1e-5f);
    EXPECT_NEAR(front.farDistance, 20, 1e-4f);
    const u3d::Node& plan = *file.find("Plan");
    EXPECT_EQ(plan.attributes, 2u);
    EXPECT_NEAR(plan.extent, 7, 1e-5f);
}

TEST(U3DViews, ReadViewpointsAndLightsOfVrml)
{
    const SoRef<SoNode> scene = vrmlScene(R"(
        DEF Entrance Viewpoint { position 0 0 10 fieldOfView 0.785398 }
        Transform { translation 0 3 0 children [
            DEF Lamp PointLight { location 1 0 0 radius 5 attenuation 1 0.5 0 }
            DEF Door Shape { appearance Appearance { material Material { diffuseColor 0 0 1 } }
                             geometry Box { size 2 2 2 } } ] })");
    SoToU3DAction action;
    std::string bytes;
    ASSERT_TRUE(action.writeToMemory(scene.get(), bytes));
    const u3d::File file = u3d::read(bytes);
    EXPECT_EQ(action.getViewNames(), std::vector<std::string>{"Entrance"});
    const u3d::Node& view = *file.find("Entrance");
    EXPECT_EQ(placeOf(file, "Entrance"), SbVec3f(0, 0, 10));
    EXPECT_NEAR(view.extent, 45, 1e-3f);
    EXPECT_GT(view.farDistance, 11) << "the far corners of the box are in view";
    EXPECT_EQ(placeOf(file, "Lamp"), SbVec3f(1, 3, 0));
    EXPECT_EQ(file.lights.at("Lamp").attenuation, (std::array<float, 3>{1, 0.5f, 0}));
    const u3d::Node* door = file.find("Door");
    ASSERT_TRUE(door);
    EXPECT_EQ(file.find(door->parents[0].name)->name, "Transform 1");
    EXPECT_EQ(materialOf(file, *door).diffuse, (std::array<float, 3>{0, 0, 1}));
}

// ---- lines and points

TEST(U3DWires, WriteLinesAndPointsInTheirColors)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        Material { diffuseColor [ 1 0 0, 0 0 1 ] }
        Coordinate3 { point [ 0 0 0, 1.5 0.25 -3, 1 1 1, 1000 0 0.001 ] }
        Separator { MaterialBinding { value PER_FACE }
                    DEF Way LineSet { numVertices [ 2, 2 ] } }
        Separator { Material { diffuseColor 0 1 0 } DEF Dots PointSet { } })");
    const u3d::File file = written(scene);
    expectSame(contentOf(file), contentOf(scene.get()));
    const u3d::Node& dots = *file.find("Dots");
    EXPECT_EQ(file.generators.at(dots.resource).kind, u3d::Generator::POINTS);
    EXPECT_EQ(materialOf(file, dots).emissive, (std::array<float, 3>{0, 1, 0}));
    std::set<std::string> places;
    for (const u3d::Vec3& p : file.generators.at(dots.resource).positions) {
        std::ostringstream text;
        text << p[0] << ' ' << p[1] << ' ' << std::round(p[2] * 1e4) / 1e4;
        places.insert(text.str());
    }
    EXPECT_EQ(places, (std::set<std::string>{"0 0 0", "1.5 0.25 -3", "1 1 1", "1000 0 0.001"}));
}

TEST(U3DWires, DrawEdgesAndVerticesOfFaces)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        Coordinate3 { point [ 0 0 0, 1 0 0, 1 1 0, 0 1 0 ] }
        Separator { DrawStyle { style LINES } DEF Frame IndexedFaceSet { coordIndex [ 0, 1, 2, 3 ] } }
        Separator { DrawStyle { style POINTS } DEF Corners IndexedFaceSet { coordIndex [ 0, 1, 2, 3 ] } })");
    const u3d::File file = written(scene);
    const u3d::Generator& frame = file.generators.at(file.find("Frame")->resource);
    EXPECT_EQ(frame.kind, u3d::Generator::LINES);
    EXPECT_EQ(frame.wires.size(), 4u) << "no line along the diagonal";
    const u3d::Generator& corners = file.generators.at(file.find("Corners")->resource);
    EXPECT_EQ(corners.kind, u3d::Generator::POINTS);
    EXPECT_EQ(corners.wires.size(), 4u);
}

TEST(U3DWires, KeepManyPointsInPlaceAndTheirColorsFew)
{
    SoDB::init();
    constexpr int kPoints = 40'000;
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* material = new SoMaterial;
    std::vector<SbColor> colors;
    std::vector<SbVec3f> points;
    for (int i = 0; i < kPoints; ++i) {
        const float at = static_cast<float>(i) / kPoints;
        colors.emplace_back(at, 1 - at, std::fmod(at * 50, 1.0f));
        points.emplace_back(100 + 10 * std::sin(50 * at), 10 * std::cos(50 * at), at - 5);
    }
    material->diffuseColor.setValues(0, colors);
    root->addChild(material);
    auto* binding = new SoMaterialBinding;
    binding->value = SoMaterialBinding::PER_VERTEX;
    root->addChild(binding);
    auto* coordinates = new SoCoordinate3;
    coordinates->point.setValues(0, points);
    root->addChild(coordinates);
    root->addChild(new SoPointSet);
    for (const bool compressed : {false, true}) {
        const u3d::File file = written(root, compressed);
        EXPECT_LT(file.materials.size(), 3000u);
        std::size_t number = 0;
        double worst = 0;
        double worstColor = 0;
        for (const u3d::Node& node : file.nodes) {
            if (node.kind != u3d::Node::MODEL)
                continue;
            const u3d::Generator& set = file.generators.at(node.resource);
            EXPECT_LE(set.shadings.size(), 256u);
            for (const u3d::Wire& wire : set.wires) {
                const SbVec3f place = toVec(set.positions[wire.end]);
                worst = std::max<double>(worst, (place - points[number]).length());
                const auto& color = materialOf(file, node, wire.shading).emissive;
                for (int i = 0; i < 3; ++i)
                    worstColor =
                        std::max<double>(worstColor, std::abs(color[static_cast<std::size_t>(i)]
                                                              - colors[number][i]));
                ++number;
            }
        }
        EXPECT_EQ(number, points.size());
        EXPECT_LT(worst, 3e-5) << "as exact as floats of that size";
        EXPECT_LT(worstColor, 0.26);
    }
}

// ---- compression

TEST(U3DCompression, HoldsTheSameInLess)
{
    SoDB::init();
    // One of the arrays has the length about which readers of compressed files differ.
    for (const int size : {127, 16'383}) {
        const SoRef<SoSeparator> root(new SoSeparator);
        auto* coordinates = new SoCoordinate3;
        auto* faces = new SoIndexedFaceSet;
        std::vector<SbVec3f> points;
        std::vector<std::int32_t> indices;
        for (int i = 0; i < size; ++i) {
            points.emplace_back(static_cast<float>(i), static_cast<float>(i % 2), 0.1f * (i % 3));
            if (i >= 2)
                indices.insert(indices.end(), {i - 2 + i % 2, i - 1 - i % 2, i, -1});
        }
        coordinates->point.setValues(0, points);
        faces->coordIndex.setValues(0, indices);
        auto* hints = new SoShapeHints;
        hints->creaseAngle = 3;
        root->addChild(hints);
        root->addChild(coordinates);
        root->addChild(faces);
        SoToU3DAction action;
        std::string plain;
        std::string packed;
        ASSERT_TRUE(action.writeToMemory(root.get(), plain));
        action.setCompression(true);
        ASSERT_TRUE(action.writeToMemory(root.get(), packed));
        const u3d::File a = u3d::read(plain);
        const u3d::File b = u3d::read(packed);
        EXPECT_EQ(a.profile, 4u);
        EXPECT_EQ(b.profile, 0u);
        EXPECT_LT(packed.size(), plain.size());
        const u3d::Generator& meshA = a.generators.begin()->second;
        const u3d::Generator& meshB = b.generators.begin()->second;
        ASSERT_EQ(meshA.faces.size(), static_cast<std::size_t>(size - 2));
        ASSERT_EQ(meshA.positions.size(), static_cast<std::size_t>(size));
        ASSERT_EQ(meshB.faces.size(), meshA.faces.size());
        std::size_t different = 0;
        for (std::size_t f = 0; f < meshA.faces.size(); ++f) {
            for (std::size_t c = 0; c < 3; ++c) {
                const u3d::Corner& x = meshA.faces[f].corners[c];
                const u3d::Corner& y = meshB.faces[f].corners[c];
                different += meshA.positions[x.position] != meshB.positions[y.position]
                             || meshA.normals[x.normal] != meshB.normals[y.normal];
            }
        }
        EXPECT_EQ(different, 0u);
    }
}

/// The reader of the tests must find damaged files.
TEST(U3DReader, RefusesFilesThatAreDamaged)
{
    const SoRef<SoNode> scene = kalmyrScene(R"(
        DEF Eye PerspectiveCamera { } PointLight { } Texture2 { image 1 1 3 0x0000ff } Cube { }
        Coordinate3 { point [ 0 0 0, 1 0 0 ] } LineSet { } )");
    for (const bool compressed : {false, true}) {
        SoToU3DAction action;
        action.setCompression(compressed);
        std::string bytes;
        ASSERT_TRUE(action.writeToMemory(scene.get(), bytes));
        for (std::size_t size = 0; size < bytes.size(); size += 7)
            EXPECT_THROW(u3d::read(bytes.substr(0, size)), std::runtime_error) << size;
        // All but numbers that may have any value, and letters of names used once, are checked.
        std::size_t seen = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            std::string damaged = bytes;
            damaged[i] = static_cast<char>(damaged[i] ^ 0x81);
            try {
                u3d::read(damaged);
            } catch (const std::runtime_error&) {
                ++seen;
            }
        }
        EXPECT_GT(seen, bytes.size() * 2 / 5) << "of " << bytes.size();
    }
}

TEST(U3DUnits, AreToldWhenTheyAreKnown)
{
    const SoRef<SoNode> scene = kalmyrScene("Cube { }");
    SoToU3DAction action;
    action.setMetersPerUnit(0.001);
    std::string bytes;
    ASSERT_TRUE(action.writeToMemory(scene.get(), bytes));
    EXPECT_EQ(u3d::read(bytes).metersPerUnit, 0.001);
}

// ---- bad scenes

TEST(U3DBadInput, LeavesOutFacesWithoutAPlace)
{
    SoDB::init();
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* coordinates = new SoCoordinate3;
    const std::vector<SbVec3f> points{{5, 0, 0},    {6, 0, 0},         {6, 1, 0},
                                      {kNan, 0, 0}, {0, kInfinite, 0}, {3e38f, 0, 0}};
    coordinates->point.setValues(0, points);
    auto* faces = new SoIndexedFaceSet;
    const std::vector<std::int32_t> indices{0, 1, 2, -1, 0, 1, 3, -1, 0, 1, 4, -1, 0, 2, 5, -1};
    faces->coordIndex.setValues(0, indices);
    root->addChild(coordinates);
    root->addChild(faces);
    root->addChild(new SoPointSet);
    auto errors = support::expectErrors();
    for (const bool compressed : {false, true}) {
        errors.clear();
        const u3d::File file = written(root, compressed);
        EXPECT_EQ(errors.count(), 1u);
        EXPECT_TRUE(errors.contains("6 faces, lines or points")) << errors.texts()[0];
        EXPECT_EQ(contentOf(file).triangles, 1u);
        EXPECT_EQ(contentOf(file).points, 3u);
        for (const auto& [name, generator] : file.generators) {
            for (const u3d::Vec3& p : generator.positions)
                EXPECT_TRUE(p[0] >= 5 && p[0] <= 6) << "readers measure unused points as well";
        }
    }
    // A space without a place has nothing in it.
    auto* nowhere = new SoMatrixTransform;
    SbMatrix matrix;
    matrix[3][0] = kNan;
    nowhere->matrix = matrix;
    const SoRef<SoSeparator> lost(new SoSeparator);
    lost->addChild(nowhere);
    lost->addChild(new SoCube);
    errors.clear();
    std::string bytes = "old";
    EXPECT_FALSE(SoToU3DAction().writeToMemory(lost.get(), bytes));
    EXPECT_EQ(bytes, "");
    EXPECT_TRUE(errors.contains("there is nothing to write"));
}

TEST_F(U3DFile, StaysAsItWasWhenThereIsNothingToWrite)
{
    const std::string name = path("scene.u3d");
    std::ofstream(name) << "old";
    const SoRef<SoNode> scene =
        kalmyrScene("PerspectiveCamera { } PointLight { } Separator { Material { } }");
    auto errors = support::expectErrors();
    SoToU3DAction action;
    ASSERT_TRUE(action.openFile(name.c_str()));
    action.apply(scene.get());
    EXPECT_FALSE(action.closeFile());
    EXPECT_TRUE(errors.contains("there is nothing to write"));
    EXPECT_EQ(fileText(name), "old");
    // Opened and closed without a scene.
    errors.clear();
    ASSERT_TRUE(action.openFile(name.c_str()));
    EXPECT_FALSE(action.closeFile());
    EXPECT_TRUE(errors.contains("there is nothing to write"));
    EXPECT_FALSE(action.closeFile()) << "no file is open";
    EXPECT_EQ(std::distance(fs::directory_iterator(folder()), {}), 1);
}

TEST_F(U3DFile, HoldsAllScenesOfTheTimeItWasOpen)
{
    const std::string name = path("scene.u3d");
    std::ofstream(name) << "old";
    const SoRef<SoNode> first = kalmyrScene("DEF Box Cube { }");
    const SoRef<SoNode> second = kalmyrScene("Translation { translation 5 0 0 } DEF Box Cube { }");
    SoToU3DAction action;
    ASSERT_TRUE(action.openFile(name.c_str()));
    action.apply(first.get());
    std::string aside;
    ASSERT_TRUE(action.writeToMemory(first.get(), aside));
    action.apply(second.get());
    EXPECT_EQ(fileText(name), "old") << "until it is closed";
    ASSERT_TRUE(action.closeFile());
    const u3d::File file = u3d::read(fileText(name));
    EXPECT_EQ(namesOf(file, u3d::Node::MODEL), (std::set<std::string>{"Box", "Box 2"}));
    EXPECT_EQ(u3d::read(aside).count(u3d::Node::MODEL), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder()), {}), 1);
}

TEST_F(U3DFile, TellsWhyItCannotBeWritten)
{
    const SoRef<SoNode> scene = kalmyrScene("Cube { }");
    SoToU3DAction action;
    auto errors = support::expectErrors();
    const std::string nowhere = path("missing/scene.u3d");
    EXPECT_FALSE(action.openFile(nowhere.c_str()));
    ASSERT_EQ(errors.count(), 1u);
    EXPECT_NE(errors.texts()[0].find("Can not open file " + nowhere), std::string::npos);
    EXPECT_FALSE(fs::exists(path("missing")));
    errors.clear();
    const bool stops = kalmyr::setContractsStop(false);
    action.apply(scene.get());
    kalmyr::setContractsStop(stops);
    EXPECT_TRUE(errors.contains("an open file"));
    if (!fs::exists("/dev/full"))
        GTEST_SKIP() << "no device that is always full";
    errors.clear();
    ASSERT_TRUE(action.openFile("/dev/full"));
    action.apply(scene.get());
    EXPECT_FALSE(action.closeFile());
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_TRUE(errors.contains("/dev/full: cannot be written"));
}

TEST_F(U3DFile, IsNotWrittenWhenItIsStopped)
{
    const std::string name = path("scene.u3d");
    const SoRef<SoNode> scene = kalmyrScene("Complexity { value 1 } Sphere { } Cube { }");
    SoToU3DAction action;
    std::vector<float> shares;
    std::size_t stopAt = std::numeric_limits<std::size_t>::max();
    action.setProgressCallback([&](float share) {
        shares.push_back(share);
        return shares.size() < stopAt;
    });
    const auto write = [&] {
        shares.clear();
        EXPECT_TRUE(action.openFile(name.c_str()));
        action.apply(scene.get());
        return action.closeFile();
    };
    ASSERT_TRUE(write());
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_EQ(shares.back(), 1);
    const std::size_t calls = shares.size();
    ASSERT_GE(calls, 2u);
    fs::remove(name);
    for (stopAt = 1; stopAt <= calls; ++stopAt) {
        EXPECT_FALSE(write());
        EXPECT_TRUE(action.wasStopped());
        EXPECT_EQ(shares.size(), stopAt) << "not asked again";
        EXPECT_TRUE(fs::is_empty(folder()));
    }
    EXPECT_TRUE(write());
    EXPECT_FALSE(action.wasStopped());
}
