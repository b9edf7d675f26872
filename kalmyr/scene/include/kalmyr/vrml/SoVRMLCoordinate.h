#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Positions for the geometry that holds the node.
class KALMYR_API SoVRMLCoordinate : public SoNode {
    SO_NODE_HEADER(SoVRMLCoordinate)

public:
    SoVRMLCoordinate();
    static void initClass();

    SoMFVec3f point;

protected:
    ~SoVRMLCoordinate() override;
};
