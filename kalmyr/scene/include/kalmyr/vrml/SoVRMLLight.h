#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/elements/SoLightElement.h>
#include <kalmyr/fields/SoValueFields.h>

/// Base of the lights. Renderers let point and spot lights shine on the whole scene, and
/// directional lights on all of their group. For other actions a light counts for what follows it.
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

    /// The light as it stands under the state's model matrix; false when it is off.
    bool getRecord(SoState* state, SoLightRecord& record) const;

protected:
    ~SoVRMLLight() override;
    SoVRMLLight();
    /// Kind, position, direction and what else is the concrete light's own.
    virtual void describe(SoLightRecord& record) const = 0;
};
