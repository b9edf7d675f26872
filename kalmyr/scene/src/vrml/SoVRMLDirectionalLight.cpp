#include <kalmyr/vrml/SoVRMLDirectionalLight.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLDirectionalLight)

SoVRMLDirectionalLight::SoVRMLDirectionalLight()
{
    SO_NODE_CONSTRUCTOR(SoVRMLLight);
    SO_VRML_EXPOSED(direction, (0.0f, 0.0f, -1.0f));
}

SoVRMLDirectionalLight::~SoVRMLDirectionalLight() = default;

void SoVRMLDirectionalLight::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLDirectionalLight, SoVRMLLight, "VRMLDirectionalLight");
}

void SoVRMLDirectionalLight::describe(SoLightRecord& record) const
{
    record.kind = SoLightRecord::DIRECTIONAL;
    record.direction = direction.getValue();
}
