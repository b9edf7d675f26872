#pragma once

#include <kalmyr/base/Export.h>

namespace kalmyr {

/// Registers scene managers, render areas and viewers; repeatable. Initialises the scene database.
KALMYRGUI_API void initGui();

} // namespace kalmyr
