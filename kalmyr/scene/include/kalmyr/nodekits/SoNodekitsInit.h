#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers the node kits. Repeatable; needs fields, actions, nodes, shapes, lights and cameras.
KALMYR_API void initNodekits();

/// Unregisters them. Nothing of their types may be left, and the process cannot use them again
/// before the next initNodekits().
KALMYR_API void finishNodekits();

} // namespace kalmyr
