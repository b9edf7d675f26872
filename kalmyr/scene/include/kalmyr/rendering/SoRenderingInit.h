#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers the rendering actions and what they do at each kind of node. Needs the nodes to be
/// registered; repeatable, and worth repeating after an optional module added nodes.
KALMYR_API void initRendering();

/// Frees the toolkit's own offscreen context.
KALMYR_API void finishRendering();

} // namespace kalmyr
