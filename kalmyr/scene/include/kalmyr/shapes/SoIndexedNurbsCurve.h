#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

/// A curve from control points and knots, drawn as a line that follows it as closely as the
/// complexity asks for. The control points are the coordinates of the state, those that coordIndex
/// names; homogeneous ones (SoCoordinate4) have weights. The order is the number of knots less that
/// of control points. A curve whose knots do not fit, or with weights not above 0, is reported and
/// not drawn.
class KALMYR_API SoIndexedNurbsCurve : public SoShape {
    SO_NODE_HEADER(SoIndexedNurbsCurve)

public:
    SoIndexedNurbsCurve();
    static void initClass();

    SoSFInt32 numControlPoints;
    SoMFInt32 coordIndex;
    SoMFFloat knotVector;

protected:
    ~SoIndexedNurbsCurve() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
};
