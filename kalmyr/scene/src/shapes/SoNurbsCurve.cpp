#include <kalmyr/shapes/SoNurbsCurve.h>

#include "NurbsBuilder.h"

SO_NODE_SOURCE(SoNurbsCurve)

SoNurbsCurve::SoNurbsCurve()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_FIELD(numControlPoints, (0));
    SO_ADD_EMPTY_FIELD(knotVector);
}

SoNurbsCurve::~SoNurbsCurve() = default;

void SoNurbsCurve::initClass()
{
    SO_NODE_INIT_CLASS(SoNurbsCurve, SoShape, "NurbsCurve");
}

void SoNurbsCurve::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::detail::buildCurveOfState(this, state, {}, numControlPoints.getValue(),
                                      knotVector.values(), geometry);
}

std::uint64_t SoNurbsCurve::stateKey(SoState* state) const
{
    return kalmyr::detail::nurbsKey(state, false);
}
