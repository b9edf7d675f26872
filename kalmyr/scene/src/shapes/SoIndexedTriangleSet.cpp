#include <kalmyr/shapes/SoIndexedTriangleSet.h>

SO_NODE_SOURCE(SoIndexedTriangleSet)

SoIndexedTriangleSet::SoIndexedTriangleSet()
{
    SO_NODE_CONSTRUCTOR(SoIndexedShape);
}

SoIndexedTriangleSet::~SoIndexedTriangleSet() = default;

void SoIndexedTriangleSet::initClass()
{
    SO_NODE_INIT_CLASS(SoIndexedTriangleSet, SoIndexedShape, "IndexedTriangleSet");
}

void SoIndexedTriangleSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::FaceInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, getIndices(), input, colors);
    fillHints(state, input);
    input.faceSize = 3;
    input.coordIndex = coordIndex.values();
    kalmyr::FaceBuilder(input).build(geometry);
}
