#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// \file
/// A reader of U3D files that accepts only what the standard says. Written apart from the writer.

namespace u3d {

using Matrix = std::array<float, 16>; ///< column after column, for column vectors
using Vec3 = std::array<double, 3>;

struct Parent {
    std::string name; ///< empty: the world
    Matrix matrix;
};

struct Node {
    enum Kind { GROUP, MODEL, LIGHT, VIEW };
    Kind kind;
    std::string name;
    std::vector<Parent> parents;
    std::string resource;
    std::uint32_t visibility = 0;
    std::uint32_t attributes = 0; ///< of a view
    float nearDistance = 0;
    float farDistance = 0;
    float extent = 0;
    std::vector<std::vector<std::string>> shaders; ///< by shading id
    std::uint32_t shadingFor = 0;
};

struct Corner {
    std::uint32_t position = 0;
    std::uint32_t normal = 0;
    std::uint32_t color = 0;
    std::uint32_t texCoord = 0;
};

struct Face {
    std::uint32_t shading;
    std::array<Corner, 3> corners;
};

/// A line, or a point, of which `other` does not count.
struct Wire {
    std::uint32_t shading;
    std::uint32_t other;
    std::uint32_t end;
};

struct Shading {
    std::uint32_t attributes;
    std::vector<std::uint32_t> layers;
};

struct Generator {
    enum Kind { MESH, LINES, POINTS };
    Kind kind;
    std::uint32_t attributes = 0;
    std::uint32_t numItems = 0;
    std::uint32_t numPositions = 0, numNormals = 0, numColors = 0, numTexCoords = 0;
    std::vector<Shading> shadings;
    float positionQuantum = 1;
    std::vector<Vec3> positions;
    std::vector<Vec3> normals;
    std::vector<std::array<float, 4>> colors;
    std::vector<std::array<float, 4>> texCoords;
    std::vector<Face> faces;
    std::vector<Wire> wires;
    bool isFilled = false;
};

struct Texture {
    std::uint32_t width, height;
    std::uint8_t type;
    std::uint32_t numBytes;
    std::string image;
};

struct Layer {
    std::string texture;
    std::uint8_t blend;
    std::uint8_t repeat;
};

struct Shader {
    std::uint32_t attributes;
    std::string material;
    std::vector<Layer> layers;
};

struct Material {
    std::array<float, 3> ambient, diffuse, specular, emissive;
    float shininess, opacity;
};

struct Light {
    std::uint32_t attributes;
    std::uint8_t type;
    std::array<float, 4> color;
    std::array<float, 3> attenuation;
    float angle, intensity;
};

struct File {
    std::uint32_t profile = 0;
    double metersPerUnit = 0;
    std::vector<Node> nodes;
    std::map<std::string, std::size_t> nodeIndices;
    std::map<std::string, Generator> generators;
    std::map<std::string, Texture> textures;
    std::map<std::string, Shader> shaders;
    std::map<std::string, Material> materials;
    std::map<std::string, Light> lights;
    std::map<std::string, bool> views;

    const Node* find(const std::string& name) const;
    int count(Node::Kind kind) const;
    /// To the world; of the first parent.
    Matrix toWorld(const Node& node) const;
    static Vec3 transformed(const Matrix& matrix, const Vec3& point);
};

/// Throws std::runtime_error with the offset and what is wrong.
File read(const std::string& bytes);

} // namespace u3d
