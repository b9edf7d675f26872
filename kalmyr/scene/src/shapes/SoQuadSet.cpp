#include <kalmyr/shapes/SoQuadSet.h>

#include "FaceIndices.h"

SO_NODE_SOURCE(SoQuadSet)

SoQuadSet::SoQuadSet()
{
    SO_NODE_CONSTRUCTOR(SoNonIndexedShape);
    SO_ADD_FIELD(numQuads, (-1));
}

SoQuadSet::~SoQuadSet() = default;

void SoQuadSet::initClass()
{
    SO_NODE_INIT_CLASS(SoQuadSet, SoNonIndexedShape, "QuadSet");
}

void SoQuadSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::FaceInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, {}, input, colors);
    fillHints(state, input);
    input.faceSize = 4;
    const std::vector<std::int32_t> indices = kalmyr::detail::faceIndices(
        startIndex.getValue(), numQuads.getValue(), input.faceSize, input.positions.size());
    input.coordIndex = indices;
    input.coordField = "numQuads: position";
    kalmyr::FaceBuilder(input).build(geometry);
}
