#pragma once

#include <kalmyr/base/SoRefCounter.h>

#include <span>

class SoNode;

namespace kalmyr::detail {

/// Gives back a reference that a dying or changing object held. What dies of it lets go of its own
/// in turn, one after the other instead of one inside the other, so that chains and graphs of any
/// depth die on a small stack.
void releaseInTurn(const SoRefCounter* object);
/// The same for several, the first one first.
void releaseInTurn(std::span<SoNode* const> nodes);

} // namespace kalmyr::detail
