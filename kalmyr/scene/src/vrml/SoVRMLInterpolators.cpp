#include <kalmyr/vrml/SoVRMLInterpolators.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

/// Key values that are missing are those before.
template <class Field>
typename Field::Value valueAt(const Field& values, int index)
{
    return values[std::min(index, values.getNum() - 1)];
}

template <class T>
T mixed(const T& a, const T& b, float t)
{
    return a + (b - a) * t;
}

SbColor mixedHue(const SbColor& a, const SbColor& b, float t)
{
    float ha, sa, va, hb, sb, vb;
    a.getHSVValue(ha, sa, va);
    b.getHSVValue(hb, sb, vb);
    // Greys have no hue of their own, and the way round the circle is the shorter one.
    if (sa == 0)
        ha = hb;
    if (sb == 0)
        hb = ha;
    if (std::fabs(hb - ha) > 0.5f)
        (hb > ha ? ha : hb) += 1;
    SbColor result;
    const float hue = mixed(ha, hb, t);
    return result.setHSVValue(hue - std::floor(hue), mixed(sa, sb, t), mixed(va, vb, t));
}

SbVec3f mixedDirection(const SbVec3f& a, const SbVec3f& b, float t)
{
    SbVec3f from = a, to = b;
    if (from.normalize() == 0 || to.normalize() == 0)
        return mixed(a, b, t);
    const SbRotation turn(from, to);
    SbVec3f result;
    SbRotation::slerp(SbRotation(), turn, t).multVec(from, result);
    return result;
}

/// One of the lists that the key values hold one after the other.
template <class Mix>
std::vector<SbVec3f> mixedLists(const SoMFVec3f& values, int numKeys, int at, float t, Mix mix)
{
    const int size = numKeys > 0 ? values.getNum() / numKeys : 0;
    std::vector<SbVec3f> result(static_cast<std::size_t>(size));
    for (int i = 0; i < size; ++i) {
        const int first = at * size + i, second = std::min(at + 1, numKeys - 1) * size + i;
        result[static_cast<std::size_t>(i)] = mix(values[first], values[second], t);
    }
    return result;
}

void setList(SoMFVec3f& field, const std::vector<SbVec3f>& values)
{
    if (values.empty())
        return; // fewer key values than keys
    field.setNumQuietly(static_cast<int>(values.size()));
    std::copy(values.begin(), values.end(), field.startEditing());
    field.finishEditing();
}

} // namespace

SO_NODE_SOURCE(SoVRMLInterpolator)

SoVRMLInterpolator::SoVRMLInterpolator()
    : m_sensor([](void* self, SoSensor*) { static_cast<SoVRMLInterpolator*>(self)->follow(); },
               this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_fraction);
    SO_VRML_EXPOSED_EMPTY(key);
    m_sensor.setPriority(0);
    m_sensor.attach(&set_fraction);
}

SoVRMLInterpolator::~SoVRMLInterpolator()
{
    m_sensor.detach();
}

void SoVRMLInterpolator::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoVRMLInterpolator, SoNode, "VRMLInterpolator");
}

void SoVRMLInterpolator::follow()
{
    const float fraction = set_fraction.getValue();
    const auto keys = key.values();
    if (keys.empty() || !m_cascade.mayReact())
        return;
    const auto above = std::upper_bound(keys.begin(), keys.end(), fraction);
    if (above == keys.begin() || above == keys.end()) {
        interpolate(above == keys.begin() ? 0 : static_cast<int>(keys.size()) - 1, 0);
        return;
    }
    const float before = *(above - 1);
    interpolate(static_cast<int>(above - keys.begin()) - 1,
                (fraction - before) / (*above - before));
}

SO_NODE_SOURCE(SoVRMLColorInterpolator)

SoVRMLColorInterpolator::SoVRMLColorInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoVRMLInterpolator);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLColorInterpolator::~SoVRMLColorInterpolator() = default;

void SoVRMLColorInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLColorInterpolator, SoVRMLInterpolator, "VRMLColorInterpolator");
}

void SoVRMLColorInterpolator::interpolate(int at, float t)
{
    if (keyValue.getNum() > 0)
        value_changed = mixedHue(valueAt(keyValue, at), valueAt(keyValue, at + 1), t);
}

SO_NODE_SOURCE(SoVRMLCoordinateInterpolator)

SoVRMLCoordinateInterpolator::SoVRMLCoordinateInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoVRMLInterpolator);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLCoordinateInterpolator::~SoVRMLCoordinateInterpolator() = default;

void SoVRMLCoordinateInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLCoordinateInterpolator, SoVRMLInterpolator,
                       "VRMLCoordinateInterpolator");
}

void SoVRMLCoordinateInterpolator::interpolate(int at, float t)
{
    setList(value_changed, mixedLists(keyValue, key.getNum(), at, t, mixed<SbVec3f>));
}

SO_NODE_SOURCE(SoVRMLNormalInterpolator)

SoVRMLNormalInterpolator::SoVRMLNormalInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoVRMLInterpolator);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLNormalInterpolator::~SoVRMLNormalInterpolator() = default;

void SoVRMLNormalInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNormalInterpolator, SoVRMLInterpolator, "VRMLNormalInterpolator");
}

void SoVRMLNormalInterpolator::interpolate(int at, float t)
{
    setList(value_changed, mixedLists(keyValue, key.getNum(), at, t, mixedDirection));
}

SO_NODE_SOURCE(SoVRMLOrientationInterpolator)

SoVRMLOrientationInterpolator::SoVRMLOrientationInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoVRMLInterpolator);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLOrientationInterpolator::~SoVRMLOrientationInterpolator() = default;

void SoVRMLOrientationInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLOrientationInterpolator, SoVRMLInterpolator,
                       "VRMLOrientationInterpolator");
}

void SoVRMLOrientationInterpolator::interpolate(int at, float t)
{
    if (keyValue.getNum() > 0)
        value_changed = SbRotation::slerp(valueAt(keyValue, at), valueAt(keyValue, at + 1), t);
}

SO_NODE_SOURCE(SoVRMLPositionInterpolator)

SoVRMLPositionInterpolator::SoVRMLPositionInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoVRMLInterpolator);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLPositionInterpolator::~SoVRMLPositionInterpolator() = default;

void SoVRMLPositionInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLPositionInterpolator, SoVRMLInterpolator, "VRMLPositionInterpolator");
}

void SoVRMLPositionInterpolator::interpolate(int at, float t)
{
    if (keyValue.getNum() > 0)
        value_changed = mixed(valueAt(keyValue, at), valueAt(keyValue, at + 1), t);
}

SO_NODE_SOURCE(SoVRMLScalarInterpolator)

SoVRMLScalarInterpolator::SoVRMLScalarInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoVRMLInterpolator);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLScalarInterpolator::~SoVRMLScalarInterpolator() = default;

void SoVRMLScalarInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLScalarInterpolator, SoVRMLInterpolator, "VRMLScalarInterpolator");
}

void SoVRMLScalarInterpolator::interpolate(int at, float t)
{
    if (keyValue.getNum() > 0)
        value_changed = mixed(valueAt(keyValue, at), valueAt(keyValue, at + 1), t);
}
