#pragma once

#include <kalmyr/base/SoRef.h>

#include <cstdint>

class SoGeometry;
class SoState;

namespace kalmyr::detail {

/// Key of the further texture coordinates and program inputs in the state; 0 without any.
std::uint64_t extrasKey(SoState* state);

/// The geometry with the texture coordinates that the state has computed from positions; itself
/// when there are none.
SoRef<SoGeometry> withPlanes(const SoRef<SoGeometry>& geometry, SoState* state);

} // namespace kalmyr::detail
