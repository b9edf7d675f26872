#pragma once

class SoField;

namespace kalmyr::detail {

/// Whether the value of `field` is made of that of `source`: it is that field, or follows it over
/// any number of connections and engines.
///
/// Searches from both ends at once, so the cost is that of the shorter side: a chain may be built
/// from either end, or of pieces that are joined, in linear time.
bool isMadeOf(const SoField& field, const SoField& source);

} // namespace kalmyr::detail
