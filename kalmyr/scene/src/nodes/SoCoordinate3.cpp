#include <kalmyr/nodes/SoCoordinate3.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoCoordinateElements.h>

SO_NODE_SOURCE(SoCoordinate3)

SoCoordinate3::SoCoordinate3()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(point);
}

SoCoordinate3::~SoCoordinate3() = default;

void SoCoordinate3::initClass()
{
    SO_NODE_INIT_CLASS(SoCoordinate3, SoNode, "Coordinate3");
}

void SoCoordinate3::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (point.isIgnored())
        return;
    state->write<SoCoordinateElement>().set(this, point.values());
}
