#include <kalmyr/shapes/SoPointSet.h>

SO_NODE_SOURCE(SoPointSet)

SoPointSet::SoPointSet()
{
    SO_NODE_CONSTRUCTOR(SoNonIndexedShape);
    SO_ADD_FIELD(numPoints, (-1));
}

SoPointSet::~SoPointSet() = default;

void SoPointSet::initClass()
{
    SO_NODE_INIT_CLASS(SoPointSet, SoNonIndexedShape, "PointSet");
}

void SoPointSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, {}, source);
    const std::int32_t count = numPoints.getValue();
    fillIndices({&count, 1}, source);
    if (source.wantsLists() && source.coordIndex.size() <= 1)
        return; // no indices would mean all positions to the builder
    source.kind = kalmyr::ShapeSource::POINTS;
    source.input.coordField = "numPoints: position";
}
