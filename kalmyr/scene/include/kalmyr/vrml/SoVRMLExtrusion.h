#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

/// A cross section moved along a spine. It stands square to the spine at every point, is scaled and
/// turned by the entry of `scale` and `orientation` for that point, or by the only entry.
class KALMYR_API SoVRMLExtrusion : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLExtrusion)

public:
    SoVRMLExtrusion();
    static void initClass();

    SoSFBool beginCap;
    SoSFBool ccw;
    SoSFBool convex;
    SoSFFloat creaseAngle; ///< radians
    SoMFVec2f crossSection;
    SoSFBool endCap;
    SoMFRotation orientation;
    SoMFVec2f scale;
    SoSFBool solid;
    SoMFVec3f spine;
    SoMFVec2f set_crossSection;   ///< event in
    SoMFRotation set_orientation; ///< event in
    SoMFVec2f set_scale;          ///< event in
    SoMFVec3f set_spine;          ///< event in

protected:
    ~SoVRMLExtrusion() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
};
