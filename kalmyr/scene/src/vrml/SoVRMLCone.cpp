#include <kalmyr/vrml/SoVRMLCone.h>

#include "Bodies.h"

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLCone)

SoVRMLCone::SoVRMLCone()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_FIELD(bottomRadius, (1.0f));
    SO_VRML_FIELD(height, (2.0f));
    SO_VRML_FIELD(side, (true));
    SO_VRML_FIELD(bottom, (true));
}

SoVRMLCone::~SoVRMLCone() = default;

void SoVRMLCone::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLCone, SoVRMLGeometry, "VRMLCone");
}

kalmyr::detail::SharedKey SoVRMLCone::getKey() const
{
    using namespace kalmyr::detail;
    const int parts = (side.getValue() ? BODY_SIDE : 0) | (bottom.getValue() ? CONE_BASE : 0);
    return bodyKey(SharedKey::CONE, SbVec3f(bottomRadius.getValue(), height.getValue(), 0), parts);
}

SoRef<SoGeometry> SoVRMLCone::findShared(SoState*)
{
    return kalmyr::detail::sharedBody(getKey(), side.getValue() && bottom.getValue());
}

void SoVRMLCone::buildGeometry(SoState*, SoGeometry& geometry)
{
    kalmyr::detail::buildBody(getKey(), geometry);
}
