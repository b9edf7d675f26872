#include <kalmyr/vrml/SoVRMLGeometry.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLGeometry)

SoVRMLGeometry::SoVRMLGeometry()
{
    SO_NODE_CONSTRUCTOR(SoShape);
}

SoVRMLGeometry::~SoVRMLGeometry() = default;

void SoVRMLGeometry::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoVRMLGeometry, SoShape, "VRMLGeometry");
}
