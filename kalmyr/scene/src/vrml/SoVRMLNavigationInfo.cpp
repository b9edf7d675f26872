#include <kalmyr/vrml/SoVRMLNavigationInfo.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLNavigationInfo)

SoVRMLNavigationInfo::SoVRMLNavigationInfo()
{
    SO_NODE_CONSTRUCTOR(SoVRMLBindable);
    SO_VRML_EXPOSED_EMPTY(avatarSize);
    avatarSize.initValues({0.25f, 1.6f, 0.75f});
    SO_VRML_EXPOSED(headlight, (true));
    SO_VRML_EXPOSED(speed, (1.0f));
    SO_VRML_EXPOSED_EMPTY(type);
    type.initValues({"WALK", "ANY"});
    SO_VRML_EXPOSED(visibilityLimit, (0.0f));
}

SoVRMLNavigationInfo::~SoVRMLNavigationInfo() = default;

void SoVRMLNavigationInfo::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNavigationInfo, SoVRMLBindable, "VRMLNavigationInfo");
}
