#include <kalmyr/shapes/SoNurbsSurfaceShape.h>

#include "NurbsBuilder.h"

SO_NODE_SOURCE(SoNurbsSurfaceShape)

SoNurbsSurfaceShape::SoNurbsSurfaceShape()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(numUControlPoints, (0));
    SO_ADD_FIELD(numVControlPoints, (0));
    SO_ADD_FIELD(numSControlPoints, (0));
    SO_ADD_FIELD(numTControlPoints, (0));
    SO_ADD_EMPTY_FIELD(uKnotVector);
    SO_ADD_EMPTY_FIELD(vKnotVector);
    SO_ADD_EMPTY_FIELD(sKnotVector);
    SO_ADD_EMPTY_FIELD(tKnotVector);
}

SoNurbsSurfaceShape::~SoNurbsSurfaceShape() = default;

void SoNurbsSurfaceShape::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoNurbsSurfaceShape, SoShape, "NurbsSurfaceShape");
}

void SoNurbsSurfaceShape::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::detail::SurfaceFields fields;
    fields.indices = getPointIndices();
    fields.textureIndices = getTexturePointIndices();
    fields.numU = numUControlPoints.getValue();
    fields.numV = numVControlPoints.getValue();
    fields.numS = numSControlPoints.getValue();
    fields.numT = numTControlPoints.getValue();
    fields.u = uKnotVector.values();
    fields.v = vKnotVector.values();
    fields.s = sKnotVector.values();
    fields.t = tKnotVector.values();
    kalmyr::detail::buildSurfaceOfState(this, state, fields, geometry);
}

std::uint64_t SoNurbsSurfaceShape::stateKey(SoState* state) const
{
    return kalmyr::detail::nurbsKey(state, true);
}
