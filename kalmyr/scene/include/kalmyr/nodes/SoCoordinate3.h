#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Positions for the vertex shapes that follow.
class KALMYR_API SoCoordinate3 : public SoNode {
    SO_NODE_HEADER(SoCoordinate3)

public:
    SoCoordinate3();
    static void initClass();

    SoMFVec3f point;

    void doAction(SoAction* action) override;

protected:
    ~SoCoordinate3() override;
};
