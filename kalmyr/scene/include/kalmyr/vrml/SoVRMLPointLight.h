#pragma once

#include <kalmyr/vrml/SoVRMLLight.h>

/// Light from one point in all directions.
class KALMYR_API SoVRMLPointLight : public SoVRMLLight {
    SO_NODE_HEADER(SoVRMLPointLight)

public:
    SoVRMLPointLight();
    static void initClass();

    SoSFVec3f attenuation; ///< constant, linear, quadratic
    SoSFVec3f location;
    SoSFFloat radius; ///< kept; the light has no end here

protected:
    ~SoVRMLPointLight() override;

    void describe(SoLightRecord& record) const override;
};
