#include <kalmyr/draggers/SoTranslate1Dragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoTranslate1Dragger)

SoTranslate1Dragger::SoTranslate1Dragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoTranslateDragger);
    SO_KIT_MAKE_PARTS();
    addArrow({"arrow", SoDragHandle::MOVE_LINE, kX, kNeutral}, CONE, kX);
}

SoTranslate1Dragger::~SoTranslate1Dragger() = default;

void SoTranslate1Dragger::initClass()
{
    SO_KIT_INIT_CLASS(SoTranslate1Dragger, SoTranslateDragger, "Translate1Dragger");
}
