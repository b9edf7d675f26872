#include <kalmyr/vrml/SoVRMLPointerSensor.h>

#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/vrml/SoVRMLSensors.h>

namespace {

bool hasSensor(const SoNode* group)
{
    const SoChildList* children = group->getChildren();
    const SoType sensors[] = {
        SoVRMLCylinderSensor::getClassTypeId(), SoVRMLPlaneSensor::getClassTypeId(),
        SoVRMLSphereSensor::getClassTypeId(), SoVRMLTouchSensor::getClassTypeId()};
    for (int i = 0; children && i < children->getLength(); ++i)
        for (const SoType& sensor : sensors)
            if ((*children)[i]->isOfType(sensor))
                return true;
    return false;
}

/// Whether the shape at the end of a path is one of the group's, and of no group further down that
/// has sensors of its own.
bool isBelow(const SoPath& picked, const SoPath& group)
{
    if (!picked.containsPath(&group))
        return false;
    for (int i = picked.getLength(); --i >= 0;) {
        if (picked.getNode(i) == group.getTail())
            return true;
        if (hasSensor(picked.getNode(i)))
            return false;
    }
    return false;
}

} // namespace

SoVRMLPointerSensor::~SoVRMLPointerSensor() = default;

bool SoVRMLPointerSensor::findHit(SoHandleEventAction* action, Pointer& pointer) const
{
    const SoRef<SoPath> own(action->getCurPath());
    const SoPickedPoint* picked = own->getLength() > 1 ? action->getPickedPoint() : nullptr;
    if (!picked)
        return false;
    const SoRef<SoPath> group(own->copy(0, own->getLength() - 1));
    if (!isBelow(*picked->getPath(), *group))
        return false;
    const SbMatrix toGroup = SoModelMatrixElement::get(action->getState()).inverse();
    pointer.hit.point = toGroup.point(picked->getPoint());
    pointer.hit.normal = toGroup.direction(picked->getNormal()).normalized();
    pointer.hit.texCoord = picked->getTextureCoords();
    return true;
}

void SoVRMLPointerSensor::handleEvent(SoHandleEventAction* action)
{
    const SoEvent* event = action->getEvent();
    const bool moves = event && event->isOfType(SoLocation2Event::getClassTypeId());
    const auto button = SoMouseButtonEvent::BUTTON1;
    const bool presses = SoMouseButtonEvent::isPressEvent(event, button);
    const bool releases = SoMouseButtonEvent::isReleaseEvent(event, button);
    const SoView& view = SoViewElement::get(action->getState());
    if (!(moves || presses || releases) || !view.valid)
        return;
    const bool wasActive = active().getValue();
    if (!isEnabled()) {
        hover(Pointer());
        if (wasActive)
            active() = false;
        if (action->getGrabber() == this)
            action->releaseGrabber();
        return;
    }
    Pointer pointer;
    SbLine line;
    view.volume.projectPointToLine(event->getNormalizedPosition(action->getViewportRegion()), line);
    pointer.ray = line.transformed(SoModelMatrixElement::get(action->getState()).inverse());
    pointer.time = event->getTime() == SbTime() ? SbTime::getTimeOfDay() : event->getTime();
    pointer.isOver = findHit(action, pointer);
    const SoRef<SoVRMLPointerSensor> self(this); // whoever is told may drop us
    if (wasActive)
        follow(action, pointer);
    else if (presses && pointer.isOver)
        start(action, pointer);
    else if (moves)
        hover(pointer);
}

void SoVRMLPointerSensor::start(SoHandleEventAction* action, const Pointer& pointer)
{
    action->setGrabber(this);
    action->setHandled();
    hover(pointer);
    active() = true;
    press(pointer);
}

void SoVRMLPointerSensor::follow(SoHandleEventAction* action, const Pointer& pointer)
{
    action->setHandled();
    if (!SoMouseButtonEvent::isReleaseEvent(action->getEvent(), SoMouseButtonEvent::BUTTON1)) {
        drag(pointer);
        return;
    }
    if (action->getGrabber() == this)
        action->releaseGrabber();
    active() = false;
    release(pointer);
}
