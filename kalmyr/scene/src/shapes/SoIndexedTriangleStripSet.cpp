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

void SoIndexedTriangleStripSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, getIndices(), source);
    fillHints(state, source.input);
    source.kind = kalmyr::ShapeSource::FACES;
    source.input.strips = true;
    source.input.coordIndex = coordIndex.values();
}
