#pragma once

class SoNode;

namespace kalmyr::detail {

/// The node `child` when a node-valued field of `holder` holds it, else null. `child` is only
/// compared.
SoNode* findInNodeFields(const SoNode* holder, const SoNode* child);

/// False only when no field of the node can hold a node.
bool mayHoldNodesInFields(const SoNode* node);

} // namespace kalmyr::detail
