#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Moves, turns and scales the texture coordinates of what follows, in three directions. Transforms
/// of one unit accumulate.
class KALMYR_API SoTexture3Transform : public SoNode {
    SO_NODE_HEADER(SoTexture3Transform)

public:
    SoTexture3Transform();
    static void initClass();

    SoSFVec3f translation;
    SoSFRotation rotation;
    SoSFVec3f scaleFactor;
    SoSFRotation scaleOrientation;
    SoSFVec3f center;

    void doAction(SoAction* action) override;

protected:
    ~SoTexture3Transform() override;
};
