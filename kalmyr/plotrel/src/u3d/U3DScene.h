#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

/// \file
/// The contents of a U3D file before encoding: nodes that refer to resources by index. Names are
/// valid UTF-8, not empty, and unique among their kind.

namespace kalmyr::detail {

/// Whether a point can be written: no component is infinite, undefined, or so large that readers
/// could not compute with it.
inline bool hasPlace(const SbVec3f& p)
{
    constexpr float kMaxCoordinate = 1e37f;
    return std::abs(p[0]) <= kMaxCoordinate && std::abs(p[1]) <= kMaxCoordinate
           && std::abs(p[2]) <= kMaxCoordinate;
}

/// Triangles of a geometry. Its faces with a corner that has no place are left out when it is
/// written.
struct U3DMesh {
    SoRef<const SoGeometry> geometry;
    std::size_t numFaces = 0; ///< that are written
    bool textured = false;
    SbMatrix textureMatrix;
};

/// Line segments or points, listed by their later end.
struct U3DWire {
    struct Item {
        std::uint32_t first;  ///< of a line, below `last`
        std::uint32_t last;   ///< where a line ends, or the point
        std::uint32_t shader; ///< index of its colour
    };
    bool isPoints = false;
    std::vector<SbVec3f> positions;    ///< all have a place
    std::vector<Item> items;           ///< in ascending order of `last`
    std::vector<std::uint32_t> colors; ///< 0xRRGGBBAA; empty: all have the look's
    /// More positions are not put into one set: compression cannot tell them apart.
    static constexpr std::size_t kMaxPositions = 16'000;
    /// More colours than these are rounded until they fit.
    static constexpr std::size_t kMaxColors = 256;
};

/// The source of models: one of the two is used.
struct U3DGenerator {
    std::string name;
    U3DMesh mesh;
    U3DWire wire;
    SbBox3f box; ///< of what is written
    bool isMesh() const { return mesh.geometry.get() != nullptr; }
};

struct U3DTexture {
    std::string name;
    SbImage image;
    SbImage source; ///< what the image was made from: it keeps its place in memory
    bool hasAlpha = false;
};

struct U3DMaterial {
    std::string name;
    SbColor ambient;
    SbColor diffuse;
    SbColor specular;
    SbColor emissive;
    float shininess = 0;
    float opacity = 1;
};

struct U3DShader {
    std::string name;
    int material = 0;
    int texture = -1; ///< none
    bool repeatS = true;
    bool repeatT = true;
    bool lit = true;
    bool vertexColors = false;
};

struct U3DLight {
    enum Kind : std::uint8_t { DIRECTIONAL = 1, POINT = 2, SPOT = 3 };
    Kind kind = DIRECTIONAL;
    SbColor color;
    float intensity = 1;
    SbVec3f attenuation{1, 0, 0}; ///< constant, linear, quadratic
    float spotAngle = 90;         ///< of the whole cone, degrees
    bool fades = false;           ///< towards the edge of the cone
};

struct U3DView {
    bool perspective = true;
    float extent = 45; ///< vertical angle in degrees, or height
    float aspect = 1;
    float nearDistance = 0; ///< 0 0: from the box of the scene
    float farDistance = 0;
    SbVec3f position; ///< in the world
};

struct U3DNode {
    enum Kind { GROUP, MODEL, LIGHT, VIEW };
    Kind kind = GROUP;
    std::string name;
    int parent = -1; ///< the world
    SbMatrix matrix; ///< to the parent
    /// Generator, light or view. Resources of lights and views bear the names of their nodes.
    int resource = -1;
    bool bothSides = true;    ///< of a model: back faces are seen
    std::vector<int> shaders; ///< of a model, one for each shader index of its generator
};

struct U3DScene {
    std::vector<U3DNode> nodes; ///< parents before their children
    std::vector<U3DGenerator> generators;
    std::vector<U3DTexture> textures;
    std::vector<U3DMaterial> materials;
    std::vector<U3DShader> shaders;
    std::vector<U3DLight> lights;
    std::vector<U3DView> views;
    SbBox3f box; ///< of all models, in the world
    std::size_t numModels = 0;
    std::size_t numLeftOut = 0; ///< faces, lines and points without a place
};

} // namespace kalmyr::detail
