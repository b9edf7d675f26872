#pragma once

#include <kalmyr/base/SbImage.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Base of the textures.
class KALMYR_API SoVRMLTexture : public SoNode {
    SO_NODE_HEADER(SoVRMLTexture)

public:
    static void initClass();

    SoSFBool repeatS;
    SoSFBool repeatT;

    /// The picture that the node shows now; a null image when there is none.
    virtual const SbImage& getPicture() = 0;
    void doAction(SoAction* action) override;

protected:
    ~SoVRMLTexture() override;
    SoVRMLTexture();
};
