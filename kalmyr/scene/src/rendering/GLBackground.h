#pragma once

#include "rendering/FrameBuilder.h"

namespace kalmyr::detail {

class GLDevice;

/// Draws the pictures of a frame's background over what there is; blending and textures are left as
/// they are found, and the program is none afterwards.
void drawBackgroundPictures(GLDevice& device, const Frame& frame);

} // namespace kalmyr::detail
