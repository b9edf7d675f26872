#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers the root types: base, field container, node, path, field.
KALMYR_API void initCore();

} // namespace kalmyr
