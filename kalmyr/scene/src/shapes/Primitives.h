#pragma once

#include "SharedGeometry.h"

#include <kalmyr/elements/SoState.h>

#include <bit>

namespace kalmyr::detail {

/// Builds the geometry of a simple shape; the faces are its material parts.
void buildPrimitive(const SharedKey& key, SoGeometry& geometry);

/// Segments around a curved shape under the state's complexity.
int segmentsOf(SoState* state);

/// Whether the state gives the parts colours of their own.
bool hasPartColors(SoState* state);
/// Colours the vertices by part; the parts must not share vertices.
void applyPartColors(SoState* state, SoGeometry& geometry);
/// A key for a cache: segments, and the material where its colours go into the geometry.
std::uint64_t primitiveStateKey(SoState* state, int segments, bool withParts);

inline std::uint32_t sizeBits(float value)
{
    return std::bit_cast<std::uint32_t>(value);
}

} // namespace kalmyr::detail
