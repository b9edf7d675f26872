#include <kalmyr/vrml/SoVRMLSpotLight.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

#include <algorithm>

SO_NODE_SOURCE(SoVRMLSpotLight)

SoVRMLSpotLight::SoVRMLSpotLight()
{
    SO_NODE_CONSTRUCTOR(SoVRMLLight);
    SO_VRML_EXPOSED(attenuation, (1.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(beamWidth, (1.570796f));
    SO_VRML_EXPOSED(cutOffAngle, (0.785398f));
    SO_VRML_EXPOSED(direction, (0.0f, 0.0f, -1.0f));
    SO_VRML_EXPOSED(location, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(radius, (100.0f));
}

SoVRMLSpotLight::~SoVRMLSpotLight() = default;

void SoVRMLSpotLight::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLSpotLight, SoVRMLLight, "VRMLSpotLight");
}

void SoVRMLSpotLight::describe(SoLightRecord& record) const
{
    record.kind = SoLightRecord::SPOT;
    record.position = location.getValue();
    record.direction = direction.getValue();
    record.attenuation = attenuation.getValue();
    record.radius = std::max(radius.getValue(), 0.0f);
    record.cutOffAngle = cutOffAngle.getValue();
    // A beam as wide as its cone or wider does not fade.
    if (beamWidth.getValue() < record.cutOffAngle)
        record.beamWidth = std::max(beamWidth.getValue(), 0.0f);
}
