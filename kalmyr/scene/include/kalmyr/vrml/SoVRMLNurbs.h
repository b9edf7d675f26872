#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>
#include <kalmyr/vrml/SoVRMLParent.h>

#include <string>

/// \file
/// Curves and surfaces of amendment 1 of VRML97. Control points are not multiplied by their
/// weights; weights that are missing are 1. A knot vector that is empty is even, with the curve
/// beginning at the first control point and ending at the last. What cannot be drawn (knots that
/// fall, counts that do not fit, weights not above 0) is reported once and not drawn; without
/// control points nothing is drawn, and nothing said.
///
/// A tessellation of 0 is as fine as the complexity asks for; a positive one is the number of
/// segments, a negative one that for each control point.

namespace kalmyr {

/// The fields of nodes with a net of control points along u and v.
struct NurbsNetFields {
    SoSFInt32 uDimension; ///< number of control points
    SoMFFloat uKnot;
    SoSFInt32 uOrder;
    SoSFInt32 vDimension; ///< number of control points
    SoMFFloat vKnot;
    SoSFInt32 vOrder;
};

namespace detail {
struct NurbsSurface;
struct NurbsSurfaceInput;
} // namespace detail

} // namespace kalmyr

/// A curve in space; it is not lit.
class KALMYR_API SoVRMLNurbsCurve : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLNurbsCurve)

public:
    SoVRMLNurbsCurve();
    static void initClass();

    SoMFVec3f controlPoint;
    SoMFFloat weight;
    SoSFInt32 tessellation;
    SoMFFloat knot;
    SoSFInt32 order;

    bool isLit() const override { return false; }

protected:
    ~SoVRMLNurbsCurve() override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
};

/// A surface over a net of control points, row by row along u. Texture coordinates are the
/// parameters from 0 to 1, or come from `texCoord`: a TextureCoordinate with one value for each
/// control point, or a NurbsTextureSurface.
class KALMYR_API SoVRMLNurbsSurface : public SoVRMLGeometry, public kalmyr::NurbsNetFields {
    SO_NODE_HEADER(SoVRMLNurbsSurface)

public:
    SoVRMLNurbsSurface();
    static void initClass();

    SoMFVec3f controlPoint;
    SoSFNode texCoord;
    SoSFInt32 uTessellation;
    SoSFInt32 vTessellation;
    SoMFFloat weight;
    SoSFBool ccw;
    SoSFBool solid;

    /// For the shapes that draw it: the surface, what there is to say against it, and the surface
    /// of its texture coordinates, which `input` then refers to.
    std::string fill(SoState* state, kalmyr::detail::NurbsSurfaceInput& input,
                     kalmyr::detail::NurbsSurface& texture) const;

protected:
    ~SoVRMLNurbsSurface() override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
};

/// Texture coordinates as a surface, over the same parameters as the surface that uses them.
class KALMYR_API SoVRMLNurbsTextureSurface : public SoNode, public kalmyr::NurbsNetFields {
    SO_NODE_HEADER(SoVRMLNurbsTextureSurface)

public:
    SoVRMLNurbsTextureSurface();
    static void initClass();

    SoMFVec2f controlPoint;
    SoMFFloat weight;

protected:
    ~SoVRMLNurbsTextureSurface() override;
};

/// Surfaces that are divided more finely or coarsely, all by one scale: twice as many segments
/// for 2. Within the limits of the complexity, and for those with a tessellation of 0.
class KALMYR_API SoVRMLNurbsGroup : public SoVRMLParent {
    SO_NODE_HEADER(SoVRMLNurbsGroup)

public:
    SoVRMLNurbsGroup();
    static void initClass();

    SoSFFloat tessellationScale;

protected:
    ~SoVRMLNurbsGroup() override;
    void setState(SoState* state) override;
};
