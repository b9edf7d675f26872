#pragma once

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

namespace u3dtest {

inline SoRef<SoNode> readAll(SoInput& in)
{
    if (in.isFileVRML2())
        return SoRef<SoNode>(SoDB::readAllVRML(&in));
    return SoRef<SoNode>(SoDB::readAll(&in));
}

inline SoRef<SoNode> sceneOf(const std::string& text)
{
    SoDB::init();
    SoInput in;
    in.setBuffer(text.data(), text.size());
    return readAll(in);
}

inline SoRef<SoNode> kalmyrScene(const std::string& nodes)
{
    return sceneOf("#Kalmyr V1.0 ascii\n" + nodes);
}

inline SoRef<SoNode> vrmlScene(const std::string& nodes)
{
    return sceneOf("#VRML V2.0 utf8\n" + nodes);
}

inline u3d::File written(const SoRef<SoNode>& scene, bool compressed = false)
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

inline Content contentOf(SoNode* scene)
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

inline SbVec3f toVec(const u3d::Vec3& p)
{
    return SbVec3f(static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2]));
}

inline Content contentOf(const u3d::File& file)
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

inline void expectSame(const Content& actual, const Content& expected)
{
    EXPECT_EQ(actual.triangles, expected.triangles);
    EXPECT_EQ(actual.lines, expected.lines);
    EXPECT_EQ(actual.points, expected.points);
    const float tolerance = 1e-5f * expected.box.getSize().length();
    EXPECT_LT((actual.box.getMin() - expected.box.getMin()).length(), tolerance);
    EXPECT_LT((actual.box.getMax() - expected.box.getMax()).length(), tolerance);
}

inline std::set<std::string> namesOf(const u3d::File& file, u3d::Node::Kind kind)
{
    std::set<std::string> names;
    for (const u3d::Node& node : file.nodes) {
        if (node.kind == kind)
            names.insert(node.name);
    }
    return names;
}

/// The origin of a node's space in the world, and the direction of its -z axis.
inline SbVec3f placeOf(const u3d::File& file, const std::string& name)
{
    return toVec(u3d::File::transformed(file.toWorld(*file.find(name)), {0, 0, 0}));
}

inline SbVec3f directionOf(const u3d::File& file, const std::string& name)
{
    return toVec(u3d::File::transformed(file.toWorld(*file.find(name)), {0, 0, -1}))
           - placeOf(file, name);
}

inline const u3d::Material& materialOf(const u3d::File& file, const u3d::Node& model,
                                       std::size_t i = 0)
{
    return file.materials.at(file.shaders.at(model.shaders[i][0]).material);
}

inline SbImage imageOf(const u3d::Texture& texture)
{
    SbImage image;
    const auto* bytes = reinterpret_cast<const unsigned char*>(texture.image.data());
    EXPECT_TRUE(SoImageFile::readMemory({bytes, texture.image.size()}, image));
    return image;
}

inline std::string fileText(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class U3DFile : public testing::Test, protected support::TempFolder {
protected:
    void SetUp() override { SoDB::init(); }
};

class U3DSample : public testing::TestWithParam<std::string> {};

inline fs::path scenesDir()
{
    return fs::path(MIRABO_SOURCE_DIR) / "examples" / "scenes";
}

/// All but those that need optional modules, or show things of a size in pixels, which is another
/// one in each picture.
inline std::vector<std::string> sampleNames()
{
    const std::set<std::string> left{"handles.ky", "stilllife.ky"};
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(scenesDir())) {
        const std::string kind = entry.path().extension().string();
        const std::string name = entry.path().filename().string();
        if ((kind == ".ky" || kind == ".wrl" || kind == ".gz") && left.count(name) == 0)
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace u3dtest
