#include <kalmyr/draggers/SoPlacedDragger.h>

#include <algorithm>
#include <cmath>

namespace {

/// The axis, to either side, that a direction is nearest to.
SbVec3f nearestAxis(const SbVec3f& direction)
{
    int main = 0;
    for (int i = 1; i < 3; ++i)
        if (std::abs(direction[i]) > std::abs(direction[main]))
            main = i;
    SbVec3f axis;
    axis[main] = direction[main] < 0 ? -1.0f : 1.0f;
    return axis;
}

} // namespace

SO_KIT_SOURCE(SoPlacedDragger)

SoPlacedDragger::SoPlacedDragger()
{
    SO_NODE_CONSTRUCTOR(SoDragger);
    SO_KIT_MAKE_PARTS();
}

SoPlacedDragger::~SoPlacedDragger() = default;

void SoPlacedDragger::initClass()
{
    SO_KIT_INIT_ABSTRACT_CLASS(SoPlacedDragger, SoDragger, "PlacedDragger");
}

SbMatrix SoPlacedDragger::getMotionMatrix() const
{
    SbMatrix matrix;
    matrix.setTransform(getPlace(), SbRotation(SbVec3f(0, 0, -1), getDirection()),
                        SbVec3f(1, 1, 1));
    return matrix;
}

void SoPlacedDragger::begin(const SoDragHandle&, const SoDragPointer&)
{
    m_place = getPlace();
    m_direction = getDirection();
}

void SoPlacedDragger::follow(const SoDragHandle& handle, const SoDragPointer& pointer)
{
    const SbRotation turn(SbVec3f(0, 0, -1), m_direction);
    const SbVec3f axis = turn.rotated(handle.axis.getValue());
    SbVec3f to;
    switch (handle.motion.getValue()) {
    case SoDragHandle::MOVE_LINE:
        if (pointer.moveOnLine(axis, to))
            setPlace(m_place + (to - pointer.hit));
        break;
    case SoDragHandle::MOVE_PLANE:
        if (pointer.moveInPlane(axis, to))
            setPlace(m_place + (to - pointer.hit));
        break;
    case SoDragHandle::MOVE_VIEW: {
        if (!pointer.moveAcrossView(to))
            break;
        const bool alongOne = pointer.shift && to != pointer.hit;
        if (!alongOne || pointer.moveOnLine(nearestAxis(to - pointer.hit), to))
            setPlace(m_place + (to - pointer.hit));
        break;
    }
    case SoDragHandle::TURN_BALL: {
        if (!pointer.turnBall(m_place, to))
            break;
        const float length = m_direction.length();
        SbVec3f direction =
            SbRotation(pointer.hit - m_place, to - m_place).rotated(m_direction).normalized();
        if (pointer.shift)
            direction = nearestAxis(direction);
        setDirection(direction * (length > 0 ? length : 1));
        break;
    }
    default:
        followOther(handle, pointer);
    }
}
