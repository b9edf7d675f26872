#pragma once

#include <cstdint>
#include <vector>

class SoGeometry;

namespace kalmyr::detail {

/// Index pairs of the edges between faces, or at the border: edges inside a flat face that was
/// split into triangles are left out. Curved surfaces show the facets that they are made of.
std::vector<std::uint32_t> faceEdges(const SoGeometry& geometry);

/// The same edges, each once, in the order and direction of polylines, for lines with a pattern: an
/// edge goes on in the only other one at its end, or in the one that goes on about straight.
std::vector<std::uint32_t> chainedEdges(const SoGeometry& geometry);

/// The edges that an outline may consist of. Vertices at one place count as one.
struct OutlineEdges {
    /// Pairs: edges at the border, between more than two triangles, or with a sharp bend.
    std::vector<std::uint32_t> sharp;
    /// Fours: corner of one triangle, the edge, corner of the other triangle. Seen only where one
    /// of the two faces the eye and the other does not.
    std::vector<std::uint32_t> smooth;
};
OutlineEdges outlineEdges(const SoGeometry& geometry);

} // namespace kalmyr::detail
