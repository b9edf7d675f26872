#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers the VRML97 nodes. Repeatable; needs fields, actions, nodes and shapes.
KALMYR_API void initVrml();

/// Unregisters them. Nothing of their types may be left, and the process cannot use them again
/// before the next initVrml().
KALMYR_API void finishVrml();

} // namespace kalmyr
