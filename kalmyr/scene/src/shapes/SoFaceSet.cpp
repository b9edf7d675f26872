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

void SoFaceSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, {}, source);
    fillHints(state, source.input);
    source.kind = kalmyr::ShapeSource::FACES;
    fillIndices(numVertices.values(), source);
    source.input.coordField = "numVertices: position";
}
