#include <kalmyr/vrml/SoVRMLCylinder.h>

#include "Bodies.h"

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLCylinder)

SoVRMLCylinder::SoVRMLCylinder()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_FIELD(bottom, (true));
    SO_VRML_FIELD(height, (2.0f));
    SO_VRML_FIELD(radius, (1.0f));
    SO_VRML_FIELD(side, (true));
    SO_VRML_FIELD(top, (true));
}

SoVRMLCylinder::~SoVRMLCylinder() = default;

void SoVRMLCylinder::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLCylinder, SoVRMLGeometry, "VRMLCylinder");
}

kalmyr::detail::SharedKey SoVRMLCylinder::getKey() const
{
    using namespace kalmyr::detail;
    const int parts = (side.getValue() ? BODY_SIDE : 0) | (top.getValue() ? CYLINDER_LID : 0)
                      | (bottom.getValue() ? CYLINDER_BASE : 0);
    return bodyKey(SharedKey::CYLINDER, SbVec3f(radius.getValue(), height.getValue(), 0), parts);
}

SoRef<SoGeometry> SoVRMLCylinder::findShared(SoState*)
{
    return kalmyr::detail::sharedBody(getKey(),
                                      side.getValue() && top.getValue() && bottom.getValue());
}

void SoVRMLCylinder::buildGeometry(SoState*, SoGeometry& geometry)
{
    kalmyr::detail::buildBody(getKey(), geometry);
}
