#pragma once

#include <cstddef>

namespace kalmyr::detail {

/// Counts of one frame.
struct RenderStatistics {
    std::size_t visits = 0;           ///< nodes traversed
    std::size_t listsBuilt = 0;       ///< lists of separators made
    std::size_t listsReused = 0;      ///< lists of separators that were still valid
    std::size_t listsPatched = 0;     ///< lists of which only what changed was made anew
    std::size_t items = 0;            ///< shapes in view
    std::size_t itemsPlaced = 0;      ///< shapes whose place on the target was computed
    std::size_t culled = 0;           ///< shapes or whole lists out of view
    std::size_t drawCalls = 0;        ///< of the scene
    std::size_t outlineDrawCalls = 0; ///< more, of what is outlined
    std::size_t geometries = 0;       ///< geometries in the context's buffers after the frame
    std::size_t planBytes = 0;        ///< of the frame's own tables in the context
    std::size_t geometryBytes = 0;    ///< of those buffers, used or not
    std::size_t textures = 0;         ///< images in the context after the frame
    double traverseSeconds = 0;       ///< making the list
    double flattenSeconds = 0;        ///< placing, culling, sorting
    double submitSeconds = 0;         ///< handing over to OpenGL
};

} // namespace kalmyr::detail
