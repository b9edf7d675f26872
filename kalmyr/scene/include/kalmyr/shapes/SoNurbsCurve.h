#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

/// A curve from control points and knots, drawn as a line that follows it as closely as the
/// complexity asks for. The control points are the coordinates of the state, the first ones;
/// homogeneous ones (SoCoordinate4) have weights. The order is the number of knots less that of
/// control points. A curve whose knots do not fit, or with weights not above 0, is reported and not
/// drawn.
class KALMYR_API SoNurbsCurve : public SoShape {
    SO_NODE_HEADER(SoNurbsCurve)

public:
    SoNurbsCurve();
    static void initClass();

    SoSFInt32 numControlPoints;
    SoMFFloat knotVector;

protected:
    ~SoNurbsCurve() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
};
