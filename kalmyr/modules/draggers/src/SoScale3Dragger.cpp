#include <kalmyr/draggers/SoScale3Dragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoScale3Dragger)

SoScale3Dragger::SoScale3Dragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoMotionDragger);
    SO_ADD_FIELD(scaleFactor, (1.0f, 1.0f, 1.0f));
    SO_ADD_FIELD(minScaleFactor, (0.001f));
    SO_ADD_FIELD(maxScaleFactor, (0.0f));
    useScale(scaleFactor, minScaleFactor, maxScaleFactor);
    SO_KIT_MAKE_PARTS();
    addLines({"frame"}, boxEdges());
    for (int i = 0; i < 8; ++i)
        addKnob({"corners", SoDragHandle::SCALE_EVENLY, kZ, kNeutral}, CUBE, boxCorner(i));
    for (const float side : {1.0f, -1.0f}) {
        addKnob({"xArm", SoDragHandle::SCALE_LINE, kX, kRed}, CUBE, kX * side);
        addKnob({"yArm", SoDragHandle::SCALE_LINE, kY, kGreen}, CUBE, kY * side);
        addKnob({"zArm", SoDragHandle::SCALE_LINE, kZ, kBlue}, CUBE, kZ * side);
    }
}

SoScale3Dragger::~SoScale3Dragger() = default;

void SoScale3Dragger::initClass()
{
    SO_KIT_INIT_CLASS(SoScale3Dragger, SoMotionDragger, "Scale3Dragger");
}
