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

void SoPointSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::VertexInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, {}, input, colors);
    const std::int32_t count = numPoints.getValue();
    const std::vector<std::int32_t> indices =
        makeIndices({&count, 1}, static_cast<int>(input.positions.size()));
    if (indices.size() <= 1)
        return; // no indices would mean all positions to the builder
    input.coordIndex = indices;
    input.coordField = "numPoints: position";
    kalmyr::PointBuilder(input).build(geometry);
}
