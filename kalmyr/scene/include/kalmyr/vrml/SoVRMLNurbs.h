#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoCascade.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>
#include <kalmyr/vrml/SoVRMLParent.h>

#include <string>
#include <vector>

/// \file
/// Curves and surfaces of amendment 1 of VRML97. Control points are not multiplied by their
/// weights; weights that are missing are 1. A knot vector that is empty is even, with the curve
/// beginning at the first control point and ending at the last. What cannot be drawn (knots that
/// fall, counts that do not fit, weights not above 0) is reported once and not drawn.
///
/// A tessellation of 0 is as fine as the complexity asks for; a positive one is the number of
/// segments, a negative one that for each control point.

namespace kalmyr::detail {

struct NurbsSurface;
struct NurbsSurfaceInput;

/// Adds and removes nodes of a list by events, as groups do with their children.
class ListEvents {
public:
    ListEvents(SoMFNode& list, SoMFNode& add, SoMFNode& remove);
    ~ListEvents();
    ListEvents(const ListEvents&) = delete;
    ListEvents& operator=(const ListEvents&) = delete;

private:
    void take(SoMFNode& event, bool adds);

    SoMFNode& m_list;
    SoMFNode& m_add;
    SoMFNode& m_remove;
    SoFieldSensor m_addSensor, m_removeSensor;
};

} // namespace kalmyr::detail

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
class KALMYR_API SoVRMLNurbsSurface : public SoVRMLGeometry {
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
    SoSFInt32 uDimension;
    SoMFFloat uKnot;
    SoSFInt32 uOrder;
    SoSFInt32 vDimension;
    SoMFFloat vKnot;
    SoSFInt32 vOrder;

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
class KALMYR_API SoVRMLNurbsTextureSurface : public SoNode {
    SO_NODE_HEADER(SoVRMLNurbsTextureSurface)

public:
    SoVRMLNurbsTextureSurface();
    static void initClass();

    SoMFVec2f controlPoint;
    SoMFFloat weight;
    SoSFInt32 uDimension;
    SoMFFloat uKnot;
    SoSFInt32 uOrder;
    SoSFInt32 vDimension;
    SoMFFloat vKnot;
    SoSFInt32 vOrder;

protected:
    ~SoVRMLNurbsTextureSurface() override;
};

/// A NurbsSurface without what its contours cut off: each a closed line in the surface's
/// parameters, counter-clockwise around what is kept and clockwise around holes.
class KALMYR_API SoVRMLTrimmedSurface : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLTrimmedSurface)

public:
    SoVRMLTrimmedSurface();
    static void initClass();

    SoMFNode trimmingContour;       ///< of Contour2D
    SoSFNode surface;               ///< a NurbsSurface
    SoMFNode addTrimmingContour;    ///< event in
    SoMFNode removeTrimmingContour; ///< event in

protected:
    ~SoVRMLTrimmedSurface() override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;

private:
    kalmyr::detail::ListEvents m_events{trimmingContour, addTrimmingContour, removeTrimmingContour};
};

/// A line in the plane of parameters, made of its children, which are NurbsCurve2D and Polyline2D.
class KALMYR_API SoVRMLContour2D : public SoNode {
    SO_NODE_HEADER(SoVRMLContour2D)

public:
    SoVRMLContour2D();
    static void initClass();

    SoMFNode children;
    SoMFNode addChildren;    ///< event in
    SoMFNode removeChildren; ///< event in

    bool affectsState() const override { return false; }
    /// Appends the line; returns what is wrong with a child.
    std::string addLine(float complexity, std::vector<SbVec2d>& line) const;

protected:
    ~SoVRMLContour2D() override;

private:
    kalmyr::detail::ListEvents m_events{children, addChildren, removeChildren};
};

/// A curve in the plane of parameters. It is divided as finely as the complexity asks for.
class KALMYR_API SoVRMLNurbsCurve2D : public SoNode {
    SO_NODE_HEADER(SoVRMLNurbsCurve2D)

public:
    SoVRMLNurbsCurve2D();
    static void initClass();

    SoMFVec2f controlPoint;
    SoSFInt32 tessellation; ///< kept, without effect
    SoMFFloat weight;
    SoMFFloat knot;
    SoSFInt32 order;

protected:
    ~SoVRMLNurbsCurve2D() override;
};

/// Straight lines in the plane of parameters.
class KALMYR_API SoVRMLPolyline2D : public SoNode {
    SO_NODE_HEADER(SoVRMLPolyline2D)

public:
    SoVRMLPolyline2D();
    static void initClass();

    SoMFVec2f point;

protected:
    ~SoVRMLPolyline2D() override;
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

/// Moves along a curve: setting `set_fraction` sets `value_changed` to the place at that parameter.
class KALMYR_API SoVRMLNurbsPositionInterpolator : public SoNode {
    SO_NODE_HEADER(SoVRMLNurbsPositionInterpolator)

public:
    SoVRMLNurbsPositionInterpolator();
    static void initClass();

    SoSFFloat set_fraction; ///< event in; taken to the nearest parameter of the curve
    SoSFInt32 dimension;    ///< number of control points; 0: as many as there are
    SoMFVec3f keyValue;
    SoMFFloat keyWeight;
    SoMFFloat knot;
    SoSFInt32 order;
    SoSFVec3f value_changed; ///< event out

    bool affectsState() const override { return false; }

protected:
    ~SoVRMLNurbsPositionInterpolator() override;

private:
    void follow();

    SoFieldSensor m_sensor;
    SoCascade m_cascade;
};

/// Bends coordinates as a lattice of control points is bent: the points of each node in
/// `inputCoord`, carried by the Transform of the same place in `inputTransform`, are parameters u,
/// v, w of the lattice; where that leads is set in the node of the same place in `outputCoord`,
/// inside the call that changes any of these. The children are drawn.
class KALMYR_API SoVRMLCoordinateDeformer : public SoVRMLParent {
    SO_NODE_HEADER(SoVRMLCoordinateDeformer)

public:
    SoVRMLCoordinateDeformer();
    static void initClass();

    SoMFVec3f controlPoint;
    SoMFNode inputCoord;
    SoMFNode inputTransform;
    SoMFNode outputCoord;
    SoMFFloat weight;
    SoSFInt32 uDimension;
    SoMFFloat uKnot;
    SoSFInt32 uOrder;
    SoSFInt32 vDimension;
    SoMFFloat vKnot;
    SoSFInt32 vOrder;
    SoSFInt32 wDimension;
    SoMFFloat wKnot;
    SoSFInt32 wOrder;

    /// Sets the points of the output; readers call it when the node is whole. False, reported, when
    /// the lattice cannot be used.
    bool deform();

protected:
    ~SoVRMLCoordinateDeformer() override;

private:
    SoFieldSensor m_sensors[4];
    bool m_isBusy = false;
};
