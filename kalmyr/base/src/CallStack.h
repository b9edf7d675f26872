#pragma once

#include <kalmyr/base/SbString.h>

namespace kalmyr::detail {

/// Where the running function returns to: marks its caller among the calls.
#if defined(__GNUC__)
#define KALMYR_CALLER __builtin_return_address(0)
#else
#define KALMYR_CALLER nullptr
#endif

/// The calls of the current thread, innermost first, one a line, from `caller` (see KALMYR_CALLER)
/// on and without the `skip` innermost of those. Empty where the system offers no way.
SbString callStack(const void* caller, int skip = 0);

} // namespace kalmyr::detail
