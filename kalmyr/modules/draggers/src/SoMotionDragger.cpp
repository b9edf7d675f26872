#include <kalmyr/draggers/SoMotionDragger.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr float kPi = std::numbers::pi_v<float>;
constexpr float kSmallestScale = 1e-5f;

int mainAxis(const SbVec3f& v)
{
    int best = 0;
    for (int i = 1; i < 3; ++i)
        if (std::abs(v[i]) > std::abs(v[best]))
            best = i;
    return best;
}

SbVec3f unitAxis(int i)
{
    SbVec3f axis;
    axis[i] = 1;
    return axis;
}

/// How far a rotation turns about a unit axis.
float angleAbout(const SbRotation& rotation, const SbVec3f& axis)
{
    const float* q = rotation.getValue();
    return 2 * std::atan2(SbVec3f(q[0], q[1], q[2]).dot(axis), q[3]);
}

float clamped(float value, float low, float high)
{
    return low <= high ? std::clamp(value, low, high) : value;
}

} // namespace

SO_KIT_SOURCE(SoMotionDragger)

SoMotionDragger::SoMotionDragger()
{
    SO_NODE_CONSTRUCTOR(SoDragger);
    SO_KIT_MAKE_PARTS();
}

SoMotionDragger::~SoMotionDragger() = default;

void SoMotionDragger::initClass()
{
    SO_KIT_INIT_ABSTRACT_CLASS(SoMotionDragger, SoDragger, "MotionDragger");
}

void SoMotionDragger::useTranslation(SoSFVec3f& value, SoSFVec3f& low, SoSFVec3f& high)
{
    m_translation = &value;
    m_minTranslation = &low;
    m_maxTranslation = &high;
}

void SoMotionDragger::useAngleLimits(SoSFFloat& low, SoSFFloat& high)
{
    m_minAngle = &low;
    m_maxAngle = &high;
}

void SoMotionDragger::useScale(SoSFVec3f& value, SoSFFloat& low, SoSFFloat& high)
{
    m_scale = &value;
    m_minScale = &low;
    m_maxScale = &high;
}

void SoMotionDragger::useCenter(SoSFVec3f& center, SoSFRotation& scaleOrientation)
{
    m_center = &center;
    m_scaleOrientation = &scaleOrientation;
}

SbMatrix SoMotionDragger::Values::matrix() const
{
    SbMatrix matrix;
    matrix.setTransform(translation, rotation, scale, axes, center);
    return matrix;
}

/// Unit vector of the space around.
SbVec3f SoMotionDragger::Values::scaleAxis(int i) const
{
    return rotation.rotated(axes.rotated(unitAxis(i)));
}

SoMotionDragger::Values SoMotionDragger::values() const
{
    Values values;
    if (m_translation)
        values.translation = m_translation->getValue();
    if (m_rotation)
        values.rotation = m_rotation->getValue();
    if (m_scale)
        values.scale = m_scale->getValue();
    if (m_center)
        values.center = m_center->getValue();
    if (m_scaleOrientation)
        values.axes = m_scaleOrientation->getValue();
    return values;
}

void SoMotionDragger::put(const Values& values)
{
    if (m_translation) {
        SbVec3f to = values.translation;
        const SbVec3f low = m_minTranslation->getValue(), high = m_maxTranslation->getValue();
        for (int i = 0; i < 3; ++i)
            to[i] = clamped(to[i], low[i], high[i]);
        SoDragger::put(*m_translation, to);
    }
    if (m_rotation)
        SoDragger::put(*m_rotation, values.rotation);
    if (m_scale)
        SoDragger::put(*m_scale, values.scale);
}

SbMatrix SoMotionDragger::getMotionMatrix() const
{
    return values().matrix();
}

void SoMotionDragger::begin(const SoDragHandle&, const SoDragPointer&)
{
    m_start = values();
    m_angle = 0;
}

void SoMotionDragger::follow(const SoDragHandle& handle, const SoDragPointer& pointer)
{
    Values to = m_start;
    SbVec3f by;
    SbRotation turn;
    switch (handle.motion.getValue()) {
    case SoDragHandle::MOVE_LINE:
    case SoDragHandle::MOVE_PLANE:
    case SoDragHandle::MOVE_VIEW:
        if (!moved(handle, pointer, by))
            return;
        to.translation += by;
        break;
    case SoDragHandle::TURN_CYLINDER:
    case SoDragHandle::TURN_DISC:
    case SoDragHandle::TURN_BALL:
        if (!turned(handle, pointer, turn))
            return;
        to.rotation = m_start.rotation * turn;
        break;
    default:
        if (!scaled(handle, pointer, to))
            return;
    }
    put(to);
}

