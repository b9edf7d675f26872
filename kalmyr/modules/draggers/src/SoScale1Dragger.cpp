#include <kalmyr/draggers/SoScale1Dragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoScale1Dragger)

SoScale1Dragger::SoScale1Dragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoScaleDragger);
    SO_KIT_MAKE_PARTS();
    addArrow({"arm", SoDragHandle::SCALE_LINE, kX, kRed}, CUBE, kX);
}

SoScale1Dragger::~SoScale1Dragger() = default;

void SoScale1Dragger::initClass()
{
    SO_KIT_INIT_CLASS(SoScale1Dragger, SoScaleDragger, "Scale1Dragger");
}
