#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Moves, turns about `center` and scales texture coordinates, in this order.
class KALMYR_API SoVRMLTextureTransform : public SoNode {
    SO_NODE_HEADER(SoVRMLTextureTransform)

public:
    SoVRMLTextureTransform();
    static void initClass();

    SoSFVec2f center;
    SoSFFloat rotation; ///< radians
    SoSFVec2f scale;
    SoSFVec2f translation;

    void doAction(SoAction* action) override;

protected:
    ~SoVRMLTextureTransform() override;
};
