#include <kalmyr/vrml/SoVRMLNormal.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLNormal)

SoVRMLNormal::SoVRMLNormal()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(vector);
}

SoVRMLNormal::~SoVRMLNormal() = default;

void SoVRMLNormal::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNormal, SoNode, "VRMLNormal");
}
