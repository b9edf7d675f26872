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

void SoIndexedLineSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, getIndices(), source);
    source.kind = kalmyr::ShapeSource::LINES;
    source.input.coordIndex = coordIndex.values();
}
