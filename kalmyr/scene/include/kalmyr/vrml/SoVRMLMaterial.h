#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// How a surface answers to light.
class KALMYR_API SoVRMLMaterial : public SoNode {
    SO_NODE_HEADER(SoVRMLMaterial)

public:
    SoVRMLMaterial();
    static void initClass();

    SoSFFloat ambientIntensity; ///< share of the diffuse colour, 0 to 1
    SoSFColor diffuseColor;
    SoSFColor emissiveColor;
    SoSFFloat shininess; ///< 0 to 1
    SoSFColor specularColor;
    SoSFFloat transparency; ///< 0 opaque to 1

    void doAction(SoAction* action) override;

protected:
    ~SoVRMLMaterial() override;
};
