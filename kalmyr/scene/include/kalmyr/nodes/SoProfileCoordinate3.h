#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Homogeneous points in the plane of parameters for the profiles that follow; each is divided by
/// its last component, which rational profiles take as its weight.
class KALMYR_API SoProfileCoordinate3 : public SoNode {
    SO_NODE_HEADER(SoProfileCoordinate3)

public:
    SoProfileCoordinate3();
    static void initClass();

    SoMFVec3f point;

    void doAction(SoAction* action) override;

protected:
    ~SoProfileCoordinate3() override;
};
