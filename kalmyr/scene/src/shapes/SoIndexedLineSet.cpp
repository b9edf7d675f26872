#include <kalmyr/shapes/SoIndexedLineSet.h>

SO_NODE_SOURCE(SoIndexedLineSet)

SoIndexedLineSet::SoIndexedLineSet()
{
    SO_NODE_CONSTRUCTOR(SoIndexedShape);
}

SoIndexedLineSet::~SoIndexedLineSet() = default;

void SoIndexedLineSet::initClass()
{
    SO_NODE_INIT_CLASS(SoIndexedLineSet, SoIndexedShape, "IndexedLineSet");
}

void SoIndexedLineSet::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::VertexInput input;
    std::vector<std::uint32_t> colors;
    fillInput(state, getIndices(), input, colors);
    input.coordIndex = coordIndex.values();
    kalmyr::LineBuilder(input).build(geometry);
}
