#include <kalmyr/draggers/SoScaleDragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoScaleDragger)

SoScaleDragger::SoScaleDragger()
{
    SO_NODE_CONSTRUCTOR(SoMotionDragger);
    SO_ADD_FIELD(scaleFactor, (1.0f, 1.0f, 1.0f));
    SO_ADD_FIELD(minScaleFactor, (0.001f));
    SO_ADD_FIELD(maxScaleFactor, (0.0f));
    useScale(scaleFactor, minScaleFactor, maxScaleFactor);
    SO_KIT_MAKE_PARTS();
}

SoScaleDragger::~SoScaleDragger() = default;

void SoScaleDragger::initClass()
{
    SO_KIT_INIT_ABSTRACT_CLASS(SoScaleDragger, SoMotionDragger, "ScaleDragger");
}

void SoScaleDragger::addBox()
{
    using namespace kalmyr::detail;
    addLines({"frame"}, boxEdges());
    for (int i = 0; i < 8; ++i)
        addKnob({"corners", SoDragHandle::SCALE_EVENLY, kZ, kNeutral}, CUBE, boxCorner(i));
}
