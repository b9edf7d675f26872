#include <kalmyr/draggers/SoRotateDiscDragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoRotateDiscDragger)

SoRotateDiscDragger::SoRotateDiscDragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoRotateAxisDragger);
    SO_KIT_MAKE_PARTS();
    const Part part{"disc", SoDragHandle::TURN_DISC, kZ, kBlue};
    addFaces(part, annulus(0.75f));
    addLines(part, {circle(2), circle(2, 0.75f)});
    for (const SbVec3f& at : {kX, kY, -kX, -kY})
        addKnob(part, CONE, at, kZ.cross(at), 0.09f);
}

SoRotateDiscDragger::~SoRotateDiscDragger() = default;

void SoRotateDiscDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoRotateDiscDragger, SoRotateAxisDragger, "RotateDiscDragger");
}
