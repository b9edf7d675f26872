#pragma once

#include <kalmyr/base/SbString.h>

namespace kalmyr::detail {

/// The calls of the current thread, innermost first, one a line, without callStack() itself and the `skip`
/// innermost others. Empty where the system offers no way.
SbString callStack(int skip);

} // namespace kalmyr::detail
