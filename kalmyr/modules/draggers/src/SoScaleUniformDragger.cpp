#include <kalmyr/draggers/SoScaleUniformDragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoScaleUniformDragger)

SoScaleUniformDragger::SoScaleUniformDragger()
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
}

SoScaleUniformDragger::~SoScaleUniformDragger() = default;

void SoScaleUniformDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoScaleUniformDragger, SoMotionDragger, "ScaleUniformDragger");
}
