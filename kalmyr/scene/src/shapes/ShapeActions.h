#pragma once

#include <kalmyr/core/SoType.h>

namespace kalmyr::detail {

/// Registers the methods of every shape for bounding box, pick, callback and primitive count
/// actions.
void addShapeMethods(SoType shapeType);
/// More for a type whose geometry has a size in pixels: its box, which depends on the view, is not
/// kept.
void addPixelShapeMethods(SoType type);

} // namespace kalmyr::detail
