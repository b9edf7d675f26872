#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Connects the sensor queues to the notification.
KALMYR_API void initSensors();

} // namespace kalmyr
