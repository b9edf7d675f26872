#include "U3DScenes.h"

using namespace u3dtest;

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
