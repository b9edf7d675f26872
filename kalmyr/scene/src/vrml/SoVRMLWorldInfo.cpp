#include <kalmyr/vrml/SoVRMLWorldInfo.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLWorldInfo)

SoVRMLWorldInfo::SoVRMLWorldInfo()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EMPTY_FIELD(info);
    SO_VRML_EMPTY_FIELD(title);
}

SoVRMLWorldInfo::~SoVRMLWorldInfo() = default;

void SoVRMLWorldInfo::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLWorldInfo, SoNode, "VRMLWorldInfo");
}
