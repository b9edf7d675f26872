#include <kalmyr/vrml/SoVRMLAnchor.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLAnchor)

SoVRMLAnchor::SoVRMLAnchor()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
    SO_VRML_EXPOSED_EMPTY(description);
    SO_VRML_EXPOSED_EMPTY(parameter);
    SO_VRML_EXPOSED_EMPTY(url);
}

SoVRMLAnchor::~SoVRMLAnchor() = default;

void SoVRMLAnchor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLAnchor, SoVRMLParent, "VRMLAnchor");
}
