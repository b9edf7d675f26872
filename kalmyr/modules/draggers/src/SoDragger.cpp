#include <kalmyr/draggers/SoDragger.h>

#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/nodes/SoDrawStyle.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/shapes/SoSphere.h>

#include <algorithm>

SO_KIT_SOURCE(SoDragger)

SoDragger::SoDragger()
{
    SO_NODE_CONSTRUCTOR(SoInteractionKit);
    SO_KIT_PART(drawStyle);
    SO_KIT_PART(shape);
    SO_ADD_FIELD(isActive, (false));
    SO_KIT_MAKE_PARTS();
    // What it is drawn around stays in sight.
    auto* style = static_cast<SoDrawStyle*>(getPart("drawStyle"));
    style->style.initValue(SoDrawStyle::LINES);
}

SoDragger::~SoDragger() = default;

void SoDragger::initClass()
{
    SO_KIT_INIT_ABSTRACT_CLASS(SoDragger, SoInteractionKit, "Dragger");
    s_catalog->addPart("shape", SoShape::getClassTypeId(), SoSphere::getClassTypeId(),
                       {"geomSeparator", ""});
    s_catalog->addPart("drawStyle", SoDrawStyle::getClassTypeId(), SoDrawStyle::getClassTypeId(),
                       {"geomSeparator", "shape"});
    s_catalog->setNullByDefault("drawStyle", false);
    SoHandleEventAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<SoDragger*>(node)->handleEvent(static_cast<SoHandleEventAction*>(action));
    });
}

void SoDragger::addStartCallback(Function* function, void* userData)
{
    m_startCallbacks.push_back({function, userData});
}

void SoDragger::removeStartCallback(Function* function, void* userData)
{
    remove(m_startCallbacks, {function, userData});
}

void SoDragger::addMotionCallback(Function* function, void* userData)
{
    m_motionCallbacks.push_back({function, userData});
}

void SoDragger::removeMotionCallback(Function* function, void* userData)
{
    remove(m_motionCallbacks, {function, userData});
}

void SoDragger::addFinishCallback(Function* function, void* userData)
{
    m_finishCallbacks.push_back({function, userData});
}

void SoDragger::removeFinishCallback(Function* function, void* userData)
{
    remove(m_finishCallbacks, {function, userData});
}

void SoDragger::remove(Callbacks& from, const Callback& callback)
{
    const auto at = std::find(from.begin(), from.end(), callback);
    if (at != from.end())
        from.erase(at);
}

void SoDragger::call(const Callbacks& callbacks)
{
    // A copy: callbacks may add and remove callbacks.
    for (const Callback& callback : Callbacks(callbacks))
        callback.function(callback.userData, this);
}

void SoDragger::doAction(SoAction* action)
{
    SoState* state = action->getState();
    state->push();
    SoModelMatrixElement::mult(state, this, getMotionMatrix());
    SoInteractionKit::doAction(action);
    state->pop();
}

SoDragger::Pointer SoDragger::pointerOf(SoHandleEventAction* action) const
{
    const SoEvent* event = action->getEvent();
    const SbViewVolume& volume = SoViewElement::get(action->getState()).volume;
    const SbMatrix toLocal = SoModelMatrixElement::get(action->getState()).inverse();
    SbLine line;
    volume.projectPointToLine(event->getNormalizedPosition(action->getViewportRegion()), line);
    return {line.transformed(toLocal),
            toLocal.direction(volume.getProjectionDirection()).normalized(), event->wasShiftDown(),
            event->wasCtrlDown()};
}

void SoDragger::take(SoHandleEventAction* action)
{
    const SoPickedPoint* picked = action->getPickedPoint();
    const SoRef<SoPath> here(action->getCurPath());
    if (!picked || !picked->getPath()->containsPath(here.get()))
        return;
    const SbMatrix toLocal = SoModelMatrixElement::get(action->getState()).inverse();
    const SbVec3f hit = toLocal.point(picked->getPoint());
    action->setGrabber(this);
    action->setHandled();
    begin(hit, pointerOf(action));
    isActive.setValue(true);
    call(m_startCallbacks);
}

void SoDragger::handleEvent(SoHandleEventAction* action)
{
    const SoEvent* event = action->getEvent();
    if (!event)
        return;
    const SoRef<SoDragger> self(this); // a callback may take it out of the graph
    if (!isActive.getValue()) {
        if (SoMouseButtonEvent::isPressEvent(event, SoMouseButtonEvent::BUTTON1))
            take(action);
        return;
    }
    if (action->getGrabber() != this) {
        isActive.setValue(false); // somebody else let go of it
    } else if (SoMouseButtonEvent::isReleaseEvent(event, SoMouseButtonEvent::BUTTON1)) {
        action->releaseGrabber();
        action->setHandled();
        isActive.setValue(false);
        call(m_finishCallbacks);
    } else if (event->isOfType(SoLocation2Event::getClassTypeId())) {
        action->setHandled();
        follow(pointerOf(action));
        call(m_motionCallbacks);
    }
}
