#include <kalmyr/shapes/SoIndexedQuadSet.h>

SO_NODE_SOURCE(SoIndexedQuadSet)

SoIndexedQuadSet::SoIndexedQuadSet()
{
    SO_NODE_CONSTRUCTOR(SoIndexedShape);
}

SoIndexedQuadSet::~SoIndexedQuadSet() = default;

void SoIndexedQuadSet::initClass()
{
    SO_NODE_INIT_CLASS(SoIndexedQuadSet, SoIndexedShape, "IndexedQuadSet");
}

void SoIndexedQuadSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::FaceInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, getIndices(), input, colors);
    fillHints(state, input);
    input.faceSize = 4;
    input.coordIndex = coordIndex.values();
    kalmyr::FaceBuilder(input).build(geometry);
}
