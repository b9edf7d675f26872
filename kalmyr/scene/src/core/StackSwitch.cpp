#include "core/StackSwitch.h"

#include <sys/mman.h>
#include <ucontext.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif
#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace kalmyr::detail {

namespace {

/// The share of a thread's own stack that a recursion may take: little, for threads may have small
/// ones.
constexpr std::ptrdiff_t kOwnStackShare = 256 * 1024;
constexpr std::size_t kStackSize = 1024 * 1024;
/// Left for what the innermost calls need (drivers, tessellators, callbacks of the host).
constexpr std::ptrdiff_t kReserve = 256 * 1024;
constexpr std::size_t kGuard = 64 * 1024;

/// Lowest address that recursion may reach on the switched stack in use; null on the thread's own.
thread_local const char* t_floor = nullptr;

/// Memory of a stack, with a guard below it; null when there is none.
char* makeStack()
{
    void* memory = mmap(nullptr, kStackSize + kGuard, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    mprotect(memory, kGuard, PROT_NONE);
    return static_cast<char*>(memory) + kGuard;
}

void freeStack(char* stack)
{
    munmap(stack - kGuard, kStackSize + kGuard);
}

void prepare(ucontext_t& context, char* stack, void (*start)(unsigned, unsigned), void* data)
{
    getcontext(&context);
    context.uc_stack.ss_sp = stack;
    context.uc_stack.ss_size = kStackSize;
    const auto address = reinterpret_cast<std::uintptr_t>(data);
    makecontext(&context, reinterpret_cast<void (*)()>(start), 2,
                static_cast<unsigned>(address >> 32), static_cast<unsigned>(address));
}

/// makecontext() passes whole numbers only.
template <class T>
T* joined(unsigned high, unsigned low)
{
    return reinterpret_cast<T*>((static_cast<std::uintptr_t>(high) << 32) | low);
}

} // namespace

const char* stackLimit()
{
    const auto* here = static_cast<const char*>(__builtin_frame_address(0));
    return t_floor ? std::max(here - kOwnStackShare, t_floor) : here - kOwnStackShare;
}

void callOnNewStack(void (*function)(void* data, const char* limit), void* data)
{
    PausableCall call([&] { function(data, call.getFloor()); });
    call.resume();
}

/// The stacks of the resumer and of a call, and how each goes on.
struct PausableCall::Stacks {
    char* stack = nullptr;
    const char* floor = nullptr; ///< of the stack to go on with, the call's own or a nested one
    ucontext_t resumer = {};
    ucontext_t call = {};
    // For the sanitizers. The stack that is gone back to is the one that was left last.
    void* resumerFake = nullptr;
    const void* resumerBottom = nullptr;
    std::size_t resumerSize = 0;
    void* callFake = nullptr;
    const void* callBottom = nullptr;
    std::size_t callSize = 0;
    void* resumerFiber = nullptr;
    void* callFiber = nullptr; ///< to go on with
    void* ownFiber = nullptr;
};

PausableCall::PausableCall(std::function<void()> function) : m_function(std::move(function)) {}

PausableCall::~PausableCall() = default;

void PausableCall::start(unsigned high, unsigned low)
{
    auto* call = joined<PausableCall>(high, low);
    Stacks& s = *call->m_stacks;
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_finish_switch_fiber(nullptr, &s.resumerBottom, &s.resumerSize);
#endif
    call->run();
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_start_switch_fiber(nullptr, s.resumerBottom, s.resumerSize);
#endif
#if defined(__SANITIZE_THREAD__)
    __tsan_switch_to_fiber(s.resumerFiber, 0);
#endif
    setcontext(&s.resumer);
}

const char* PausableCall::getFloor() const
{
    return m_stacks ? m_stacks->stack + kReserve : nullptr;
}

void PausableCall::run()
{
    m_function();
    m_ended = true;
}

bool PausableCall::resume()
{
    if (m_ended)
        return true;
    if (!m_begun) {
        m_begun = true;
        char* stack = makeStack();
        if (!stack) {
            run();
            return true;
        }
        m_stacks = std::make_unique<Stacks>();
        m_stacks->stack = stack;
        m_stacks->floor = stack + kReserve;
        m_stacks->callBottom = stack;
        m_stacks->callSize = kStackSize;
        prepare(m_stacks->call, stack, start, this);
#if defined(__SANITIZE_THREAD__)
        m_stacks->callFiber = m_stacks->ownFiber = __tsan_create_fiber(0);
#endif
    }
    Stacks& s = *m_stacks;
    const char* floorBefore = std::exchange(t_floor, s.floor);
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_start_switch_fiber(&s.resumerFake, s.callBottom, s.callSize);
#endif
#if defined(__SANITIZE_THREAD__)
    s.resumerFiber = __tsan_get_current_fiber();
    __tsan_switch_to_fiber(s.callFiber, 0);
#endif
    swapcontext(&s.resumer, &s.call);
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_finish_switch_fiber(s.resumerFake, &s.callBottom, &s.callSize);
#endif
    s.floor = std::exchange(t_floor, floorBefore);
    if (!m_ended)
        return false;
#if defined(__SANITIZE_THREAD__)
    __tsan_destroy_fiber(s.ownFiber);
#endif
    freeStack(s.stack);
    m_stacks.reset();
    return true;
}

void PausableCall::pause()
{
    if (!m_stacks)
        return;
    Stacks& s = *m_stacks;
#if defined(__SANITIZE_THREAD__)
    s.callFiber = __tsan_get_current_fiber();
    __tsan_switch_to_fiber(s.resumerFiber, 0);
#endif
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_start_switch_fiber(&s.callFake, s.resumerBottom, s.resumerSize);
#endif
    swapcontext(&s.call, &s.resumer);
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_finish_switch_fiber(s.callFake, &s.resumerBottom, &s.resumerSize);
#endif
}

} // namespace kalmyr::detail
