#include <kalmyr/vrml/SoVRMLPointLight.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

#include <algorithm>

SO_NODE_SOURCE(SoVRMLPointLight)

SoVRMLPointLight::SoVRMLPointLight()
{
    SO_NODE_CONSTRUCTOR(SoVRMLLight);
    SO_VRML_EXPOSED(attenuation, (1.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(location, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(radius, (100.0f));
}

SoVRMLPointLight::~SoVRMLPointLight() = default;

void SoVRMLPointLight::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLPointLight, SoVRMLLight, "VRMLPointLight");
}

void SoVRMLPointLight::describe(SoLightRecord& record) const
{
    record.kind = SoLightRecord::POINT;
    record.position = location.getValue();
    record.attenuation = attenuation.getValue();
    record.radius = std::max(radius.getValue(), 0.0f);
}
