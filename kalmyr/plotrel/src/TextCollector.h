#pragma once

#include "FacetContext.h"
#include "VectorDrawing.h"

#include <string>
#include <vector>

class SoNode;

namespace kalmyr::detail {

/// Returns the strings of a text shape; none of other nodes, and of null.
std::vector<std::string> stringsOf(const SoNode* node);

/// Appends the strings of a text shape, which has one face a line, each over the box of its
/// letters, as far as it is in view as a whole.
void collectTexts(const FacetContext& context, const std::vector<std::string>& strings,
                  std::vector<VectorText>& texts);

} // namespace kalmyr::detail
