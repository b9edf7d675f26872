#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

/// Ambient light, weakening of lights with distance, and fog for what follows.
class KALMYR_API SoEnvironment : public SoNode {
    SO_NODE_HEADER(SoEnvironment)

public:
    enum FogType { NONE = 0, HAZE = 1, FOG = 2, SMOKE = 3 };

    SoEnvironment();
    static void initClass();

    SoSFFloat ambientIntensity; ///< 0 to 1
    SoSFColor ambientColor;
    SoSFVec3f attenuation; ///< quadratic, linear, constant
    SoSFEnum fogType;
    SoSFColor fogColor;
    SoSFFloat fogVisibility; ///< distance of full fog in world units; 0: the far plane

    void doAction(SoAction* action) override;

protected:
    ~SoEnvironment() override;
};
