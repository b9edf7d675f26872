#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

/// A box about the origin.
class KALMYR_API SoVRMLBox : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLBox)

public:
    SoVRMLBox();
    static void initClass();

    SoSFVec3f size;

protected:
    ~SoVRMLBox() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
};
