#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include <algorithm>
#include <cmath>

SO_NODE_SOURCE(SoVRMLViewpoint)

SoVRMLViewpoint::SoVRMLViewpoint()
{
    SO_NODE_CONSTRUCTOR(SoVRMLBindable);
    SO_VRML_EXPOSED(fieldOfView, (0.785398f));
    SO_VRML_EXPOSED(jump, (true));
    SO_VRML_EXPOSED(orientation, (SbRotation()));
    SO_VRML_EXPOSED(position, (0.0f, 0.0f, 10.0f));
    SO_VRML_EMPTY_FIELD(description);
    SO_VRML_EVENT_OUT(bindTime);
}

SoVRMLViewpoint::~SoVRMLViewpoint() = default;

void SoVRMLViewpoint::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLViewpoint, SoVRMLBindable, "VRMLViewpoint");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
}

void SoVRMLViewpoint::boundChanged(SbTime now)
{
    bindTime = now;
}

SbVec3f SoVRMLViewpoint::getPosition(const SbMatrix& toWorld) const
{
    return toWorld.point(position.getValue());
}

SbRotation SoVRMLViewpoint::getOrientation(const SbMatrix& toWorld) const
{
    return orientation.getValue() * SbRotation(toWorld);
}

float SoVRMLViewpoint::getHeightAngle(float aspect) const
{
    constexpr float kSmallest = 1e-3f;
    constexpr float kLargest = 3.14f;
    const float angle = std::clamp(fieldOfView.getValue(), kSmallest, kLargest);
    if (aspect >= 1 || aspect <= 0)
        return angle;
    return 2 * std::atan(std::tan(angle / 2) / aspect);
}
