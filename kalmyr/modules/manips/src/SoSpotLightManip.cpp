#include <kalmyr/manips/SoSpotLightManip.h>

SO_NODE_SOURCE(SoSpotLightManip)

SoSpotLightManip::SoSpotLightManip()
    : m_dragger(new SoSpotLightDragger),
      m_manip(
          this, m_dragger,
          [this] {
              kalmyr::detail::putValue(location, m_dragger->location.getValue());
              kalmyr::detail::putValue(direction, m_dragger->direction.getValue());
              kalmyr::detail::putValue(cutOffAngle, m_dragger->cutOffAngle.getValue());
          },
          [this] {
              kalmyr::detail::putValue(m_dragger->location, location.getValue());
              kalmyr::detail::putValue(m_dragger->direction, direction.getValue());
              kalmyr::detail::putValue(m_dragger->cutOffAngle, cutOffAngle.getValue());
          })
{
    SO_NODE_CONSTRUCTOR(SoSpotLight);
    m_manip.follow({&location, &direction, &cutOffAngle});
}

SoSpotLightManip::~SoSpotLightManip() = default;

void SoSpotLightManip::initClass()
{
    SO_NODE_INIT_CLASS(SoSpotLightManip, SoSpotLight, "SpotLightManip");
}

void SoSpotLightManip::doAction(SoAction* action)
{
    SoSpotLight::doAction(action);
    m_manip.traverse(action);
}
