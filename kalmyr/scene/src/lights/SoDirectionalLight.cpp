#include <kalmyr/lights/SoDirectionalLight.h>

SO_NODE_SOURCE(SoDirectionalLight)

SoDirectionalLight::SoDirectionalLight()
{
    SO_NODE_CONSTRUCTOR(SoLight);
    SO_ADD_FIELD(direction, (0.0f, 0.0f, -1.0f));
}

SoDirectionalLight::~SoDirectionalLight() = default;

void SoDirectionalLight::initClass()
{
    SO_NODE_INIT_CLASS(SoDirectionalLight, SoLight, "DirectionalLight");
}

void SoDirectionalLight::describe(SoLightRecord& record) const
{
    record.kind = SoLightRecord::DIRECTIONAL;
    record.attenuation = SbVec3f(1, 0, 0);
    record.direction = direction.getValue();
}
