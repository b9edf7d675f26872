#include <kalmyr/vrml/SoVRMLColor.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLColor)

SoVRMLColor::SoVRMLColor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(color);
}

SoVRMLColor::~SoVRMLColor() = default;

void SoVRMLColor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLColor, SoNode, "VRMLColor");
}
