#include <kalmyr/manips/SoSpotLightManip.h>

SO_NODE_SOURCE(SoSpotLightManip)

SoSpotLightManip::SoSpotLightManip()
    : m_dragger(new SoTransformDragger),
      m_manip(
          this, m_dragger,
          [this] {
              location.setValue(m_dragger->translation.getValue());
              direction.setValue(m_dragger->rotation.getValue().rotated(SbVec3f(0, 0, -1)));
          },
          [this] {
              m_dragger->translation.setValue(location.getValue());
              m_dragger->rotation.setValue(SbRotation(SbVec3f(0, 0, -1), direction.getValue()));
          })
{
    SO_NODE_CONSTRUCTOR(SoSpotLight);
    m_manip.follow({&location, &direction});
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
