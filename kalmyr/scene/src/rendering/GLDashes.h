#pragma once

#include "rendering/FrameBuilder.h"

#include <kalmyr/shapes/SoGeometry.h>

#include <epoxy/gl.h>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace kalmyr::detail {

/// Where in the pattern each segment of dashed lines begins, in pixels, modulo the pattern.
///
/// A segment that begins where the one before it ended goes on with its pattern. Lengths are those
/// on the screen, of what is in front of the near plane.
std::vector<float> dashStarts(const std::vector<SbVec3f>& positions,
                              const std::vector<std::uint32_t>& lines, const Matrix4& toClip,
                              float viewportWidth, float viewportHeight);

/// What one context needs for lines with a pattern: a texture of where segments begin in it, and
/// the edges of faces in the order of polylines.
class GLDashes {
public:
    GLDashes();
    GLDashes(const GLDashes&) = delete;
    GLDashes& operator=(const GLDashes&) = delete;
    /// Everything, in the current context. Without it the memory goes with the context.
    void free();

    /// Kept until they were not asked for in a while; `frame` counts frames.
    const std::vector<std::uint32_t>& edgesOf(const SoGeometry& geometry, std::uint64_t frame);
    void freeOld(std::uint64_t oldestFrame);

    /// How many segments can be drawn by one call.
    std::size_t getMaxSegments() const { return m_maxSegments; }
    /// Brings that many starts to the texture unit kDashUnit.
    void bind(const float* starts, std::size_t count);

private:
    struct Edges {
        std::vector<std::uint32_t> indices;
        std::uint64_t frame = 0;
    };
    std::unordered_map<std::uint64_t, Edges> m_edges; ///< by the geometry's id
    GLuint m_buffer = 0;
    GLuint m_texture = 0;
    std::size_t m_maxSegments = 0;
};

} // namespace kalmyr::detail
