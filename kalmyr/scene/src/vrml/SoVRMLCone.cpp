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

void SoVRMLCone::buildGeometry(SoState*, SoGeometry& geometry)
{
    const float r = bottomRadius.getValue();
    const float h = height.getValue();
    kalmyr::detail::BodyBuilder body(geometry);
    if (side.getValue())
        body.side({r, -h / 2, 0}, {0, h / 2, 1}, SbVec2f(h, r));
    if (bottom.getValue())
        body.disk(r, -h / 2, false);
}
