#include <kalmyr/nodes/SoFont.h>

SO_NODE_SOURCE(SoFont)

SoFont::SoFont()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(name, ("defaultFont"));
    SO_ADD_FIELD(size, (10.0f));
}

SoFont::~SoFont() = default;

void SoFont::initClass()
{
    SO_NODE_INIT_CLASS(SoFont, SoNode, "Font");
}
