#pragma once

#include "U3DNames.h"
#include "U3DScene.h"

#include <cstdint>
#include <string>
#include <unordered_map>

class SoState;
struct SoTextureValues;

namespace kalmyr::detail {

/// Makes the shaders, materials and textures of a scene from the state at a shape. Equal ones are
/// made once.
class U3DLooks {
public:
    explicit U3DLooks(U3DScene& scene) : m_scene(scene) {}

    /// For triangles; textured when the geometry has coordinates for it and the state an image.
    int surfaceShader(SoState* state, const SoGeometry& geometry);
    /// For lines and points, which shine by themselves.
    int wireShader(SoState* state);
    /// The same in a colour of the geometry, 0xRRGGBBAA.
    int wireShader(SoState* state, std::uint32_t color);

    static bool hasTexture(SoState* state, const SoGeometry& geometry);

private:
    struct Surface {
        U3DMaterial material;
        U3DShader shader;
    };
    void applyTexture(SoState* state, const SoTextureValues& texture, Surface& surface);
    int addTexture(SoState* state, const SoTextureValues& texture, const SbColor* paintedOn);
    int addShader(SoState* state, Surface& surface);
    int addMaterial(SoState* state, U3DMaterial& material);

    U3DScene& m_scene;
    std::unordered_map<std::string, int> m_textures;
    std::unordered_map<std::string, int> m_materials;
    std::unordered_map<std::string, int> m_shaders;
    U3DNames m_textureNames;
    U3DNames m_materialNames;
    U3DNames m_shaderNames;
};

} // namespace kalmyr::detail
