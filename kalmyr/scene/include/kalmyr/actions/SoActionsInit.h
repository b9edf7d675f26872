#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers the action classes and their default methods. Needs the core; repeatable.
KALMYR_API void initActions();

} // namespace kalmyr
