#include <kalmyr/shapes/SoLineSet.h>

SO_NODE_SOURCE(SoLineSet)

SoLineSet::SoLineSet()
{
    SO_NODE_CONSTRUCTOR(SoNonIndexedShape);
    SO_ADD_FIELD(numVertices, (-1));
}

SoLineSet::~SoLineSet() = default;

void SoLineSet::initClass()
{
    SO_NODE_INIT_CLASS(SoLineSet, SoNonIndexedShape, "LineSet");
}

void SoLineSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::VertexInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, {}, input, colors);
    const std::vector<std::int32_t> indices =
        makeIndices(numVertices.values(), static_cast<int>(input.positions.size()));
    input.coordIndex = indices;
    input.coordField = "numVertices: position";
    kalmyr::LineBuilder(input).build(geometry);
}
