#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers the detail classes; repeatable.
KALMYR_API void initDetails();

} // namespace kalmyr
