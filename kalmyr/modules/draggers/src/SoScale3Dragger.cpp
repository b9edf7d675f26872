#include <kalmyr/draggers/SoScale3Dragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoScale3Dragger)

SoScale3Dragger::SoScale3Dragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoScaleDragger);
    SO_KIT_MAKE_PARTS();
    addBox();
    for (const float side : {1.0f, -1.0f}) {
        addKnob({"xArm", SoDragHandle::SCALE_LINE, kX, kRed}, CUBE, kX * side);
        addKnob({"yArm", SoDragHandle::SCALE_LINE, kY, kGreen}, CUBE, kY * side);
        addKnob({"zArm", SoDragHandle::SCALE_LINE, kZ, kBlue}, CUBE, kZ * side);
    }
}

SoScale3Dragger::~SoScale3Dragger() = default;

void SoScale3Dragger::initClass()
{
    SO_KIT_INIT_CLASS(SoScale3Dragger, SoScaleDragger, "Scale3Dragger");
}
