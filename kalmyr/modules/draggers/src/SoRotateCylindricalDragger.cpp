#include <kalmyr/draggers/SoRotateCylindricalDragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoRotateCylindricalDragger)

SoRotateCylindricalDragger::SoRotateCylindricalDragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoMotionDragger);
    SO_ADD_FIELD(rotation, (SbRotation()));
    useRotation(rotation);
    SO_ADD_FIELD(minAngle, (0.0f));
    SO_ADD_FIELD(maxAngle, (-1.0f));
    useAngleLimits(minAngle, maxAngle);
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
    SO_KIT_INIT_CLASS(SoRotateCylindricalDragger, SoMotionDragger, "RotateCylindricalDragger");
}
