#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers the event classes; repeatable.
KALMYR_API void initEvents();

} // namespace kalmyr
