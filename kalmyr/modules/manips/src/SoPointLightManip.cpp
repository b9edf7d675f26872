#include <kalmyr/manips/SoPointLightManip.h>

SO_NODE_SOURCE(SoPointLightManip)

SoPointLightManip::SoPointLightManip()
    : m_dragger(new SoPointLightDragger),
      m_manip(
          this, m_dragger,
          [this] { kalmyr::detail::putValue(location, m_dragger->location.getValue()); },
          [this] { kalmyr::detail::putValue(m_dragger->location, location.getValue()); })
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
