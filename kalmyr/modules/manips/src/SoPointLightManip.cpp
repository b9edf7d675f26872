#include <kalmyr/manips/SoPointLightManip.h>

SO_NODE_SOURCE(SoPointLightManip)

SoPointLightManip::SoPointLightManip()
    : m_dragger(new SoTransformDragger),
      m_manip(
          this, m_dragger, [this] { location.setValue(m_dragger->translation.getValue()); },
          [this] { m_dragger->translation.setValue(location.getValue()); })
{
    SO_NODE_CONSTRUCTOR(SoPointLight);
    m_manip.follow({&location});
}

SoPointLightManip::~SoPointLightManip() = default;

void SoPointLightManip::initClass()
{
    SO_NODE_INIT_CLASS(SoPointLightManip, SoPointLight, "PointLightManip");
}

void SoPointLightManip::doAction(SoAction* action)
{
    SoPointLight::doAction(action);
    m_manip.traverse(action);
}
