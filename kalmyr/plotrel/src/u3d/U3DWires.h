#pragma once

#include "U3DScene.h"

#include <cstddef>
#include <vector>

namespace kalmyr::detail {

/// The part of a geometry that a line set or point set is made from.
enum class U3DWireSource : unsigned char {
    LINES,
    EDGES, ///< of the faces, without those within a face that was split into triangles
    POINTS,
    VERTICES ///< of everything
};

/// Sets of a limited size. What has no place is left out and counted; lines from a vertex to itself
/// are left out.
std::vector<U3DWire> makeWires(const SoGeometry& geometry, U3DWireSource source,
                               std::size_t& numLeftOut);

} // namespace kalmyr::detail
