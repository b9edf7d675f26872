#pragma once

class SoBase;

namespace kalmyr::detail {

/// Calls all death observers of the process.
void tellDeathObservers(const SoBase* object);

} // namespace kalmyr::detail
