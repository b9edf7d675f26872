#pragma once

#include "rendering/GLDevice.h"
#include "rendering/PixelBox.h"
#include "rendering/RenderList.h"

#include <vector>

namespace kalmyr::detail {

/// Moves the eye of perspective views aside by `offset`, to the right where it is above 0; what is
/// at the distance `convergence` stays where it is seen. Parallel views are not changed: both eyes
/// see the same.
std::vector<RenderView> seenFromAside(std::vector<RenderView> views, float offset,
                                      float convergence);

/// Puts the pictures for two eyes into one, for glasses with a red glass on the left and a cyan one
/// on the right. Works on whatever framebuffer is bound.
class Anaglyph {
public:
    /// `box`: of what is bound, in pixels.
    Anaglyph(GLDevice& device, const PixelBox& box);
    ~Anaglyph();
    Anaglyph(const Anaglyph&) = delete;
    Anaglyph& operator=(const Anaglyph&) = delete;

    /// Copies what stands in the box.
    void keepLeft();
    /// Replaces the red of what stands in the box now by the brightness of the copy.
    void mergeLeft();

private:
    GLDevice& m_device;
    const PixelBox m_box;
    GLuint m_texture = 0;
    GLuint m_buffer = 0;
};

ShaderSource anaglyphShaderSource();

} // namespace kalmyr::detail
