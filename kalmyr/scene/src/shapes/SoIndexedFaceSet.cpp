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

void SoIndexedFaceSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, getIndices(), source);
    fillHints(state, source.input);
    source.kind = kalmyr::ShapeSource::FACES;
    source.input.coordIndex = coordIndex.values();
}
