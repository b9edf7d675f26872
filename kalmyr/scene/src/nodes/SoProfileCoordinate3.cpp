#include <kalmyr/nodes/SoProfileCoordinate3.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoNurbsElements.h>

SO_NODE_SOURCE(SoProfileCoordinate3)

SoProfileCoordinate3::SoProfileCoordinate3()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(point);
}

SoProfileCoordinate3::~SoProfileCoordinate3() = default;

void SoProfileCoordinate3::initClass()
{
    SO_NODE_INIT_CLASS(SoProfileCoordinate3, SoNode, "ProfileCoordinate3");
}

void SoProfileCoordinate3::doAction(SoAction* action)
{
    if (point.isIgnored())
        return;
    SoProfileCoordinates coordinates;
    coordinates.homogeneous = point.values();
    action->getState()->write<SoProfileCoordinateElement>().set(this, coordinates);
}
