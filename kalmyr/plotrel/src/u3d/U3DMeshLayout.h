#pragma once

#include "U3DScene.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kalmyr::detail {

/// The arrays of a mesh as a file has them: each value once, and for each vertex of the geometry
/// where its values are. Geometry has a vertex for every combination of them, so that in meshes
/// that are shaded flat each point stands several times.
class U3DMeshLayout {
public:
    /// With compression no array gets the one length about which readers do not agree.
    U3DMeshLayout(const U3DMesh& mesh, bool compressed);

    std::vector<SbVec3f> positions; ///< those that have a place
    std::vector<SbVec3f> normals;
    std::vector<SbVec2f> texCoords;
    std::vector<std::uint32_t> colors; ///< 0xRRGGBBAA

    /// Numbers of a vertex's values.
    std::uint32_t positionOf(std::uint32_t vertex) const { return m_positions[vertex]; }
    std::uint32_t normalOf(std::uint32_t vertex) const { return m_normals[vertex]; }
    std::uint32_t texCoordOf(std::uint32_t vertex) const { return m_texCoords[vertex]; }
    std::uint32_t colorOf(std::uint32_t vertex) const { return m_colors[vertex]; }

    /// Bytes of the arrays and that many faces without compression.
    std::size_t getNumBytes(std::size_t numFaces) const;

private:
    using Indices = std::vector<std::uint32_t>;
    Indices m_positions;
    Indices m_normals;
    Indices m_texCoords;
    Indices m_colors;
};

} // namespace kalmyr::detail
