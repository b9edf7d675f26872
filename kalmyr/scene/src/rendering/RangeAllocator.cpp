#include "rendering/RangeAllocator.h"

namespace kalmyr::detail {

void RangeAllocator::addFree(std::uint32_t start, std::uint32_t size)
{
    m_byStart.emplace(start, size);
    m_bySize.emplace(size, start);
}

void RangeAllocator::removeFree(FreeRanges::iterator range)
{
    m_bySize.erase({range->second, range->first});
    m_byStart.erase(range);
}

std::optional<std::uint32_t> RangeAllocator::allocate(std::uint32_t size)
{
    if (size == 0) {
        return 0;
    }
    const auto fitting = m_bySize.lower_bound({size, 0});
    if (fitting != m_bySize.end()) {
        const auto [found, start] = *fitting;
        removeFree(m_byStart.find(start));
        if (found > size) {
            addFree(start + size, found - size);
        }
        m_used += size;
        return start;
    }
    if (size > m_capacity - m_end) {
        return std::nullopt;
    }
    m_used += size;
    m_end += size;
    return m_end - size;
}

void RangeAllocator::free(std::uint32_t start, std::uint32_t size)
{
    if (size == 0) {
        return;
    }
    m_used -= size;
    const auto behind = m_byStart.lower_bound(start);
    if (behind != m_byStart.begin()) {
        const auto before = std::prev(behind);
        if (before->first + before->second == start) {
            start = before->first;
            size += before->second;
            removeFree(before);
        }
    }
    if (behind != m_byStart.end() && behind->first == start + size) {
        size += behind->second;
        removeFree(behind);
    }
    if (start + size == m_end) {
        m_end = start;
    } else {
        addFree(start, size);
    }
}

} // namespace kalmyr::detail
