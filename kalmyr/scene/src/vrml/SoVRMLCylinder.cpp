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

void SoVRMLCylinder::buildGeometry(SoState*, SoGeometry& geometry)
{
    const float r = radius.getValue();
    const float h = height.getValue();
    kalmyr::detail::BodyBuilder body(geometry);
    if (side.getValue())
        body.side({r, -h / 2, 0}, {r, h / 2, 1}, SbVec2f(1, 0));
    if (top.getValue())
        body.disk(r, h / 2, true);
    if (bottom.getValue())
        body.disk(r, -h / 2, false);
}
