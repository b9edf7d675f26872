#include "U3DLooks.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/elements/SoTextureElement.h>

#include <algorithm>
#include <type_traits>
#include <vector>

namespace kalmyr::detail {

namespace {

constexpr SbColor kWhite(1, 1, 1);

/// Clamps to 0..1; not-a-number becomes 0.
float unit(float value)
{
    return value > 0 ? std::min(value, 1.0f) : 0.0f;
}

SbColor unit(const SbColor& color)
{
    return {unit(color[0]), unit(color[1]), unit(color[2])};
}

/// The bytes of some values one after the other, to look things up by.
template <class... Values>
std::string keyOf(const Values&... values)
{
    static_assert((std::is_trivially_copyable_v<Values> && ...));
    std::string key;
    (key.append(reinterpret_cast<const char*>(&values), sizeof(values)), ...);
    return key;
}

/// The name of the node that set an element, where it has one.
std::string nameOf(U3DNames& names, const SoNode* setter, const char* kind)
{
    const SbName own = setter ? setter->getName() : SbName();
    return own ? names.makeUnique(own.view()) : names.makeNumbered(kind);
}

/// The colour may be one of the material's own.
void makeUnlit(U3DMaterial& material, SbColor color)
{
    material.ambient = material.diffuse = material.specular = SbColor();
    material.emissive = color;
    material.shininess = 0;
}

/// Returns the image combined with a surface of that colour by the texture's model.
SbImage paintedImage(const SoTextureValues& texture, const SbColor& color)
{
    const SbImage& from = texture.image;
    const int components = from.getComponents();
    const bool hasAlpha = components % 2 == 0;
    const bool blends = texture.model == SoTextureValues::BLEND;
    const int outComponents = blends && hasAlpha ? 4 : 3;
    std::vector<unsigned char> bytes;
    bytes.reserve(static_cast<std::size_t>(from.getWidth()) * from.getHeight() * outComponents);
    for (int y = 0; y < from.getHeight(); ++y) {
        for (int x = 0; x < from.getWidth(); ++x) {
            const unsigned char* p = from.getPixel(x, y);
            const float alpha = hasAlpha ? p[components - 1] / 255.0f : 1.0f;
            for (int c = 0; c < 3; ++c) {
                const float t = p[components >= 3 ? c : 0] / 255.0f;
                const float seen = blends ? color[c] + (texture.blendColor[c] - color[c]) * t
                                          : color[c] + (t - color[c]) * alpha;
                bytes.push_back(static_cast<unsigned char>(unit(seen) * 255 + 0.5f));
            }
            if (outComponents == 4)
                bytes.push_back(p[components - 1]);
        }
    }
    return SbImage(from.getSize(), outComponents, bytes.data());
}

/// Volumes, cubes and mirrors have no place in the format.
bool isFlat(SoState* state)
{
    const SoLookExtras* extras = SoLookExtrasElement::get(state);
    return !extras || extras->stages.empty()
           || (extras->stages[0].kind == SoTextureStage::FLAT
               && extras->stages[0].coordinates == SoTextureStage::GIVEN);
}

} // namespace

bool U3DLooks::hasTexture(SoState* state, const SoGeometry& geometry)
{
    return !geometry.texCoords.empty() && geometry.texCoords.size() >= geometry.positions.size()
           && !state->get<SoTextureElement>().value().image.isNull() && isFlat(state);
}

int U3DLooks::surfaceShader(SoState* state, const SoGeometry& geometry)
{
    const SoMaterialValues& values = SoMaterialElement::get(state);
    const bool hasColors = !geometry.colors.empty();
    const bool isLit =
        state->get<SoLightModelElement>().value().model != SoLightModelValue::BASE_COLOR
        && !geometry.normals.empty();
    Surface surface;
    U3DMaterial& material = surface.material;
    material.ambient = unit(values.ambient);
    material.diffuse = hasColors ? kWhite : unit(values.getDiffuse());
    material.specular = unit(values.specular);
    material.emissive = unit(values.emissive);
    material.shininess = unit(values.shininess);
    // The colours of the geometry have an opacity of their own.
    material.opacity = hasColors ? 1 : 1 - unit(values.getTransparency());
    surface.shader.vertexColors = hasColors;
    if (!isLit && hasColors) {
        makeUnlit(material, SbColor());
        material.diffuse = kWhite;
        surface.shader.lit = false;
    } else if (!isLit) {
        // A surface that shines by itself looks the same in every reader.
        makeUnlit(material, material.diffuse);
    }
    if (hasTexture(state, geometry))
        applyTexture(state, state->get<SoTextureElement>().value(), surface);
    return addShader(state, surface);
}

/// The format's layers multiply in every reader; what else a texture may do is brought to that.
void U3DLooks::applyTexture(SoState* state, const SoTextureValues& texture, Surface& surface)
{
    U3DShader& shader = surface.shader;
    U3DMaterial& material = surface.material;
    shader.repeatS = texture.wrapS == SoTextureValues::REPEAT;
    shader.repeatT = texture.wrapT == SoTextureValues::REPEAT;
    const bool isSurface = texture.model == SoTextureValues::SURFACE;
    if (isSurface || texture.model == SoTextureValues::MODULATE) {
        shader.texture = addTexture(state, texture, nullptr);
        if (isSurface && texture.hasColors())
            shader.vertexColors = false;
        if (isSurface && texture.hasAlpha())
            material.opacity = 1;
        return;
    }
    // The image is all that is seen, or is painted over the colour before it is lit.
    const bool isOpaqueDecal =
        texture.model == SoTextureValues::DECAL && texture.image.getComponents() % 2 != 0;
    const bool isWhole = isOpaqueDecal || texture.model == SoTextureValues::REPLACE;
    const bool wasLit = shader.lit && material.diffuse != SbColor();
    const SbColor color = unit(SoMaterialElement::get(state).getDiffuse());
    shader.texture = addTexture(state, texture, isWhole ? nullptr : &color);
    if (isWhole || !wasLit)
        makeUnlit(material, kWhite);
    material.diffuse = isWhole || !wasLit ? SbColor() : kWhite;
    if (texture.model == SoTextureValues::REPLACE)
        material.opacity = 1;
    shader.vertexColors = false;
    shader.lit = true;
}

int U3DLooks::wireShader(SoState* state)
{
    const SoMaterialValues& values = SoMaterialElement::get(state);
    Surface surface;
    makeUnlit(surface.material, unit(values.getDiffuse()));
    surface.material.opacity = 1 - unit(values.getTransparency());
    return addShader(state, surface);
}

int U3DLooks::wireShader(SoState* state, std::uint32_t color)
{
    Surface surface;
    float transparency = 0;
    SbColor rgb;
    rgb.setPackedValue(color, transparency);
    makeUnlit(surface.material, rgb);
    surface.material.opacity = 1 - transparency;
    return addShader(state, surface);
}

int U3DLooks::addTexture(SoState* state, const SoTextureValues& texture, const SbColor* paintedOn)
{
    // The pixels stay at their place: the scene holds the image.
    std::string key = keyOf(texture.image.getBytes());
    if (paintedOn)
        key += keyOf(texture.model, texture.blendColor, *paintedOn);
    const auto [at, isNew] =
        m_textures.try_emplace(std::move(key), static_cast<int>(m_scene.textures.size()));
    if (isNew) {
        U3DTexture made;
        made.name = nameOf(m_textureNames, state->get<SoTextureElement>().getNode(), "Texture");
        made.source = texture.image;
        made.image = paintedOn ? paintedImage(texture, *paintedOn) : texture.image;
        made.hasAlpha = made.image.getComponents() % 2 == 0;
        m_scene.textures.push_back(std::move(made));
    }
    return at->second;
}

int U3DLooks::addShader(SoState* state, Surface& surface)
{
    U3DShader& shader = surface.shader;
    shader.material = addMaterial(state, surface.material);
    std::string key = keyOf(shader.material, shader.texture, shader.repeatS, shader.repeatT,
                            shader.lit, shader.vertexColors);
    const auto [at, isNew] =
        m_shaders.try_emplace(std::move(key), static_cast<int>(m_scene.shaders.size()));
    if (isNew) {
        const U3DMaterial& made = m_scene.materials[static_cast<std::size_t>(shader.material)];
        shader.name = m_shaderNames.makeUnique(made.name);
        m_scene.shaders.push_back(shader);
    }
    return at->second;
}

int U3DLooks::addMaterial(SoState* state, U3DMaterial& material)
{
    std::string key = keyOf(material.ambient, material.diffuse, material.specular,
                            material.emissive, material.shininess, material.opacity);
    const auto [at, isNew] =
        m_materials.try_emplace(std::move(key), static_cast<int>(m_scene.materials.size()));
    if (isNew) {
        material.name =
            nameOf(m_materialNames, state->get<SoMaterialElement>().getNode(), "Material");
        m_scene.materials.push_back(material);
    }
    return at->second;
}

} // namespace kalmyr::detail
