#pragma once

#include <functional>
#include <memory>
#include <type_traits>

/// Lets recursion over deep graphs go on when the thread's stack has been used up to a limit: the
/// rest runs on a stack of its own, in the same thread, and returns as any call does.
///
///     void walk(Node* n, const char* limit)
///     {
///         if (kalmyr::detail::isStackLow(limit)) {
///             kalmyr::detail::callOnNewStack([&](const char* newLimit) { walk(n, newLimit); });
///             return;
///         }
///         ...
///     }
///     walk(root, kalmyr::detail::stackLimit());
namespace kalmyr::detail {

/// Address down to which a recursion that starts here may use the present stack.
const char* stackLimit();

inline bool isStackLow(const char* limit)
{
    return static_cast<const char*>(__builtin_frame_address(0)) < limit;
}

/// Calls function(data, limit of the new stack). Runs it on the present stack when there is no
/// memory for another.
void callOnNewStack(void (*function)(void* data, const char* limit), void* data);

template <class F>
void callOnNewStack(F&& function)
{
    callOnNewStack(
        [](void* data, const char* limit) {
            (*static_cast<std::remove_reference_t<F>*>(data))(limit);
        },
        static_cast<void*>(std::addressof(function)));
}

/// A function on a stack of its own, in the same thread, that can stop half way and go on later. It
/// may call callOnNewStack(), and pause there as well.
class PausableCall {
public:
    explicit PausableCall(std::function<void()> function);
    /// The function must not have begun, or have ended.
    ~PausableCall();
    PausableCall(const PausableCall&) = delete;
    PausableCall& operator=(const PausableCall&) = delete;

    /// Begins, or goes on behind the last pause(). Returns at the next one, or at the end: true
    /// then. Runs all of it on the present stack when there is no memory for another; pause() does
    /// nothing then.
    bool resume();
    /// From within the function.
    void pause();
    /// Address down to which recursion may use the call's own stack; null when there is none.
    const char* getFloor() const;
    bool hasBegun() const { return m_begun; }
    bool hasEnded() const { return m_ended; }

private:
    struct Stacks;
    static void start(unsigned high, unsigned low);
    void run();

    std::function<void()> m_function;
    std::unique_ptr<Stacks> m_stacks; ///< null: not begun, or on the present stack
    bool m_begun = false;
    bool m_ended = false;
};

} // namespace kalmyr::detail
