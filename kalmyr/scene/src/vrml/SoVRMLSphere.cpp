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

kalmyr::detail::SharedKey SoVRMLSphere::getKey() const
{
    using namespace kalmyr::detail;
    return bodyKey(SharedKey::SPHERE, SbVec3f(radius.getValue(), 0, 0));
}

SoRef<SoGeometry> SoVRMLSphere::findShared(SoState*)
{
    return kalmyr::detail::sharedBody(getKey(), true);
}

void SoVRMLSphere::buildGeometry(SoState*, SoGeometry& geometry)
{
    kalmyr::detail::buildBody(getKey(), geometry);
}
