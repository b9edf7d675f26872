#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/lights/SoLight.h>

/// A light that shines from a point into a cone.
class KALMYR_API SoSpotLight : public SoLight {
    SO_NODE_HEADER(SoSpotLight)

public:
    SoSpotLight();
    static void initClass();

    SoSFVec3f location;
    SoSFVec3f direction;   ///< axis of the cone
    SoSFFloat dropOffRate; ///< 0 even across the cone, to 1 weaker towards its border
    SoSFFloat cutOffAngle; ///< radians between axis and border

protected:
    ~SoSpotLight() override;

    void describe(SoLightRecord& record) const override;
};
