#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

#include <cstdint>
#include <span>

/// Base of surfaces from a net of control points and knots in two directions, drawn as triangles
/// that follow them as closely as the complexity asks for, with normals of their own. The control
/// points are coordinates of the state, those of one v after another; homogeneous ones
/// (SoCoordinate4) have weights. An order is the number of knots less that of control points in its
/// direction.
///
/// Profiles before it trim the surface, in its parameters. Texture coordinates are the parameters
/// from 0 to 1, or a surface over the texture coordinates of the state with knots s and t, which
/// takes the same parameters. Seen from the outside u runs right and v up; with clockwise shape
/// hints it is the other side. The face of a detail is the patch between knots, row by row.
///
/// A surface whose knots do not fit, or with weights not above 0, is reported and not drawn. One
/// that would come to more than a million vertices is drawn more coarsely.
class KALMYR_API SoNurbsSurfaceShape : public SoShape {
    SO_NODE_HEADER(SoNurbsSurfaceShape)

public:
    static void initClass();

    SoSFInt32 numUControlPoints;
    SoSFInt32 numVControlPoints;
    SoSFInt32 numSControlPoints; ///< of the texture; 0: none of its own
    SoSFInt32 numTControlPoints;
    SoMFFloat uKnotVector;
    SoMFFloat vKnotVector;
    SoMFFloat sKnotVector;
    SoMFFloat tKnotVector;

protected:
    SoNurbsSurfaceShape();
    ~SoNurbsSurfaceShape() override;

    /// Which coordinates, and texture coordinates, are the control points; empty: all in order.
    virtual std::span<const std::int32_t> getPointIndices() const { return {}; }
    virtual std::span<const std::int32_t> getTexturePointIndices() const { return {}; }

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
};
