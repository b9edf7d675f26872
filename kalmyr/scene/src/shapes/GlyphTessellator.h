#pragma once

#include "Glyphs.h"

#include <vector>

namespace kalmyr::detail {

/// Cuts what contours enclose into triangles; contours within others that turn the other way are
/// holes, and contours may overlap.
void tessellateContours(const std::vector<std::vector<SbVec2f>>& contours, Glyph& glyph);

} // namespace kalmyr::detail
