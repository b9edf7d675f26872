#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Normals for the geometry that holds the node.
class KALMYR_API SoVRMLNormal : public SoNode {
    SO_NODE_HEADER(SoVRMLNormal)

public:
    SoVRMLNormal();
    static void initClass();

    SoMFVec3f vector;

protected:
    ~SoVRMLNormal() override;
};
