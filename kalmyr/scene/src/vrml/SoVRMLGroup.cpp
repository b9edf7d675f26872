#include <kalmyr/vrml/SoVRMLGroup.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLGroup)

SoVRMLGroup::SoVRMLGroup()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
}

SoVRMLGroup::~SoVRMLGroup() = default;

void SoVRMLGroup::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLGroup, SoVRMLParent, "VRMLGroup");
}
