#include <kalmyr/shapes/SoQuadSet.h>

#include "FaceIndices.h"

SO_NODE_SOURCE(SoQuadSet)

SoQuadSet::SoQuadSet()
{
    SO_NODE_CONSTRUCTOR(SoNonIndexedShape);
    SO_ADD_FIELD(numQuads, (-1));
}

SoQuadSet::~SoQuadSet() = default;

void SoQuadSet::initClass()
{
    SO_NODE_INIT_CLASS(SoQuadSet, SoNonIndexedShape, "QuadSet");
}

void SoQuadSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, {}, source);
    fillHints(state, source.input);
    source.kind = kalmyr::ShapeSource::FACES;
    source.input.faceSize = 4;
    source.input.coordField = "numQuads: position";
    if (!source.wantsLists())
        return;
    source.coordIndex =
        kalmyr::detail::faceIndices(startIndex.getValue(), numQuads.getValue(),
                                    source.input.faceSize, source.input.positions.size());
    source.input.coordIndex = source.coordIndex;
}
