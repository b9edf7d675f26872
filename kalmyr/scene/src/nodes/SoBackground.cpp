#include <kalmyr/nodes/SoBackground.h>

SO_NODE_SOURCE(SoBackground)

SoBackground::SoBackground()
{
    SO_NODE_CONSTRUCTOR(SoNode);
}

SoBackground::~SoBackground() = default;

void SoBackground::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoBackground, SoNode, "Background");
}
