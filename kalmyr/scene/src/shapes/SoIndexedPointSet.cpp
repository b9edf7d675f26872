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

void SoIndexedPointSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    if (coordIndex.getNum() == 0)
        return; // no indices would mean all positions to the builder
    kalmyr::VertexInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, getIndices(), input, colors);
    input.coordIndex = coordIndex.values();
    kalmyr::PointBuilder(input).build(geometry);
}
