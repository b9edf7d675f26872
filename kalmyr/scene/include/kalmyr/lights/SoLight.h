#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/elements/SoLightElement.h>
#include <kalmyr/fields/SoValueFields.h>

/// Base of lights. A light shines on what follows it, up to the end of the separator it stands in.
class KALMYR_API SoLight : public SoNode {
    SO_NODE_HEADER(SoLight)

public:
    static void initClass();

    SoSFBool on;
    SoSFFloat intensity; ///< 0 to 1
    SoSFColor color;

    /// Appends the light's parameters to those of the state unless it is off.
    void doAction(SoAction* action) override;

protected:
    SoLight();
    ~SoLight() override;

    /// Kind, position, direction and what else is the concrete light's own.
    virtual void describe(SoLightRecord& record) const = 0;
};
