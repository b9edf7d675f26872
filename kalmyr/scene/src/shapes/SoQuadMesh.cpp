#include <kalmyr/shapes/SoQuadMesh.h>

#include <algorithm>

namespace {

template <class T>
void countByGrid(kalmyr::Attribute<T>& attribute, std::int32_t first)
{
    if (attribute.binding != SoBinding::PER_VERTEX)
        return;
    attribute.binding = SoBinding::PER_VERTEX_INDEXED;
    attribute.firstCoord = first;
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

void SoQuadMesh::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, {}, source);
    kalmyr::FaceInput& input = source.input;
    fillHints(state, input);
    const auto numPositions = static_cast<std::int64_t>(input.positions.size());
    const std::int64_t columns =
        std::min<std::int64_t>(verticesPerRow.getValue(), numPositions + 1);
    if (columns < 2 || verticesPerColumn.getValue() < 2)
        return;
    source.kind = kalmyr::ShapeSource::FACES;
    input.coordField = "position";
    input.quadStrips = true;
    const std::int32_t first = startIndex.getValue();
    // Two rows of quadrilaterals share their vertices, so values are counted by the grid.
    countByGrid(input.normals, first);
    countByGrid(input.colors, first);
    countByGrid(input.texCoords, first);
    if (!source.wantsLists())
        return;
    // One row beyond the positions is enough for the builder to complain.
    const std::int64_t rows =
        std::min<std::int64_t>(verticesPerColumn.getValue(), numPositions / columns + 2);
    for (std::int64_t r = 0; r + 1 < rows; ++r) {
        for (std::int64_t c = 0; c < 2 * columns; ++c) {
            // A position -1 would read as the end of a row; it is out of range like -2.
            const std::int64_t position = first + (r + c % 2) * columns + c / 2;
            source.coordIndex.push_back(static_cast<std::int32_t>(position == -1 ? -2 : position));
        }
        source.coordIndex.push_back(-1);
    }
    input.coordIndex = source.coordIndex;
}
