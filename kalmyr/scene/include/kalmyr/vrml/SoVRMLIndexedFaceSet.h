#pragma once

#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

/// Polygons from indexed positions; -1 ends each.
class KALMYR_API SoVRMLIndexedFaceSet : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLIndexedFaceSet)

public:
    SoVRMLIndexedFaceSet();
    static void initClass();

    SoSFNode color;
    SoSFNode coord;
    SoSFNode normal;
    SoSFNode texCoord;
    SoSFBool ccw;
    SoMFInt32 colorIndex;
    SoSFBool colorPerVertex;
    SoSFBool convex;
    SoMFInt32 coordIndex;
    SoSFFloat creaseAngle; ///< radians
    SoMFInt32 normalIndex;
    SoSFBool normalPerVertex;
    SoSFBool solid;
    SoMFInt32 texCoordIndex;
    SoMFInt32 set_colorIndex;    ///< event in
    SoMFInt32 set_coordIndex;    ///< event in
    SoMFInt32 set_normalIndex;   ///< event in
    SoMFInt32 set_texCoordIndex; ///< event in

protected:
    ~SoVRMLIndexedFaceSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
    std::uint64_t stateKey(SoState* state) const override;
};
