#pragma once

class SoBase;
class SoFieldContainer;

namespace kalmyr::detail {

/// Call all death observers of the process.
void tellDeathObservers(const SoBase* object);
void tellObserversOfName(const SoBase* object);
/// False when there is none.
bool tellObserversOfUnheardChange(const SoFieldContainer* container);

} // namespace kalmyr::detail
