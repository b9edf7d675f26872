#include "mirabo/tree/RowPool.h"

#include <algorithm>
#include <new>

namespace mirabo {

void* RowPool::allocate(std::size_t size)
{
    ++m_used;
    if (m_free) {
        FreeRow* row = m_free;
        m_free = row->next;
        return row;
    }
    if (m_next == m_end) {
        const std::size_t rows =
            std::min(kFirstBlock << std::min<std::size_t>(m_blocks.size(), 16), kLargestBlock);
        m_blocks.emplace_back(new std::byte[rows * size]);
        m_next = m_blocks.back().get();
        m_end = m_next + rows * size;
    }
    void* row = m_next;
    m_next += size;
    return row;
}

void RowPool::release(void* row)
{
    m_free = new (row) FreeRow{m_free};
    if (--m_used > 0)
        return;
    m_blocks.clear();
    m_free = nullptr;
    m_next = m_end = nullptr;
}

} // namespace mirabo
