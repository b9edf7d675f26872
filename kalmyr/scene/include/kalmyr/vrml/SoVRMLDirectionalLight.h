#pragma once

#include <kalmyr/vrml/SoVRMLLight.h>

/// Parallel light.
class KALMYR_API SoVRMLDirectionalLight : public SoVRMLLight {
    SO_NODE_HEADER(SoVRMLDirectionalLight)

public:
    SoVRMLDirectionalLight();
    static void initClass();

    SoSFVec3f direction;

protected:
    ~SoVRMLDirectionalLight() override;

    void describe(SoLightRecord& record) const override;
};
