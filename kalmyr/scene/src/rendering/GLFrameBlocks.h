#pragma once

#include "rendering/GLDrawPlan.h"

#include <epoxy/gl.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kalmyr::detail {

struct Frame;

/// Binding points of the uniform blocks of all programs.
enum GLUniformBinding : GLuint { VIEW_BINDING, SURROUNDINGS_BINDING, PEELING_BINDING };

/// The views of a frame and the lights and planes of its surroundings in one OpenGL context: a
/// uniform block each, and a table for the lights and planes that a block has no room for.
class GLFrameBlocks {
public:
    void create();
    void free();

    /// Has the buffers hold those of the frame. Cost: none when they do already.
    void fill(const Frame& frame);

    void bindView(std::size_t view) const;
    void bindSurroundings(std::size_t number) const;
    void bindTable() const;

private:
    void fillViews(const Frame& frame);
    void fillSurroundings(const Frame& frame);

    GLuint m_views = 0;
    GLuint m_surroundings = 0;
    GLTable m_table;
    std::size_t m_viewStride = 0;
    std::size_t m_surroundingsStride = 0;
    std::uint64_t m_generation = 0; ///< of the frame that the buffers hold
};

} // namespace kalmyr::detail
