#include <kalmyr/nodes/SoCoordinate4.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoNurbsElements.h>

#include "core/CacheLock.h"

SO_NODE_SOURCE(SoCoordinate4)

SoCoordinate4::SoCoordinate4()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(point);
}

SoCoordinate4::~SoCoordinate4() = default;

void SoCoordinate4::initClass()
{
    SO_NODE_INIT_CLASS(SoCoordinate4, SoNode, "Coordinate4");
}

void SoCoordinate4::project()
{
    const kalmyr::detail::CacheLock lock;
    if (m_projectedId == getChangeId())
        return;
    const auto points = point.values();
    m_projected.resize(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        points[i].getReal(m_projected[i]);
    m_projectedId = getChangeId();
}

void SoCoordinate4::doAction(SoAction* action)
{
    if (point.isIgnored())
        return;
    project();
    action->getState()->write<SoCoordinateElement>().set(this, m_projected);
    action->getState()->write<SoHomogeneousElement>().set(this, point.values());
}
