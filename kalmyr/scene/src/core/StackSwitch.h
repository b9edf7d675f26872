#pragma once

#include <memory>

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

} // namespace kalmyr::detail
