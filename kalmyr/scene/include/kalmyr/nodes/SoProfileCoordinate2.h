#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Points in the plane of parameters for the profiles that follow.
class KALMYR_API SoProfileCoordinate2 : public SoNode {
    SO_NODE_HEADER(SoProfileCoordinate2)

public:
    SoProfileCoordinate2();
    static void initClass();

    SoMFVec2f point;

    void doAction(SoAction* action) override;

protected:
    ~SoProfileCoordinate2() override;
};
