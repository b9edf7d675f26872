#include <kalmyr/shapes/SoIndexedPointSet.h>

SO_NODE_SOURCE(SoIndexedPointSet)

SoIndexedPointSet::SoIndexedPointSet()
{
    SO_NODE_CONSTRUCTOR(SoIndexedShape);
    // One index is a point already, and a new node may have no positions.
    coordIndex.initValues({});
}

SoIndexedPointSet::~SoIndexedPointSet() = default;

void SoIndexedPointSet::initClass()
{
    SO_NODE_INIT_CLASS(SoIndexedPointSet, SoIndexedShape, "IndexedPointSet");
}

void SoIndexedPointSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    if (coordIndex.getNum() == 0)
        return; // no indices would mean all positions to the builder
    fillInput(state, getIndices(), source);
    source.kind = kalmyr::ShapeSource::POINTS;
    source.input.coordIndex = coordIndex.values();
}
