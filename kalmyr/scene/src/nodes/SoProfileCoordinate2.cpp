#include <kalmyr/nodes/SoProfileCoordinate2.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoNurbsElements.h>

SO_NODE_SOURCE(SoProfileCoordinate2)

SoProfileCoordinate2::SoProfileCoordinate2()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(point);
}

SoProfileCoordinate2::~SoProfileCoordinate2() = default;

void SoProfileCoordinate2::initClass()
{
    SO_NODE_INIT_CLASS(SoProfileCoordinate2, SoNode, "ProfileCoordinate2");
}

void SoProfileCoordinate2::doAction(SoAction* action)
{
    if (point.isIgnored())
        return;
    SoProfileCoordinates coordinates;
    coordinates.plain = point.values();
    action->getState()->write<SoProfileCoordinateElement>().set(this, coordinates);
}
