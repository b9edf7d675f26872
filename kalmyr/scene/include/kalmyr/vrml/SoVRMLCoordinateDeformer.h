#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/vrml/SoVRMLNurbs.h>
#include <kalmyr/vrml/SoVRMLParent.h>

/// Bends coordinates as a lattice of control points is bent: the points of each node in
/// `inputCoord`, carried by the Transform of the same place in `inputTransform`, are parameters u,
/// v, w of the lattice; where that leads is set in the node of the same place in `outputCoord`,
/// inside the call that changes any of these. The children are drawn.
class KALMYR_API SoVRMLCoordinateDeformer : public SoVRMLParent, public kalmyr::NurbsNetFields {
    SO_NODE_HEADER(SoVRMLCoordinateDeformer)

public:
    SoVRMLCoordinateDeformer();
    static void initClass();

    SoMFVec3f controlPoint;
    SoMFNode inputCoord;
    SoMFNode inputTransform;
    SoMFNode outputCoord;
    SoMFFloat weight;
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
