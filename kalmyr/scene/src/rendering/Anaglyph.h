#pragma once

#include "rendering/GLDevice.h"
#include "rendering/RenderList.h"

#include <kalmyr/base/SbViewportRegion.h>

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
    Anaglyph(GLDevice& device, const SbViewportRegion& region);
    ~Anaglyph();
    Anaglyph(const Anaglyph&) = delete;
    Anaglyph& operator=(const Anaglyph&) = delete;

    /// Copies what stands in the viewport.
    void keepLeft();
    /// Replaces the red of what stands in the viewport now by the brightness of the copy.
    void mergeLeft();

private:
    GLDevice& m_device;
    const SbVec2s m_origin;
    const SbVec2s m_size;
    GLuint m_texture = 0;
    GLuint m_buffer = 0;
};

ShaderSource anaglyphShaderSource();

} // namespace kalmyr::detail
