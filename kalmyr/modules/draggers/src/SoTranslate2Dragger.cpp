#include <kalmyr/draggers/SoTranslate2Dragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoTranslate2Dragger)

SoTranslate2Dragger::SoTranslate2Dragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoTranslateDragger);
    SO_KIT_MAKE_PARTS();
    addFaces({"plate", SoDragHandle::MOVE_PLANE, kZ, kNeutral}, {square(2, 0, 0.5f)});
    addLines({"plate", SoDragHandle::MOVE_PLANE, kZ, kNeutral}, {closed(square(2, 0, 0.5f))});
    addArrow({"xArrow", SoDragHandle::MOVE_LINE, kX, kRed}, CONE, kX);
    addArrow({"yArrow", SoDragHandle::MOVE_LINE, kY, kGreen}, CONE, kY);
}

SoTranslate2Dragger::~SoTranslate2Dragger() = default;

void SoTranslate2Dragger::initClass()
{
    SO_KIT_INIT_CLASS(SoTranslate2Dragger, SoTranslateDragger, "Translate2Dragger");
}
