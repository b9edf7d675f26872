#include <kalmyr/draggers/SoScale1Dragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoScale1Dragger)

SoScale1Dragger::SoScale1Dragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoMotionDragger);
    SO_ADD_FIELD(scaleFactor, (1.0f, 1.0f, 1.0f));
    SO_ADD_FIELD(minScaleFactor, (0.001f));
    SO_ADD_FIELD(maxScaleFactor, (0.0f));
    useScale(scaleFactor, minScaleFactor, maxScaleFactor);
    SO_KIT_MAKE_PARTS();
    addArrow({"arm", SoDragHandle::SCALE_LINE, kX, kRed}, CUBE, kX);
}

SoScale1Dragger::~SoScale1Dragger() = default;

void SoScale1Dragger::initClass()
{
    SO_KIT_INIT_CLASS(SoScale1Dragger, SoMotionDragger, "Scale1Dragger");
}
