#pragma once

#include "rendering/FrameBuilder.h"

namespace kalmyr::detail {

class GLDevice;

/// Draws the colours of a frame's background, then its pictures, over the whole viewport; blending
/// and textures are left as they are found, and the program is none afterwards.
void drawBackground(GLDevice& device, const Frame& frame);

} // namespace kalmyr::detail
