#include "U3DScenes.h"

using namespace u3dtest;

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
