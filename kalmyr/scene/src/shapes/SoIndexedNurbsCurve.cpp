#include <kalmyr/shapes/SoIndexedNurbsCurve.h>

#include "NurbsBuilder.h"

SO_NODE_SOURCE(SoIndexedNurbsCurve)

SoIndexedNurbsCurve::SoIndexedNurbsCurve()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(numControlPoints, (0));
    SO_ADD_EMPTY_FIELD(coordIndex);
    SO_ADD_EMPTY_FIELD(knotVector);
}

SoIndexedNurbsCurve::~SoIndexedNurbsCurve() = default;

void SoIndexedNurbsCurve::initClass()
{
    SO_NODE_INIT_CLASS(SoIndexedNurbsCurve, SoShape, "IndexedNurbsCurve");
}

void SoIndexedNurbsCurve::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::detail::buildCurveOfState(this, state, coordIndex.values(), numControlPoints.getValue(),
                                      knotVector.values(), geometry);
}

std::uint64_t SoIndexedNurbsCurve::stateKey(SoState* state) const
{
    return kalmyr::detail::nurbsKey(state, false);
}
