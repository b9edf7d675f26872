#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLBindable.h>

/// Fog on what follows the node in its group.
class KALMYR_API SoVRMLFog : public SoVRMLBindable {
    SO_NODE_HEADER(SoVRMLFog)

public:
    SoVRMLFog();
    static void initClass();

    SoSFColor color;
    SoSFString fogType;
    SoSFFloat visibilityRange; ///< 0: no fog

    void doAction(SoAction* action) override;

protected:
    ~SoVRMLFog() override;
};
