#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kalmyr::detail {

/// Indices of faces of `size` corners each, which take the positions from `start` on in order; as
/// many as fit for a negative `count`. Of the faces outside of the positions only a few are listed,
/// for the builder to complain: no more indices than twice the positions and some.
inline std::vector<std::int32_t> faceIndices(std::int64_t start, std::int64_t count,
                                             std::uint32_t size, std::size_t numPositions)
{
    const auto end = static_cast<std::int64_t>(numPositions);
    start = std::max(start, -end - size);
    const std::int64_t remaining = std::max<std::int64_t>(end - start, 0) / size;
    const std::int64_t listed = size * (count < 0 ? remaining : std::min(count, remaining + 1));
    std::vector<std::int32_t> indices;
    indices.reserve(static_cast<std::size_t>(listed));
    for (std::int64_t at = start; at < start + listed; ++at) {
        // A position -1 would read as the end of a face; it is out of range like -2.
        indices.push_back(static_cast<std::int32_t>(at == -1 ? -2 : at));
    }
    return indices;
}

} // namespace kalmyr::detail
