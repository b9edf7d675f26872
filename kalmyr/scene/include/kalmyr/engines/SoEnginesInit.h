#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers every engine type and makes the global field realTime; repeatable. Needs
/// initFields() and initSensors().
KALMYR_API void initEngines();

} // namespace kalmyr
