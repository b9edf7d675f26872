#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Surface properties of what follows. Shapes with a material binding take the values by index
/// from diffuseColor and transparency; of the others the first value counts.
class KALMYR_API SoMaterial : public SoNode {
    SO_NODE_HEADER(SoMaterial)

public:
    SoMaterial();
    static void initClass();

    SoMFColor ambientColor;
    SoMFColor diffuseColor;
    SoMFColor specularColor;
    SoMFColor emissiveColor;
    SoMFFloat shininess;    ///< 0 to 1
    SoMFFloat transparency; ///< 0 opaque to 1

    void doAction(SoAction* action) override;

protected:
    ~SoMaterial() override;
};
