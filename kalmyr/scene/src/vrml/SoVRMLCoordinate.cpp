#include <kalmyr/vrml/SoVRMLCoordinate.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLCoordinate)

SoVRMLCoordinate::SoVRMLCoordinate()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(point);
}

SoVRMLCoordinate::~SoVRMLCoordinate() = default;

void SoVRMLCoordinate::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLCoordinate, SoNode, "VRMLCoordinate");
}
