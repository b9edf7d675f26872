#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers the root types: base, field container, node, path, field.
KALMYR_API void initCore();

/// Makes an instance of each class of nodes and engines: the first one fills the class's table of
/// fields, which two threads must not do at once. SoDB::init() and the start of an optional module
/// call it; a host does so after it registered classes of its own.
KALMYR_API void makeFieldTables();

} // namespace kalmyr
