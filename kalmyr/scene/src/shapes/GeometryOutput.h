#pragma once

#include "VertexTable.h"

#include <kalmyr/base/SbVec.h>

#include <span>

class SoGeometry;

namespace kalmyr::detail {

/// The arrays that the numbers of a vertex table point into.
struct VertexSources {
    std::span<const SbVec3f> positions;
    std::vector<SbVec3f> morePositions; ///< behind the others
    std::span<const SbVec3f> normals;
    bool unitNormals = false; ///< they have unit length already
    std::span<const std::uint32_t> colors;
    std::span<const SbVec2f> texCoords;
};

void writeVertices(const VertexTable& table, const VertexSources& sources, SoGeometry& geometry);

/// Texture coordinates from positions: s along the longest side of the box from 0 to 1, t along the
/// second longest in the same measure.
void makeTexCoords(SoGeometry& geometry);

} // namespace kalmyr::detail
