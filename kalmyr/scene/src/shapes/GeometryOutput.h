#pragma once

#include "VertexTable.h"

#include <kalmyr/base/SbVec.h>

#include <kalmyr/shapes/FaceBuilder.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <span>

namespace kalmyr::detail {

/// The arrays that the numbers of a vertex table point into.
struct VertexSources {
    std::span<const SbVec3f> positions;
    std::vector<SbVec3f> morePositions; ///< behind the others
    std::span<const SbVec3f> normals;
    bool unitNormals = false; ///< they have unit length already
    std::span<const std::uint32_t> colors;
    std::span<const SbVec2f> texCoords;
    const std::vector<MoreValues>* more = nullptr; // Not owned.
    std::vector<std::uint32_t> likePositions; ///< of `morePositions`: where they take values from
};

/// Which values of the others a vertex takes: the place of its texture coordinate, and of its
/// position.
struct VertexPlaces {
    std::size_t texCoord = 0;
    std::size_t position = 0;
};
/// Writes one set of values into the extras of a geometry.
class MoreWriter {
public:
    MoreWriter(const MoreValues& values, std::size_t count, SoGeometry& geometry);
    void write(std::size_t vertex, const VertexPlaces& places);

private:
    const MoreValues& m_values; // Not owned.
    std::size_t m_size;         ///< in the number of components
    std::vector<SbVec4f>* m_set = nullptr;
    std::vector<float>* m_attribute = nullptr;
};

/// Gives each vertex what `more` has for it; values beyond the end are the last one.
template <class PlacesOf>
void writeMore(const std::vector<MoreValues>& more, std::size_t count, PlacesOf&& placesOf,
               SoGeometry& geometry)
{
    for (const MoreValues& values : more) {
        MoreWriter writer(values, count, geometry);
        for (std::size_t v = 0; v < count; ++v)
            writer.write(v, placesOf(v));
    }
}

void writeVertices(const VertexTable& table, const VertexSources& sources, SoGeometry& geometry);

/// Texture coordinates from positions: s along the longest side of the box from 0 to 1, t along the
/// second longest in the same measure.
void makeTexCoords(SoGeometry& geometry);

} // namespace kalmyr::detail
