#include "U3DScenes.h"

using namespace u3dtest;

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
