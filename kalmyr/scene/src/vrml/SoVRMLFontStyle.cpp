#include <kalmyr/vrml/SoVRMLFontStyle.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLFontStyle)

SoVRMLFontStyle::SoVRMLFontStyle()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_FIELD(family, ("SERIF"));
    SO_VRML_FIELD(horizontal, (true));
    SO_VRML_FIELD(justify, ("BEGIN"));
    SO_VRML_EMPTY_FIELD(language);
    SO_VRML_FIELD(leftToRight, (true));
    SO_VRML_FIELD(size, (1.0f));
    SO_VRML_FIELD(spacing, (1.0f));
    SO_VRML_FIELD(style, ("PLAIN"));
    SO_VRML_FIELD(topToBottom, (true));
}

SoVRMLFontStyle::~SoVRMLFontStyle() = default;

void SoVRMLFontStyle::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLFontStyle, SoNode, "VRMLFontStyle");
}
