#include <kalmyr/shapes/SoIndexedFaceSet.h>

SO_NODE_SOURCE(SoIndexedFaceSet)

SoIndexedFaceSet::SoIndexedFaceSet()
{
    SO_NODE_CONSTRUCTOR(SoIndexedShape);
}

SoIndexedFaceSet::~SoIndexedFaceSet() = default;

void SoIndexedFaceSet::initClass()
{
    SO_NODE_INIT_CLASS(SoIndexedFaceSet, SoIndexedShape, "IndexedFaceSet");
}

void SoIndexedFaceSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::FaceInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, getIndices(), input, colors);
    fillHints(state, input);
    input.coordIndex = coordIndex.values();
    kalmyr::FaceBuilder(input).build(geometry);
}
