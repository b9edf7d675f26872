#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

#include <string>
#include <vector>

namespace kalmyr::detail {

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