/// A direction of the dragger's own space as it lay around it when the dragger was taken.
SbVec3f SoMotionDragger::inStart(const SbVec3f& axis) const
{
    return m_start.matrix().direction(axis).normalized();
}

/// The move along that one of some directions in which the pointer has gone furthest.
bool SoMotionDragger::snapped(const SoDragPointer& pointer, const SbVec3f* axes, int numAxes,
                              SbVec3f& by) const
{
    const SbVec3f free = by;
    const SbVec3f* best =
        std::max_element(axes, axes + numAxes, [&free](const SbVec3f& a, const SbVec3f& b) {
            return std::abs(free.dot(a)) < std::abs(free.dot(b));
        });
    SbVec3f to;
    if (!pointer.moveOnLine(*best, to))
        return false;
    by = to - pointer.hit;
    return true;
}

bool SoMotionDragger::moved(const SoDragHandle& handle, const SoDragPointer& pointer,
                            SbVec3f& by) const
{
    const SbVec3f axis = handle.axis.getValue();
    const int main = mainAxis(axis);
    const SbVec3f along = inStart(axis);
    const SbVec3f sides[3] = {inStart(unitAxis((main + 1) % 3)), inStart(unitAxis((main + 2) % 3)),
                              inStart(unitAxis(main))};
    SbVec3f to = pointer.hit;
    const int motion = handle.motion.getValue();
    if (motion == SoDragHandle::MOVE_LINE || (motion == SoDragHandle::MOVE_PLANE && pointer.ctrl)) {
        if (!pointer.moveOnLine(along, to))
            return false;
        by = to - pointer.hit;
        return true;
    }
    const bool inPlane = motion == SoDragHandle::MOVE_PLANE;
    if (!(inPlane ? pointer.moveInPlane(sides[0].cross(sides[1]), to) : pointer.moveAcrossView(to)))
        return false;
    by = to - pointer.hit;
    return !pointer.shift || snapped(pointer, sides, inPlane ? 2 : 3, by);
}

bool SoMotionDragger::turned(const SoDragHandle& handle, const SoDragPointer& pointer,
                             SbRotation& by)
{
    if (handle.motion.getValue() == SoDragHandle::TURN_BALL)
        return turnedFreely(pointer, by);
    return turnedAbout(handle, pointer, by);
}

bool SoMotionDragger::turnedAbout(const SoDragHandle& handle, const SoDragPointer& pointer,
                                  SbRotation& by)
{
    // The axis goes with the rotation alone: uneven scale would tilt it.
    const SbVec3f local = handle.axis.getValue().normalized();
    const SbVec3f axis = m_start.rotation.rotated(local);
    float angle = 0;
    const bool asDisc = handle.motion.getValue() == SoDragHandle::TURN_DISC;
    if (!(asDisc ? pointer.turnDisc(m_start.fixedPoint(), axis, angle)
                 : pointer.turnCylinder(m_start.fixedPoint(), axis, angle)))
        return false;
    m_angle += std::remainder(angle - m_angle, 2 * kPi); // counts whole turns
    float applied = m_angle;
    const float before = angleAbout(m_start.rotation, local);
    if (pointer.shift)
        applied = std::round((before + applied) / kSnapAngle) * kSnapAngle - before;
    if (m_minAngle)
        applied =
            clamped(before + applied, m_minAngle->getValue(), m_maxAngle->getValue()) - before;
    by = SbRotation(axis, applied);
    return true;
}

bool SoMotionDragger::turnedFreely(const SoDragPointer& pointer, SbRotation& by) const
{
    const SbVec3f center = m_start.fixedPoint();
    SbVec3f to;
    if (!pointer.turnBall(center, to))
        return false;
    by = SbRotation(pointer.hit - center, to - center);
    if (pointer.shift) {
        // About that one of its own axes which the turn is nearest to.
        SbVec3f axis;
        float angle = 0;
        by.getValue(axis, angle);
        const int main = mainAxis(m_start.rotation.inverse().rotated(axis));
        const SbVec3f own = m_start.rotation.rotated(unitAxis(main));
        by = SbRotation(own, std::remainder(angleAbout(by, own), 2 * kPi));
    }
    return true;
}

