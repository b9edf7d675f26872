#include <kalmyr/vrml/SoVRMLCollision.h>

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLCollision)

SoVRMLCollision::SoVRMLCollision()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
    SO_VRML_EXPOSED(collide, (true));
    SO_VRML_EMPTY_FIELD(proxy);
    SO_VRML_EVENT_OUT(collideTime);
}

SoVRMLCollision::~SoVRMLCollision() = default;

void SoVRMLCollision::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLCollision, SoVRMLParent, "VRMLCollision");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
}
