#include <kalmyr/draggers/SoTranslateDragger.h>

SO_KIT_SOURCE(SoTranslateDragger)

SoTranslateDragger::SoTranslateDragger()
{
    SO_NODE_CONSTRUCTOR(SoMotionDragger);
    SO_ADD_FIELD(translation, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(minTranslation, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(maxTranslation, (-1.0f, -1.0f, -1.0f));
    useTranslation(translation, minTranslation, maxTranslation);
    SO_KIT_MAKE_PARTS();
}

SoTranslateDragger::~SoTranslateDragger() = default;

void SoTranslateDragger::initClass()
{
    SO_KIT_INIT_ABSTRACT_CLASS(SoTranslateDragger, SoMotionDragger, "TranslateDragger");
}
