#include <kalmyr/draggers/SoRotateAxisDragger.h>

SO_KIT_SOURCE(SoRotateAxisDragger)

SoRotateAxisDragger::SoRotateAxisDragger()
{
    SO_NODE_CONSTRUCTOR(SoMotionDragger);
    SO_ADD_FIELD(rotation, (SbRotation()));
    SO_ADD_FIELD(minAngle, (0.0f));
    SO_ADD_FIELD(maxAngle, (-1.0f));
    useRotation(rotation);
    useAngleLimits(minAngle, maxAngle);
    SO_KIT_MAKE_PARTS();
}

SoRotateAxisDragger::~SoRotateAxisDragger() = default;

void SoRotateAxisDragger::initClass()
{
    SO_KIT_INIT_ABSTRACT_CLASS(SoRotateAxisDragger, SoMotionDragger, "RotateAxisDragger");
}
