#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Sets the diffuse colours of what follows and nothing else of the material.
class KALMYR_API SoBaseColor : public SoNode {
    SO_NODE_HEADER(SoBaseColor)

public:
    SoBaseColor();
    static void initClass();

    SoMFColor rgb;

    void doAction(SoAction* action) override;

protected:
    ~SoBaseColor() override;
};
