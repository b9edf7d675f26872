#include "AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

long countAllocations()
{
    return -1;
}

#else

namespace {

std::atomic<long> s_allocations = 0;

} // namespace

long countAllocations()
{
    return s_allocations;
}

void* operator new(std::size_t size)
{
    ++s_allocations;
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

#endif
