#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Normals for the vertex shapes that follow; they need not have unit length.
class KALMYR_API SoNormal : public SoNode {
    SO_NODE_HEADER(SoNormal)

public:
    SoNormal();
    static void initClass();

    SoMFVec3f vector;

    void doAction(SoAction* action) override;

protected:
    ~SoNormal() override;
};
