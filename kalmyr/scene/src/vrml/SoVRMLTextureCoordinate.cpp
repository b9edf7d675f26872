#include <kalmyr/vrml/SoVRMLTextureCoordinate.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLTextureCoordinate)

SoVRMLTextureCoordinate::SoVRMLTextureCoordinate()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(point);
}

SoVRMLTextureCoordinate::~SoVRMLTextureCoordinate() = default;

void SoVRMLTextureCoordinate::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTextureCoordinate, SoNode, "VRMLTextureCoordinate");
}
