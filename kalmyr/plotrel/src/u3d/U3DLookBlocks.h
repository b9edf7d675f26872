#pragma once

#include "U3DScene.h"

#include <string_view>

namespace kalmyr::detail {

class U3DBlocks;

void writeShader(U3DBlocks& out, const U3DScene& scene, const U3DShader& shader);
void writeMaterial(U3DBlocks& out, const U3DMaterial& material);
/// The declaration of a texture, and the block of its image, a PNG file.
void declareTexture(U3DBlocks& out, const U3DTexture& texture, std::string_view png);
void writeTexture(U3DBlocks& out, const U3DTexture& texture, std::string_view png);

} // namespace kalmyr::detail
