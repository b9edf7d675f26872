#pragma once

#include <span>

class SoField;
class SoNode;

namespace kalmyr::detail {

/// Whether a field may hold a node (null is always allowed): not when the node holds the field's
/// container. Posts an error that names both.
bool mayHold(const SoField& field, const SoNode* node);
/// The same for all of several.
bool mayHoldAll(const SoField& field, std::span<SoNode* const> nodes);

} // namespace kalmyr::detail
