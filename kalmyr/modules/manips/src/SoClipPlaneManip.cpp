#include <kalmyr/manips/SoClipPlaneManip.h>

SO_NODE_SOURCE(SoClipPlaneManip)

SoClipPlaneManip::SoClipPlaneManip()
    : m_dragger(new SoClipPlaneDragger),
      m_manip(
          this, m_dragger, [this] { kalmyr::detail::putValue(plane, m_dragger->plane.getValue()); },
          [this] { kalmyr::detail::putValue(m_dragger->plane, plane.getValue()); })
{
    SO_NODE_CONSTRUCTOR(SoClipPlane);
    m_manip.follow({&plane});
}

SoClipPlaneManip::~SoClipPlaneManip() = default;

void SoClipPlaneManip::initClass()
{
    SO_NODE_INIT_CLASS(SoClipPlaneManip, SoClipPlane, "ClipPlaneManip");
}

void SoClipPlaneManip::doAction(SoAction* action)
{
    m_manip.traverse(action);
    SoClipPlane::doAction(action);
}
