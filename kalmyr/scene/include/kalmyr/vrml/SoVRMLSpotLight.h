#pragma once

#include <kalmyr/vrml/SoVRMLLight.h>

/// Light from one point into a cone.
class KALMYR_API SoVRMLSpotLight : public SoVRMLLight {
    SO_NODE_HEADER(SoVRMLSpotLight)

public:
    SoVRMLSpotLight();
    static void initClass();

    SoSFVec3f attenuation; ///< constant, linear, quadratic
    SoSFFloat beamWidth;   ///< radians; full intensity inside
    SoSFFloat cutOffAngle; ///< radians
    SoSFVec3f direction;
    SoSFVec3f location;
    SoSFFloat radius; ///< kept; the light has no end here

protected:
    ~SoVRMLSpotLight() override;

    void describe(SoLightRecord& record) const override;
};
