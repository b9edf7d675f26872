// Drives the sensors of the pointer and of the viewer by events.
#include <kalmyr/vrml/SoVRMLSensors.h>

#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/events/SoEvent.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr float kPi = std::numbers::pi_v<float>;
/// Lines at a smaller angle to a plane (sine) do not meet it.
constexpr float kMinSlope = 1e-5f;

const SbVec3f kUp(0, 1, 0);

/// Where the line meets the plane at right angles to an axis; the nearest point of the line's start
/// when it runs along the plane.
SbVec3f meetPlane(const SbLine& line, int axis, float place)
{
    const float slope = line.getDirection()[axis];
    SbVec3f at = line.getPosition();
    if (std::abs(slope) >= kMinSlope)
        at = line.getPoint((place - at[axis]) / slope);
    at[axis] = place;
    return at;
}

/// Distance along a line to the first point with a * t^2 + 2 * b * t + c = 0, or to the nearest
/// miss.
float firstRoot(float a, float b, float c)
{
    if (!(a > 0))
        return 0;
    return (-b - std::sqrt(std::max(b * b - a * c, 0.0f))) / a;
}

SbVec3f meetSphere(const SbLine& line, float radius)
{
    const SbVec3f from = line.getPosition(), along = line.getDirection();
    const SbVec3f at =
        line.getPoint(firstRoot(1, from.dot(along), from.dot(from) - radius * radius));
    const float length = at.length();
    return length > 0 ? at * (radius / length) : SbVec3f(0, 0, radius);
}

SbVec3f meetCylinder(const SbLine& line, float radius)
{
    const SbVec3f from = line.getPosition(), along = line.getDirection();
    const float a = along[0] * along[0] + along[2] * along[2];
    const float b = from[0] * along[0] + from[2] * along[2];
    const float c = from[0] * from[0] + from[2] * from[2] - radius * radius;
    SbVec3f at = line.getPoint(firstRoot(a, b, c));
    const float length = std::hypot(at[0], at[2]);
    if (length > 0) {
        at[0] *= radius / length;
        at[2] *= radius / length;
    }
    return at;
}

/// About the y axis from z towards x.
float directionOf(const SbVec3f& point)
{
    return std::atan2(point[0], point[2]);
}

/// The same direction, at most half a turn away.
float unwound(float angle)
{
    return std::remainder(angle, 2 * kPi);
}

float clamped(float value, float low, float high)
{
    return low <= high ? std::clamp(value, low, high) : value;
}

SbTime timeOf(const SoHandleEventAction* action)
{
    const SbTime time = action->getEvent()->getTime();
    return time == SbTime() ? SbTime::getTimeOfDay() : time;
}

/// Tells that a sensor of the viewer begins or ends to be active.
template <class Sensor>
void setActive(Sensor& sensor, bool on, SbTime time)
{
    if (sensor.isActive.getValue() == on)
        return;
    sensor.isActive = on;
    (on ? sensor.enterTime : sensor.exitTime) = time;
}

template <class Sensor>
SbBox3f boxOf(const Sensor& sensor)
{
    const SbVec3f half = sensor.size.getValue() / 2.0f;
    return {sensor.center.getValue() - half, sensor.center.getValue() + half};
}

} // namespace

void SoVRMLTouchSensor::hover(const Pointer& pointer)
{
    if (isOver.getValue() != pointer.isOver)
        isOver = pointer.isOver;
    if (!pointer.isOver)
        return;
    hitPoint_changed = pointer.hit.point;
    hitNormal_changed = pointer.hit.normal;
    hitTexCoord_changed = pointer.hit.texCoord;
}

void SoVRMLTouchSensor::release(const Pointer& pointer)
{
    hover(pointer);
    if (pointer.isOver)
        touchTime = pointer.time;
}

void SoVRMLPlaneSensor::press(const Pointer& pointer)
{
    m_start = pointer.hit.point;
    m_startOffset = offset.getValue();
    drag(pointer);
}

