#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers every field type; repeatable. Needs initCore().
KALMYR_API void initFields();

} // namespace kalmyr
