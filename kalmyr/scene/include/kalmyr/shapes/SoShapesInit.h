#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers the types of this area and what the actions do at them. Repeatable; needs
/// what comes before it: core, fields, sensors and actions, nodes.
KALMYR_API void initShapes();

} // namespace kalmyr
