#pragma once

#include <kalmyr/elements/SoLightElement.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLBindable.h>

/// Fog on the whole scene that is drawn, wherever the node stands; its transform scales the range.
/// Other actions find it in the environment of what follows.
class KALMYR_API SoVRMLFog : public SoVRMLBindable {
    SO_NODE_HEADER(SoVRMLFog)

public:
    SoVRMLFog();
    static void initClass();

    SoSFColor color;
    SoSFString fogType;
    SoSFFloat visibilityRange; ///< 0: no fog

    /// Without fog when it would not be seen; the visibility in the node's own space.
    SoFogValues getValues() const;
    void doAction(SoAction* action) override;

protected:
    ~SoVRMLFog() override;
};
