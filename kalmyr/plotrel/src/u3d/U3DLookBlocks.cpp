#include "U3DLookBlocks.h"

#include "U3DBlocks.h"
#include "U3DFormat.h"

namespace kalmyr::detail {

void writeShader(U3DBlocks& out, const U3DScene& scene, const U3DShader& shader)
{
    constexpr std::uint32_t kLighting = 1;
    constexpr std::uint32_t kVertexColors = 4;
    constexpr std::uint32_t kAlways = 0x617;
    constexpr std::uint32_t kAlphaBlend = 0x606;
    const std::size_t start = out.begin(SHADER);
    out.text(shader.name);
    out.u32((shader.lit ? kLighting : 0) | (shader.vertexColors ? kVertexColors : 0));
    out.f32(0);
    out.u32(kAlways);
    out.u32(kAlphaBlend);
    out.u32(1); // passes
    const U3DTexture* texture =
        shader.texture < 0 ? nullptr : &scene.textures[static_cast<std::size_t>(shader.texture)];
    out.u32(texture ? 1 : 0);
    out.u32(texture && texture->hasAlpha ? 1 : 0);
    out.text(scene.materials[static_cast<std::size_t>(shader.material)].name);
    if (texture) {
        out.text(texture->name);
        out.f32(1); // intensity
        out.u8(0);  // multiplies
        out.u8(1);  // blends by the constant
        out.f32(1);
        out.u8(0); // by texture coordinates
        out.matrix(SbMatrix::identity());
        out.matrix(SbMatrix::identity());
        out.u8(static_cast<std::uint8_t>((shader.repeatS ? 1 : 0) | (shader.repeatT ? 2 : 0)));
    }
    out.end(start);
}

void writeMaterial(U3DBlocks& out, const U3DMaterial& material)
{
    constexpr std::uint32_t kAll = 0x3f;
    const std::size_t start = out.begin(MATERIAL);
    out.text(material.name);
    out.u32(kAll);
    out.color(material.ambient);
    out.color(material.diffuse);
    out.color(material.specular);
    out.color(material.emissive);
    out.f32(material.shininess);
    out.f32(material.opacity);
    out.end(start);
}

void declareTexture(U3DBlocks& out, const U3DTexture& texture, std::string_view png)
{
    constexpr std::uint8_t kPng = 2;
    // Bits of channels: alpha, blue, green, red, luminance. By number of components.
    constexpr std::uint8_t kChannels[] = {0x10, 0x11, 0x0e, 0x0f};
    const auto channels = kChannels[texture.image.getComponents() - 1];
    const std::size_t start = out.begin(TEXTURE_DECLARATION);
    out.text(texture.name);
    out.u32(static_cast<std::uint32_t>(texture.image.getHeight()));
    out.u32(static_cast<std::uint32_t>(texture.image.getWidth()));
    out.u8(channels);
    out.u32(1); // images
    out.u8(kPng);
    out.u8(channels);
    out.u16(0);
    out.u32(static_cast<std::uint32_t>(png.size()));
    out.end(start);
}

void writeTexture(U3DBlocks& out, const U3DTexture& texture, std::string_view png)
{
    const std::size_t start = out.begin(TEXTURE_CONTINUATION);
    out.text(texture.name);
    out.u32(0); // image
    out.bytes(png);
    out.end(start);
}

} // namespace kalmyr::detail