void SoVRMLPlaneSensor::drag(const Pointer& pointer)
{
    const SbVec3f at = meetPlane(pointer.ray, 2, m_start[2]);
    SbVec3f moved = at - m_start + m_startOffset;
    const SbVec2f low = minPosition.getValue(), high = maxPosition.getValue();
    for (int i = 0; i < 2; ++i)
        moved[i] = clamped(moved[i], low[i], high[i]);
    trackPoint_changed = at;
    translation_changed = moved;
}

void SoVRMLPlaneSensor::release(const Pointer&)
{
    if (autoOffset.getValue())
        offset = translation_changed.getValue();
}

SbVec3f SoVRMLCylinderSensor::trackPoint(const SbLine& ray) const
{
    return m_isDisk ? meetPlane(ray, 1, m_height) : meetCylinder(ray, m_radius);
}

void SoVRMLCylinderSensor::press(const Pointer& pointer)
{
    const float slope = std::abs(pointer.ray.getDirection().dot(kUp));
    m_isDisk = std::acos(std::min(slope, 1.0f)) < diskAngle.getValue();
    m_height = pointer.hit.point[1];
    m_radius = std::hypot(pointer.hit.point[0], pointer.hit.point[2]);
    m_direction = directionOf(pointer.hit.point);
    m_angle = offset.getValue();
    drag(pointer);
}

void SoVRMLCylinderSensor::drag(const Pointer& pointer)
{
    const SbVec3f at = trackPoint(pointer.ray);
    const float direction = directionOf(at);
    m_angle += unwound(direction - m_direction); // so that more than one turn can be made
    m_direction = direction;
    m_lastOffset = clamped(m_angle, minAngle.getValue(), maxAngle.getValue());
    trackPoint_changed = at;
    rotation_changed.setValue(SbRotation(kUp, m_lastOffset));
}

void SoVRMLCylinderSensor::release(const Pointer&)
{
    if (autoOffset.getValue())
        offset = m_lastOffset;
}

void SoVRMLSphereSensor::press(const Pointer& pointer)
{
    m_radius = pointer.hit.point.length();
    m_start = pointer.hit.point;
    drag(pointer);
}

void SoVRMLSphereSensor::drag(const Pointer& pointer)
{
    const SbVec3f at = meetSphere(pointer.ray, m_radius);
    trackPoint_changed = at;
    rotation_changed.setValue(offset.getValue() * SbRotation(m_start, at));
}

void SoVRMLSphereSensor::release(const Pointer&)
{
    if (autoOffset.getValue())
        offset.setValue(rotation_changed.getValue());
}

void SoVRMLProximitySensor::handleEvent(SoHandleEventAction* action)
{
    const SoView& view = SoViewElement::get(action->getState());
    if (!view.valid)
        return;
    bool invertible = true;
    const SbMatrix toLocal = SoModelMatrixElement::get(action->getState()).inverse(&invertible);
    const SbVec3f viewer = toLocal.point(view.volume.getProjectionPoint());
    const SbVec3f extent = size.getValue();
    const bool isBox = extent[0] > 0 && extent[1] > 0 && extent[2] > 0;
    const bool inside = enabled.getValue() && invertible && isBox && boxOf(*this).intersect(viewer);
    setActive(*this, inside, timeOf(action));
    if (!inside)
        return;
    if (position_changed.getValue() != viewer)
        position_changed = viewer;
    const SbRotation turn(view.viewing.inverse() * toLocal);
    if (!(orientation_changed.getValue() == turn))
        orientation_changed.setValue(turn);
}

void SoVRMLVisibilitySensor::handleEvent(SoHandleEventAction* action)
{
    const SoView& view = SoViewElement::get(action->getState());
    if (!view.valid)
        return;
    SbBox3f box = boxOf(*this);
    box.transform(SoModelMatrixElement::get(action->getState()));
    setActive(*this, enabled.getValue() && view.volume.intersect(box), timeOf(action));
}
