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

void SoIndexedQuadSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, getIndices(), source);
    fillHints(state, source.input);
    source.kind = kalmyr::ShapeSource::FACES;
    source.input.faceSize = 4;
    source.input.coordIndex = coordIndex.values();
}
