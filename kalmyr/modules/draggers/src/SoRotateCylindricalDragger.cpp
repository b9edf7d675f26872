#include <kalmyr/draggers/SoRotateCylindricalDragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoRotateCylindricalDragger)

SoRotateCylindricalDragger::SoRotateCylindricalDragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoRotateAxisDragger);
    SO_KIT_MAKE_PARTS();
    const Part part{"band", SoDragHandle::TURN_CYLINDER, kY, kGreen};
    addFaces(part, band(0.25f));
    addLines(part, {circle(1, 1, 0.25f), circle(1, 1, -0.25f)});
    for (const SbVec3f& at : {kX, kZ, -kX, -kZ})
        addKnob(part, CONE, at, kY.cross(at), 0.09f);
}

SoRotateCylindricalDragger::~SoRotateCylindricalDragger() = default;

void SoRotateCylindricalDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoRotateCylindricalDragger, SoRotateAxisDragger, "RotateCylindricalDragger");
}
