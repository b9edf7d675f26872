#include <kalmyr/shapes/SoTriangleSet.h>

#include "FaceIndices.h"

SO_NODE_SOURCE(SoTriangleSet)

SoTriangleSet::SoTriangleSet()
{
    SO_NODE_CONSTRUCTOR(SoNonIndexedShape);
    SO_ADD_FIELD(numTriangles, (-1));
}

SoTriangleSet::~SoTriangleSet() = default;

void SoTriangleSet::initClass()
{
    SO_NODE_INIT_CLASS(SoTriangleSet, SoNonIndexedShape, "TriangleSet");
}

void SoTriangleSet::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    fillInput(state, {}, source);
    fillHints(state, source.input);
    source.kind = kalmyr::ShapeSource::FACES;
    source.input.faceSize = 3;
    source.input.coordField = "numTriangles: position";
    if (!source.wantsLists())
        return;
    source.coordIndex =
        kalmyr::detail::faceIndices(startIndex.getValue(), numTriangles.getValue(),
                                    source.input.faceSize, source.input.positions.size());
    source.input.coordIndex = source.coordIndex;
}
