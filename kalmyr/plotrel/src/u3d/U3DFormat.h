#pragma once

#include <cstdint>

namespace kalmyr::detail {

/// Types of blocks.
enum U3DBlockType : std::uint32_t {
    FILE_HEADER = 0x00443355,
    MODIFIER_CHAIN = 0xffffff14,
    GROUP_NODE = 0xffffff21,
    MODEL_NODE = 0xffffff22,
    LIGHT_NODE = 0xffffff23,
    VIEW_NODE = 0xffffff24,
    MESH_DECLARATION = 0xffffff31,
    POINT_SET_DECLARATION = 0xffffff36,
    LINE_SET_DECLARATION = 0xffffff37,
    MESH_CONTINUATION = 0xffffff3b,
    POINT_SET_CONTINUATION = 0xffffff3e,
    LINE_SET_CONTINUATION = 0xffffff3f,
    SHADING_MODIFIER = 0xffffff45,
    LIGHT_RESOURCE = 0xffffff51,
    VIEW_RESOURCE = 0xffffff52,
    SHADER = 0xffffff53,
    MATERIAL = 0xffffff54,
    TEXTURE_DECLARATION = 0xffffff55,
    TEXTURE_CONTINUATION = 0xffffff5c
};

/// Kinds of chains of blocks.
enum U3DChainType : std::uint32_t { NODE_CHAIN = 0, MODEL_CHAIN = 1 };

/// Contexts of compressed symbols.
enum U3DContext : int {
    SHADING_CONTEXT = 1, ///< and numbers of new lines and points
    SIGN_CONTEXT = 20,
    POSITION_CONTEXT = 21, ///< of x; y and z follow
    NUM_NORMALS_CONTEXT = 40,
    NORMAL_INDEX_CONTEXT = 45
};

} // namespace kalmyr::detail