/// A factor that keeps a scale of any sign within the limits, and away from nothing.
float SoMotionDragger::limitedFactor(float factor, float scale) const
{
    const float size = std::abs(scale);
    if (!(size > 0))
        return 1;
    const float low = std::max(m_minScale->getValue(), kSmallestScale);
    const float high = m_maxScale->getValue();
    return clamped(std::max(factor * size, low), low, high) / size;
}

bool SoMotionDragger::scaled(const SoDragHandle& handle, const SoDragPointer& pointer,
                             Values& to) const
{
    const int main = mainAxis(handle.axis.getValue());
    switch (handle.motion.getValue()) {
    case SoDragHandle::SCALE_EVENLY:
        return scaledEvenly(pointer, to);
    case SoDragHandle::SCALE_LINE:
        return scaledAlong(pointer, main, to);
    case SoDragHandle::SCALE_PLANE:
        return scaledInPlane(pointer, main, to);
    default:
        return false;
    }
}

/// Returns the fixed point of a scale.
SbVec3f SoMotionDragger::fixedPoint(const SoDragPointer& pointer) const
{
    return pointer.ctrl && m_translation ? pointer.opposite : m_start.fixedPoint();
}

/// About the fixed point; with Ctrl about the point opposite the handle; with Shift only along the
/// axis in which the pointer has gone furthest.
bool SoMotionDragger::scaledEvenly(const SoDragPointer& pointer, Values& to) const
{
    SbVec3f at;
    if (pointer.shift) {
        if (!pointer.moveAcrossView(at))
            return false;
        const SbVec3f by = at - pointer.hit;
        int best = 0;
        for (int i = 1; i < 3; ++i)
            if (std::abs(by.dot(m_start.scaleAxis(i))) > std::abs(by.dot(m_start.scaleAxis(best))))
                best = i;
        return scaledAlong(pointer, best, to);
    }
    const SbVec3f fixed = fixedPoint(pointer);
    const SbVec3f arm = pointer.anchor - fixed;
    if (arm == SbVec3f(0, 0, 0) || !pointer.moveOnLine(arm, at))
        return false;
    float factor = 1 + (at - pointer.hit).dot(arm) / arm.dot(arm);
    // The limits hold for the axis that meets them first.
    for (int i = 0; i < 3; ++i)
        factor = limitedFactor(factor, m_start.scale[i]);
    to.scale *= factor;
    to.translation += (m_start.fixedPoint() - fixed) * (factor - 1);
    return true;
}

/// Keeps the point that was taken under the pointer: a handle moves along the axis by the change of
/// the scale times its own place on the axis.
bool SoMotionDragger::scaledAlong(const SoDragPointer& pointer, int axis, Values& to) const
{
    const SbVec3f along = m_start.scaleAxis(axis);
    const SbVec3f fixed = fixedPoint(pointer);
    const float arm = (pointer.anchor - fixed).dot(along);
    SbVec3f at;
    if (arm == 0 || !pointer.moveOnLine(along, at))
        return false;
    const float factor =
        limitedFactor(1 + (at - pointer.hit).dot(along) / arm, m_start.scale[axis]);
    to.scale[axis] = m_start.scale[axis] * factor;
    to.translation += along * ((m_start.fixedPoint() - fixed).dot(along) * (factor - 1));
    return true;
}

bool SoMotionDragger::scaledInPlane(const SoDragPointer& pointer, int normal, Values& to) const
{
    const SbVec3f center = m_start.fixedPoint();
    SbVec3f at;
    if (!pointer.moveInPlane(m_start.scaleAxis(normal), at))
        return false;
    const SbVec3f by = at - pointer.hit;
    int axes[2] = {(normal + 1) % 3, (normal + 2) % 3};
    if (pointer.shift) {
        const bool second = std::abs(by.dot(m_start.scaleAxis(axes[1])))
                            > std::abs(by.dot(m_start.scaleAxis(axes[0])));
        return scaledAlong(pointer, axes[second ? 1 : 0], to);
    }
    for (const int axis : axes) {
        const SbVec3f along = m_start.scaleAxis(axis);
        const float arm = (pointer.anchor - center).dot(along);
        if (arm != 0)
            to.scale[axis] =
                m_start.scale[axis] * limitedFactor(1 + by.dot(along) / arm, m_start.scale[axis]);
    }
    return true;
}
