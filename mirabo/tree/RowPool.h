#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace mirabo {

/// Memory of the rows, which come and go by the million: taken from large blocks one after the
/// other, reused when rows go, and given back when the last one is gone. For the GUI thread only.
class RowPool {
public:
    /// `size` is the same for all rows.
    void* allocate(std::size_t size);
    void release(void* row);

private:
    struct FreeRow {
        FreeRow* next;
    };
    static constexpr std::size_t kFirstBlock = 64;     ///< rows
    static constexpr std::size_t kLargestBlock = 8192; ///< rows

    std::vector<std::unique_ptr<std::byte[]>> m_blocks;
    FreeRow* m_free = nullptr;
    std::byte* m_next = nullptr; ///< in the last block
    std::byte* m_end = nullptr;
    std::size_t m_used = 0;
};

} // namespace mirabo
