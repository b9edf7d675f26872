#include <kalmyr/draggers/SoClipPlaneDragger.h>

#include "HandleOutlines.h"

SO_KIT_SOURCE(SoClipPlaneDragger)

SoClipPlaneDragger::SoClipPlaneDragger()
{
    using namespace kalmyr::detail;
    SO_NODE_CONSTRUCTOR(SoPlacedDragger);
    SO_ADD_FIELD(plane, (SbPlane(SbVec3f(1, 0, 0), 0)));
    SO_ADD_FIELD(location, (0.0f, 0.0f, 0.0f));
    SO_KIT_MAKE_PARTS();
    const Part plate{"plate", SoDragHandle::MOVE_LINE, kZ, kNeutral};
    addFaces(plate, {square(2, 0, 1)});
    addLines(plate, {closed(square(2, 0, 1))});
    const Part arrow{"arrow", SoDragHandle::TURN_BALL, kZ, kBlue};
    addLines(arrow, {{kZ * 0.3f, kZ}});
    addKnob(arrow, CONE, kZ, kZ, 0.12f);
    addKnob({"ball", SoDragHandle::MOVE_PLANE, kZ, kNeutral}, BALL, SbVec3f(), kY, 0.12f);
}

SoClipPlaneDragger::~SoClipPlaneDragger() = default;

void SoClipPlaneDragger::initClass()
{
    SO_KIT_INIT_CLASS(SoClipPlaneDragger, SoPlacedDragger, "ClipPlaneDragger");
}

void SoClipPlaneDragger::begin(const SoDragHandle& handle, const SoDragPointer& pointer)
{
    m_slides = handle.motion.getValue() == SoDragHandle::MOVE_PLANE;
    SoPlacedDragger::begin(handle, pointer);
}

SbVec3f SoClipPlaneDragger::getPlace() const
{
    const SbPlane& value = plane.getValue();
    const SbVec3f hint = location.getValue();
    return hint - value.getNormal() * value.getDistance(hint);
}

void SoClipPlaneDragger::setPlace(const SbVec3f& place)
{
    // The dragger's own place is no change of the plane.
    if (m_slides)
        put(location, place);
    else
        put(plane, SbPlane(plane.getValue().getNormal(), place));
}

void SoClipPlaneDragger::setDirection(const SbVec3f& value)
{
    put(location, placeBefore()); // it turns about where it stands
    put(plane, SbPlane(-value, placeBefore()));
}
