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

void SoTriangleStripSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, {}, source);
    fillHints(state, source.input);
    source.kind = kalmyr::ShapeSource::FACES;
    source.input.strips = true;
    fillIndices(numVertices.values(), source);
    source.input.coordField = "numVertices: position";
}
