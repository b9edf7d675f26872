#include <kalmyr/vrml/SoVRMLBackground.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLBackground)

SoVRMLBackground::SoVRMLBackground()
{
    SO_NODE_CONSTRUCTOR(SoVRMLBindable);
    SO_VRML_EXPOSED_EMPTY(groundAngle);
    SO_VRML_EXPOSED_EMPTY(groundColor);
    SO_VRML_EXPOSED_EMPTY(backUrl);
    SO_VRML_EXPOSED_EMPTY(bottomUrl);
    SO_VRML_EXPOSED_EMPTY(frontUrl);
    SO_VRML_EXPOSED_EMPTY(leftUrl);
    SO_VRML_EXPOSED_EMPTY(rightUrl);
    SO_VRML_EXPOSED_EMPTY(topUrl);
    SO_VRML_EXPOSED_EMPTY(skyAngle);
    SO_VRML_EXPOSED(skyColor, (0.0f, 0.0f, 0.0f));
}

SoVRMLBackground::~SoVRMLBackground() = default;

void SoVRMLBackground::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLBackground, SoVRMLBindable, "VRMLBackground");
}
