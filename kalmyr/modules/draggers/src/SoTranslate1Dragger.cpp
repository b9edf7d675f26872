#include <kalmyr/draggers/SoTranslate1Dragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoTranslate1Dragger)

SoTranslate1Dragger::SoTranslate1Dragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoMotionDragger);
    SO_ADD_FIELD(translation, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(minTranslation, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(maxTranslation, (-1.0f, -1.0f, -1.0f));
    useTranslation(translation, minTranslation, maxTranslation);
    SO_KIT_MAKE_PARTS();
    addArrow({"arrow", SoDragHandle::MOVE_LINE, kX, kNeutral}, CONE, kX);
}

SoTranslate1Dragger::~SoTranslate1Dragger() = default;

void SoTranslate1Dragger::initClass()
{
    SO_KIT_INIT_CLASS(SoTranslate1Dragger, SoMotionDragger, "Translate1Dragger");
}
