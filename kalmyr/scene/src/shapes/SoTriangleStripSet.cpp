#include <kalmyr/shapes/SoTriangleStripSet.h>

SO_NODE_SOURCE(SoTriangleStripSet)

SoTriangleStripSet::SoTriangleStripSet()
{
    SO_NODE_CONSTRUCTOR(SoNonIndexedShape);
    SO_ADD_FIELD(numVertices, (-1));
}

SoTriangleStripSet::~SoTriangleStripSet() = default;

void SoTriangleStripSet::initClass()
{
    SO_NODE_INIT_CLASS(SoTriangleStripSet, SoNonIndexedShape, "TriangleStripSet");
}

void SoTriangleStripSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::FaceInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, {}, input, colors);
    fillHints(state, input);
    input.strips = true;
    const std::vector<std::int32_t> indices =
        makeIndices(numVertices.values(), static_cast<int>(input.positions.size()));
    input.coordIndex = indices;
    input.coordField = "numVertices: position";
    kalmyr::FaceBuilder(input).build(geometry);
}
