#include <kalmyr/shapes/SoIndexedTriangleStripSet.h>

SO_NODE_SOURCE(SoIndexedTriangleStripSet)

SoIndexedTriangleStripSet::SoIndexedTriangleStripSet()
{
    SO_NODE_CONSTRUCTOR(SoIndexedShape);
}

SoIndexedTriangleStripSet::~SoIndexedTriangleStripSet() = default;

void SoIndexedTriangleStripSet::initClass()
{
    SO_NODE_INIT_CLASS(SoIndexedTriangleStripSet, SoIndexedShape, "IndexedTriangleStripSet");
}

void SoIndexedTriangleStripSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::FaceInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, getIndices(), input, colors);
    fillHints(state, input);
    input.strips = true;
    input.coordIndex = coordIndex.values();
    kalmyr::FaceBuilder(input).build(geometry);
}
