#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace kalmyr::detail {

/// Hands out ranges of a buffer of fixed capacity and takes them back.
///
/// The smallest free range that is large enough is taken; neighbouring free ranges become one.
/// Cost of both: logarithmic in the number of free ranges.
class RangeAllocator {
public:
    explicit RangeAllocator(std::uint32_t capacity) : m_capacity(capacity) {}

    /// The start of a range of `size`, or nothing when there is no room. Ranges of size 0 take
    /// none.
    std::optional<std::uint32_t> allocate(std::uint32_t size);
    /// `start` and `size` as they were allocated.
    void free(std::uint32_t start, std::uint32_t size);

    std::uint32_t getCapacity() const { return m_capacity; }
    std::uint32_t getUsed() const { return m_used; }

private:
    using FreeRanges = std::map<std::uint32_t, std::uint32_t>; ///< size by start
    void addFree(std::uint32_t start, std::uint32_t size);
    void removeFree(FreeRanges::iterator range);

    std::uint32_t m_capacity;
    std::uint32_t m_end = 0; ///< everything from here on was never used, or is free again
    std::uint32_t m_used = 0;
    FreeRanges m_byStart;                                       ///< below the end
    std::set<std::pair<std::uint32_t, std::uint32_t>> m_bySize; ///< size and start of the same
};

} // namespace kalmyr::detail
