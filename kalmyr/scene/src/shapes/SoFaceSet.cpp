#include <kalmyr/shapes/SoFaceSet.h>

SO_NODE_SOURCE(SoFaceSet)

SoFaceSet::SoFaceSet()
{
    SO_NODE_CONSTRUCTOR(SoNonIndexedShape);
    SO_ADD_FIELD(numVertices, (-1));
}

SoFaceSet::~SoFaceSet() = default;

void SoFaceSet::initClass()
{
    SO_NODE_INIT_CLASS(SoFaceSet, SoNonIndexedShape, "FaceSet");
}

void SoFaceSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::FaceInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, {}, input, colors);
    fillHints(state, input);
    const std::vector<std::int32_t> indices =
        makeIndices(numVertices.values(), static_cast<int>(input.positions.size()));
    input.coordIndex = indices;
    input.coordField = "numVertices: position";
    kalmyr::FaceBuilder(input).build(geometry);
}
