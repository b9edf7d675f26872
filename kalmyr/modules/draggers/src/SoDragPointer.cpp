#include <kalmyr/draggers/SoDragPointer.h>

#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/base/SbProjector.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/events/SoEvent.h>

#include <cmath>

namespace {

template <class Projector>
Projector made(const SbViewVolume& volume, const SbMatrix& toWorld)
{
    Projector projector;
    projector.setViewVolume(volume);
    projector.setWorkingSpace(toWorld);
    return projector;
}

/// The angle about a unit axis from one direction to another.
float angleBetween(const SbVec3f& from, const SbVec3f& to, const SbVec3f& axis)
{
    const SbVec3f a = from - axis * axis.dot(from), b = to - axis * axis.dot(to);
    return std::atan2(a.cross(b).dot(axis), a.dot(b));
}

} // namespace

SoDragPointer::SoDragPointer(SoHandleEventAction* action)
    : m_volume(SoViewElement::get(action->getState()).volume),
      m_toWorld(SoModelMatrixElement::get(action->getState())),
      m_position(action->getEvent()->getNormalizedPosition(
          SoViewportRegionElement::get(action->getState())))
{
    shift = action->getEvent()->wasShiftDown();
    ctrl = action->getEvent()->wasCtrlDown();
}

SbVec3f SoDragPointer::pointNear(const SbVec3f& point) const
{
    SbLine sight;
    m_volume.projectPointToLine(m_position, sight);
    return m_toWorld.inverse().point(sight.getClosestPoint(m_toWorld.point(point)));
}

bool SoDragPointer::moveOnLine(const SbVec3f& direction, SbVec3f& to) const
{
    auto line = made<SbLineProjector>(m_volume, m_toWorld);
    line.setLine(hit, direction.normalized());
    return line.project(m_position, to);
}

bool SoDragPointer::moveInPlane(const SbVec3f& normal, SbVec3f& to) const
{
    auto plane = made<SbPlaneProjector>(m_volume, m_toWorld);
    plane.setPlane(SbPlane(normal, hit));
    return plane.project(m_position, to);
}

bool SoDragPointer::moveAcrossView(SbVec3f& to) const
{
    auto plane = made<SbPlaneProjector>(m_volume, m_toWorld);
    plane.setAcrossView(hit);
    return plane.project(m_position, to);
}

SbVec3f SoDragPointer::sightTo(const SbVec3f& point) const
{
    const SbMatrix toLocal = m_toWorld.inverse();
    if (m_volume.getProjectionType() == SbViewVolume::ORTHOGRAPHIC)
        return toLocal.direction(m_volume.getProjectionDirection());
    return point - toLocal.point(m_volume.getProjectionPoint());
}

bool SoDragPointer::turnCylinder(const SbVec3f& center, const SbVec3f& axis, float& angle) const
{
    const SbVec3f unit = axis.normalized();
    const SbVec3f arm = (hit - center) - unit * unit.dot(hit - center);
    auto cylinder = made<SbCylinderProjector>(m_volume, m_toWorld);
    cylinder.setCylinder(center, unit, arm.length());
    cylinder.setFront(arm.dot(sightTo(hit)) <= 0);
    SbVec3f to;
    if (!cylinder.project(m_position, to))
        return false;
    angle = angleBetween(arm, to - center, unit);
    return true;
}

bool SoDragPointer::turnDisc(const SbVec3f& center, const SbVec3f& axis, float& angle) const
{
    constexpr float kFlat = 0.1f; ///< sine to the line of sight
    const SbVec3f unit = axis.normalized();
    // Decided where it was taken, so that one drag goes one way.
    const SbVec3f sight = sightTo(hit).normalized();
    if (std::abs(sight.dot(unit)) < kFlat)
        return turnCylinder(center, axis, angle);
    auto plane = made<SbPlaneProjector>(m_volume, m_toWorld);
    plane.setPlane(SbPlane(unit, hit));
    SbVec3f to;
    if (!plane.project(m_position, to))
        return false;
    angle = angleBetween(hit - center, to - center, unit);
    return true;
}

bool SoDragPointer::turnBall(const SbVec3f& center, SbVec3f& to) const
{
    auto ball = made<SbSphereProjector>(m_volume, m_toWorld);
    ball.setSphere(center, (hit - center).length());
    ball.setFront((hit - center).dot(sightTo(hit)) <= 0);
    return ball.project(m_position, to);
}
