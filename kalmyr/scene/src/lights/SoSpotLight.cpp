#include <kalmyr/lights/SoSpotLight.h>

SO_NODE_SOURCE(SoSpotLight)

SoSpotLight::SoSpotLight()
{
    SO_NODE_CONSTRUCTOR(SoLight);
    SO_ADD_FIELD(location, (0.0f, 0.0f, 1.0f));
    SO_ADD_FIELD(direction, (0.0f, 0.0f, -1.0f));
    SO_ADD_FIELD(dropOffRate, (0.0f));
    SO_ADD_FIELD(cutOffAngle, (0.785398f));
}

SoSpotLight::~SoSpotLight() = default;

void SoSpotLight::initClass()
{
    SO_NODE_INIT_CLASS(SoSpotLight, SoLight, "SpotLight");
}

void SoSpotLight::describe(SoLightRecord& record) const
{
    record.kind = SoLightRecord::SPOT;
    record.position = location.getValue();
    record.direction = direction.getValue();
    record.dropOffRate = dropOffRate.getValue();
    record.cutOffAngle = cutOffAngle.getValue();
}
