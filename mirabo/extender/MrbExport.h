#pragma once

#include <kalmyr/base/Export.h>

/// Marks the classes of the extension API (libMiraboExtenderAPI).
#define MRBEXT_API KALMYR_VISIBLE
