#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFNode.h>

/// Material and texture of a shape. A coloured texture takes the place of the diffuse colour.
class KALMYR_API SoVRMLAppearance : public SoNode {
    SO_NODE_HEADER(SoVRMLAppearance)

public:
    SoVRMLAppearance();
    static void initClass();

    SoSFNode material;
    SoSFNode texture;
    SoSFNode textureTransform;

    void doAction(SoAction* action) override;

protected:
    ~SoVRMLAppearance() override;
};
