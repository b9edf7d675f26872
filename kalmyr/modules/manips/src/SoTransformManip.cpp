#include <kalmyr/manips/SoTransformManip.h>

SO_NODE_SOURCE(SoTransformManip)

SoTransformManip::SoTransformManip()
    : m_dragger(new SoTransformDragger),
      m_manip(
          this, m_dragger,
          [this] {
              translation.setValue(m_dragger->translation.getValue());
              rotation.setValue(m_dragger->rotation.getValue());
              scaleFactor.setValue(m_dragger->scaleFactor.getValue());
          },
          [this] {
              m_dragger->translation.setValue(translation.getValue());
              m_dragger->rotation.setValue(rotation.getValue());
              m_dragger->scaleFactor.setValue(scaleFactor.getValue());
          })
{
    SO_NODE_CONSTRUCTOR(SoTransform);
    m_manip.follow({&translation, &rotation, &scaleFactor});
}

SoTransformManip::~SoTransformManip() = default;

void SoTransformManip::initClass()
{
    SO_NODE_INIT_CLASS(SoTransformManip, SoTransform, "TransformManip");
}

void SoTransformManip::doAction(SoAction* action)
{
    m_manip.traverse(action); // in the space around, as its fields say
    SoTransform::doAction(action);
}
