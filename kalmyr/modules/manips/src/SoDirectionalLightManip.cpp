#include <kalmyr/manips/SoDirectionalLightManip.h>

SO_NODE_SOURCE(SoDirectionalLightManip)

SoDirectionalLightManip::SoDirectionalLightManip()
    : m_dragger(new SoRotateSphericalDragger),
      m_manip(
          this, m_dragger,
          [this] { direction.setValue(m_dragger->rotation.getValue().rotated(SbVec3f(0, 0, -1))); },
          [this] {
              m_dragger->rotation.setValue(SbRotation(SbVec3f(0, 0, -1), direction.getValue()));
          })
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
