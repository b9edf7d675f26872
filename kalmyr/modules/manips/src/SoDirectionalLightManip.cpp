#include <kalmyr/manips/SoDirectionalLightManip.h>

SO_NODE_SOURCE(SoDirectionalLightManip)

SoDirectionalLightManip::SoDirectionalLightManip()
    : m_dragger(new SoDirectionalLightDragger),
      m_manip(
          this, m_dragger,
          [this] { kalmyr::detail::putValue(direction, m_dragger->direction.getValue()); },
          [this] { kalmyr::detail::putValue(m_dragger->direction, direction.getValue()); })
{
    SO_NODE_CONSTRUCTOR(SoDirectionalLight);
    m_manip.follow({&direction});
}

SoDirectionalLightManip::~SoDirectionalLightManip() = default;

void SoDirectionalLightManip::initClass()
{
    SO_NODE_INIT_CLASS(SoDirectionalLightManip, SoDirectionalLight, "DirectionalLightManip");
}

void SoDirectionalLightManip::doAction(SoAction* action)
{
    SoDirectionalLight::doAction(action);
    m_manip.traverse(action);
}
