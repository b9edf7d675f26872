#include <kalmyr/shapes/SoTriangleSet.h>

#include "FaceIndices.h"

SO_NODE_SOURCE(SoTriangleSet)

SoTriangleSet::SoTriangleSet()
{
    SO_NODE_CONSTRUCTOR(SoNonIndexedShape);
    SO_ADD_FIELD(numTriangles, (-1));
}

SoTriangleSet::~SoTriangleSet() = default;

void SoTriangleSet::initClass()
{
    SO_NODE_INIT_CLASS(SoTriangleSet, SoNonIndexedShape, "TriangleSet");
}

void SoTriangleSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::FaceInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, {}, input, colors);
    fillHints(state, input);
    input.faceSize = 3;
    const std::vector<std::int32_t> indices = kalmyr::detail::faceIndices(
        startIndex.getValue(), numTriangles.getValue(), input.faceSize, input.positions.size());
    input.coordIndex = indices;
    input.coordField = "numTriangles: position";
    kalmyr::FaceBuilder(input).build(geometry);
}
