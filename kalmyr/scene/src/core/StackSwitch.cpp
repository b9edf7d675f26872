#include "core/StackSwitch.h"

#include <sys/mman.h>
#include <ucontext.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif
#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace kalmyr::detail {

namespace {

/// What a recursion may take of a thread's own stack: little, for threads may have small ones.
constexpr std::ptrdiff_t kOwnStackShare = 256 * 1024;
constexpr std::size_t kStackSize = 1024 * 1024;
/// Left for what the innermost calls need (drivers, tessellators, callbacks of the host).
constexpr std::ptrdiff_t kReserve = 256 * 1024;
constexpr std::size_t kGuard = 64 * 1024;

/// Lowest address that recursion may reach on the switched stack in use; null on the thread's own.
thread_local const char* t_floor = nullptr;

struct Switch {
    void (*function)(void*, const char*) = nullptr;
    void* data = nullptr;
    const char* floor = nullptr;
    char* stack = nullptr;
    ucontext_t caller = {};
    ucontext_t callee = {};
    // For the sanitizers, which must know which stack is in use.
    void* fakeStack = nullptr;
    const void* callerBottom = nullptr;
    std::size_t callerSize = 0;
    void* callerFiber = nullptr;
    void* fiber = nullptr;
};

void enter(Switch& s)
{
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_start_switch_fiber(&s.fakeStack, s.stack, kStackSize);
#endif
#if defined(__SANITIZE_THREAD__)
    s.callerFiber = __tsan_get_current_fiber();
    s.fiber = __tsan_create_fiber(0);
    __tsan_switch_to_fiber(s.fiber, 0);
#endif
    swapcontext(&s.caller, &s.callee);
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_finish_switch_fiber(s.fakeStack, nullptr, nullptr);
#endif
#if defined(__SANITIZE_THREAD__)
    __tsan_destroy_fiber(s.fiber);
#endif
}

void leave([[maybe_unused]] Switch& s)
{
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_start_switch_fiber(nullptr, s.callerBottom, s.callerSize);
#endif
#if defined(__SANITIZE_THREAD__)
    __tsan_switch_to_fiber(s.callerFiber, 0);
#endif
    setcontext(&s.caller);
}

/// makecontext() passes whole numbers only.
void start(unsigned high, unsigned low)
{
    auto* s = reinterpret_cast<Switch*>((static_cast<std::uintptr_t>(high) << 32) | low);
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_finish_switch_fiber(nullptr, &s->callerBottom, &s->callerSize);
#endif
    s->function(s->data, s->floor);
    leave(*s);
}

} // namespace

const char* stackLimit()
{
    const auto* here = static_cast<const char*>(__builtin_frame_address(0));
    return t_floor ? std::max(here - kOwnStackShare, t_floor) : here - kOwnStackShare;
}

void callOnNewStack(void (*function)(void* data, const char* limit), void* data)
{
    void* memory = mmap(nullptr, kStackSize + kGuard, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) {
        function(data, nullptr);
        return;
    }
    mprotect(memory, kGuard, PROT_NONE);
    Switch s;
    s.function = function;
    s.data = data;
    s.stack = static_cast<char*>(memory) + kGuard;
    s.floor = s.stack + kReserve;
    getcontext(&s.callee);
    s.callee.uc_stack.ss_sp = s.stack;
    s.callee.uc_stack.ss_size = kStackSize;
    const auto address = reinterpret_cast<std::uintptr_t>(&s);
    makecontext(&s.callee, reinterpret_cast<void (*)()>(start), 2,
                static_cast<unsigned>(address >> 32), static_cast<unsigned>(address));
    const char* floorBefore = t_floor;
    t_floor = s.floor;
    enter(s);
    t_floor = floorBefore;
    munmap(memory, kStackSize + kGuard);
}

} // namespace kalmyr::detail
