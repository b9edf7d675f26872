#pragma once

#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

/// Polylines from indexed positions; -1 ends each. Lines are not lit.
class KALMYR_API SoVRMLIndexedLineSet : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLIndexedLineSet)

public:
    SoVRMLIndexedLineSet();
    static void initClass();

    SoSFNode color;
    SoSFNode coord;
    SoMFInt32 colorIndex;
    SoSFBool colorPerVertex;
    SoMFInt32 coordIndex;
    SoMFInt32 set_colorIndex; ///< event in
    SoMFInt32 set_coordIndex; ///< event in

    bool isLit() const override { return false; }

protected:
    ~SoVRMLIndexedLineSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
    std::uint64_t stateKey(SoState* state) const override;
};
