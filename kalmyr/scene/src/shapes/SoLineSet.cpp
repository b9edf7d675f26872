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

void SoLineSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, {}, source);
    source.kind = kalmyr::ShapeSource::LINES;
    fillIndices(numVertices.values(), source);
    source.input.coordField = "numVertices: position";
}
