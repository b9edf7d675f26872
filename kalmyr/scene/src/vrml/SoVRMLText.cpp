#include <kalmyr/vrml/SoVRMLText.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLText)

SoVRMLText::SoVRMLText()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(fontStyle);
    SO_VRML_EXPOSED_EMPTY(length);
    SO_VRML_EXPOSED(maxExtent, (0.0f));
    SO_VRML_EXPOSED_EMPTY(string);
}

SoVRMLText::~SoVRMLText() = default;

void SoVRMLText::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLText, SoVRMLGeometry, "VRMLText");
}

void SoVRMLText::buildGeometry(SoState*, SoGeometry&) {}
