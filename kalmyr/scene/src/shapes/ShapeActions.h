#pragma once

#include <kalmyr/core/SoType.h>

namespace kalmyr::detail {

/// What the actions do at shapes: measure, pick, count and hand out primitives.
void addShapeMethods(SoType shapeType);

} // namespace kalmyr::detail
