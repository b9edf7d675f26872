#pragma once

#include <span>

class SbString;
class SoField;
class SoNode;

namespace kalmyr::detail {

/// Whether a field may hold a node (null is always allowed): not when the node holds the field's
/// container. Posts an error that names both.
bool mayHold(const SoField& field, const SoNode* node);
/// The same for all of several.
bool mayHoldAll(const SoField& field, std::span<SoNode* const> nodes);

/// The field is about to hold other nodes, and to tell its container of it unless it is silent.
void expectWalk(const SoField& field);

/// The reader's message for that case.
inline constexpr char kHoldsThis[] = "expected a node that does not hold this one";

/// Whether the value of `twin`, a field of the same type, may become that of `field`: nodes are
/// held where their container accepts them. If not, `why` tells what is wanted.
bool mayTake(const SoField& field, const SoField& twin, SbString& why);

} // namespace kalmyr::detail
