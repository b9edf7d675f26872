#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/elements/SoLightElement.h>
#include <kalmyr/fields/SoValueFields.h>

/// Base of the lights. A light shines on what follows it in its group.
class KALMYR_API SoVRMLLight : public SoNode {
    SO_NODE_HEADER(SoVRMLLight)

public:
    static void initClass();

    SoSFFloat ambientIntensity; ///< 0 to 1
    SoSFColor color;
    SoSFFloat intensity; ///< 0 to 1
    SoSFBool on;

    /// Appends the light's parameters to those of the state unless it is off.
    void doAction(SoAction* action) override;

protected:
    ~SoVRMLLight() override;
    SoVRMLLight();
    /// Kind, position, direction and what else is the concrete light's own.
    virtual void describe(SoLightRecord& record) const = 0;
};
