#include <kalmyr/lights/SoPointLight.h>

SO_NODE_SOURCE(SoPointLight)

SoPointLight::SoPointLight()
{
    SO_NODE_CONSTRUCTOR(SoLight);
    SO_ADD_FIELD(location, (0.0f, 0.0f, 1.0f));
}

SoPointLight::~SoPointLight() = default;

void SoPointLight::initClass()
{
    SO_NODE_INIT_CLASS(SoPointLight, SoLight, "PointLight");
}

void SoPointLight::describe(SoLightRecord& record) const
{
    record.kind = SoLightRecord::POINT;
    record.position = location.getValue();
}
