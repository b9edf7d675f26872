#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Fog on what follows the node in its group.
class KALMYR_API SoVRMLFog : public SoNode {
    SO_NODE_HEADER(SoVRMLFog)

public:
    SoVRMLFog();
    static void initClass();

    SoSFBool set_bind; ///< event in
    SoSFColor color;
    SoSFString fogType;
    SoSFFloat visibilityRange; ///< 0: no fog
    SoSFBool isBound;          ///< event out

    void doAction(SoAction* action) override;

protected:
    ~SoVRMLFog() override;
};
