#include <kalmyr/draggers/SoRotateSphericalDragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoRotateSphericalDragger)

SoRotateSphericalDragger::SoRotateSphericalDragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoMotionDragger);
    SO_ADD_FIELD(rotation, (SbRotation()));
    useRotation(rotation);
    SO_KIT_MAKE_PARTS();
    addBall({"ball", SoDragHandle::TURN_BALL, kY, kNeutral});
    addLines({"xRing", SoDragHandle::TURN_DISC, kX, kRed}, {circle(0, 1.03f)});
    addLines({"yRing", SoDragHandle::TURN_DISC, kY, kGreen}, {circle(1, 1.03f)});
    addLines({"zRing", SoDragHandle::TURN_DISC, kZ, kBlue}, {circle(2, 1.03f)});
}

SoRotateSphericalDragger::~SoRotateSphericalDragger() = default;

void SoRotateSphericalDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoRotateSphericalDragger, SoMotionDragger, "RotateSphericalDragger");
}
