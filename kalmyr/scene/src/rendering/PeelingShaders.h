#pragma once

#include "rendering/Shaders.h"

#include <string>

namespace kalmyr::detail {

/// Texture units of what the previous layer left at each pixel and of the depths that hide.
constexpr int kPeeledUnit = 10;
constexpr int kCoverUnit = 12;

/// What the fragment stage of a program with SHADER_PEEL begins with: peel(), to be called first,
/// ends for surfaces that are not of this layer; peeled() takes the colour.
std::string peelingText();

/// Copies a texture, each sample by itself; uniform `origin`: where its lower left is to lie.
ShaderSource layerShaderSource(bool hasSamples);

} // namespace kalmyr::detail
