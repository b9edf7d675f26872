#include <kalmyr/nodekits/SoInteractionKit.h>

#include <kalmyr/nodes/SoSeparator.h>

SO_KIT_SOURCE(SoInteractionKit)

SoInteractionKit::SoInteractionKit()
{
    SO_NODE_CONSTRUCTOR(SoBaseKit);
    SO_KIT_PART(topSeparator);
    SO_KIT_PART(geomSeparator);
    SO_KIT_MAKE_PARTS();
}

SoInteractionKit::~SoInteractionKit() = default;

void SoInteractionKit::initClass()
{
    SO_KIT_INIT_CLASS(SoInteractionKit, SoBaseKit, "InteractionKit");
    s_catalog->addGroup("topSeparator", SoSeparator::getClassTypeId(), {"this", ""}, true);
    s_catalog->addGroup("geomSeparator", SoSeparator::getClassTypeId(), {"topSeparator", ""}, true);
}
