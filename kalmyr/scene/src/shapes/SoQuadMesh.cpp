#include <kalmyr/shapes/SoQuadMesh.h>

#include <algorithm>

namespace {

template <class T>
void countByGrid(kalmyr::Attribute<T>& attribute, std::span<const std::int32_t> indices)
{
    if (attribute.binding != SoBinding::PER_VERTEX)
        return;
    attribute.binding = SoBinding::PER_VERTEX_INDEXED;
    attribute.indices = indices;
    attribute.indexField = "value of vertex";
}

} // namespace

SO_NODE_SOURCE(SoQuadMesh)

SoQuadMesh::SoQuadMesh()
{
    SO_NODE_CONSTRUCTOR(SoNonIndexedShape);
    SO_ADD_FIELD(verticesPerColumn, (1));
    SO_ADD_FIELD(verticesPerRow, (1));
}

SoQuadMesh::~SoQuadMesh() = default;

void SoQuadMesh::initClass()
{
    SO_NODE_INIT_CLASS(SoQuadMesh, SoNonIndexedShape, "QuadMesh");
}

void SoQuadMesh::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::FaceInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, {}, input, colors);
    fillHints(state, input);
    const auto numPositions = static_cast<std::int64_t>(input.positions.size());
    const std::int64_t columns =
        std::min<std::int64_t>(verticesPerRow.getValue(), numPositions + 1);
    if (columns < 2 || verticesPerColumn.getValue() < 2)
        return;
    // One row beyond the positions is enough for the builder to complain.
    const std::int64_t rows =
        std::min<std::int64_t>(verticesPerColumn.getValue(), numPositions / columns + 2);
    const std::int64_t first = startIndex.getValue();
    std::vector<std::int32_t> positions, values;
    for (std::int64_t r = 0; r + 1 < rows; ++r) {
        for (std::int64_t c = 0; c < 2 * columns; ++c) {
            const std::int64_t vertex = (r + c % 2) * columns + c / 2;
            values.push_back(static_cast<std::int32_t>(vertex));
            // A position -1 would read as the end of a row; it is out of range like -2.
            const std::int64_t position = first + vertex;
            positions.push_back(static_cast<std::int32_t>(position == -1 ? -2 : position));
        }
        values.push_back(-1);
        positions.push_back(-1);
    }
    input.coordIndex = positions;
    input.coordField = "position";
    input.quadStrips = true;
    // Two rows of quadrilaterals share their vertices, so values are counted by the grid.
    countByGrid(input.normals, values);
    countByGrid(input.colors, values);
    countByGrid(input.texCoords, values);
    kalmyr::FaceBuilder(input).build(geometry);
}
