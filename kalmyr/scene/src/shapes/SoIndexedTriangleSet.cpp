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

void SoIndexedTriangleSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, getIndices(), source);
    fillHints(state, source.input);
    source.kind = kalmyr::ShapeSource::FACES;
    source.input.faceSize = 3;
    source.input.coordIndex = coordIndex.values();
}
