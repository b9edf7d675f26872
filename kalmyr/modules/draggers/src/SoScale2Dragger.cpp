#include <kalmyr/draggers/SoScale2Dragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoScale2Dragger)

SoScale2Dragger::SoScale2Dragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoScaleDragger);
    SO_KIT_MAKE_PARTS();
    addLines({"frame"}, {closed(square(2, 0, 1))});
    for (const SbVec3f& corner : square(2, 0, 1))
        addKnob({"corners", SoDragHandle::SCALE_PLANE, kZ, kNeutral}, CUBE, corner);
    for (const float side : {1.0f, -1.0f}) {
        addKnob({"xSides", SoDragHandle::SCALE_LINE, kX, kRed}, CUBE, kX * side);
        addKnob({"ySides", SoDragHandle::SCALE_LINE, kY, kGreen}, CUBE, kY * side);
    }
}

SoScale2Dragger::~SoScale2Dragger() = default;

void SoScale2Dragger::initClass()
{
    SO_KIT_INIT_CLASS(SoScale2Dragger, SoScaleDragger, "Scale2Dragger");
}
