#include <kalmyr/vrml/SoVRMLSphere.h>

#include "Bodies.h"

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLSphere)

SoVRMLSphere::SoVRMLSphere()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_FIELD(radius, (1.0f));
}

SoVRMLSphere::~SoVRMLSphere() = default;

void SoVRMLSphere::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLSphere, SoVRMLGeometry, "VRMLSphere");
}

void SoVRMLSphere::buildGeometry(SoState*, SoGeometry& geometry)
{
    kalmyr::detail::BodyBuilder(geometry).sphere(radius.getValue());
}
