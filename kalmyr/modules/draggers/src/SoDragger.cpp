#include <kalmyr/draggers/SoDragger.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/io/SoToVRMLAction.h>

#include "HandleMatrix.h"

#include <algorithm>
#include <cmath>

SO_KIT_SOURCE(SoDragger)

SoDragger::SoDragger()
{
    SO_NODE_CONSTRUCTOR(SoInteractionKit);
    SO_KIT_PART(setup);
    SO_KIT_PART(handles);
    SO_ADD_FIELD(isActive, (false));
    SO_ADD_FIELD(screenSize, (0.0f));
    SO_KIT_MAKE_PARTS();
    kalmyr::detail::fillSetup(static_cast<SoGroup*>(setup.getValue()));
}

SoDragger::~SoDragger() = default;

void SoDragger::initClass()
{
    SO_KIT_INIT_ABSTRACT_CLASS(SoDragger, SoInteractionKit, "Dragger");
    const SoType group = SoGroup::getClassTypeId();
    s_catalog->addPart("handles", group, group, {"geomSeparator", ""}, false);
    s_catalog->addPart("setup", group, group, {"geomSeparator", "handles"}, false);
    s_catalog->setNullByDefault("handles", false);
    s_catalog->setNullByDefault("setup", false);
    SoHandleEventAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<SoDragger*>(node)->handleEvent(static_cast<SoHandleEventAction*>(action));
    });
}

// Callbacks.

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

// Handles.

int SoDragger::getNumHandles() const
{
    const auto* group = static_cast<const SoGroup*>(handles.getValue());
    return group ? group->getNumChildren() : 0;
}

SoDragHandle* SoDragger::getHandle(int index) const
{
    if (!kalmyr::holds(index >= 0 && index < getNumHandles(), "0 <= index < getNumHandles()"))
        return nullptr;
    SoNode* node = static_cast<SoGroup*>(handles.getValue())->getChild(index);
    return node->isOfType(SoDragHandle::getClassTypeId()) ? static_cast<SoDragHandle*>(node)
                                                          : nullptr;
}

SbMatrix SoDragger::geometryMatrix(SoState* state, const SbMatrix& motion) const
{
    SbMatrix matrix;
    const SbBox3f box = m_surround ? m_surround() : SbBox3f();
    if (!box.isEmpty()) {
        kalmyr::detail::fitBox(box, isRound(), matrix);
    } else if (screenSize.getValue() > 0) {
        const SbMatrix& around = SoModelMatrixElement::get(state);
        const float unit = kalmyr::detail::pixelSize(state, around.point(motion.point(SbVec3f())))
                           * screenSize.getValue();
        SbVec3f scale(1, 1, 1);
        for (int i = 0; i < 3 && unit > 0; ++i) {
            const float length = around.direction(SbVec3f(motion[i]).normalized()).length();
            scale[i] = length > 0 ? unit / length : 1;
        }
        matrix.setScale(scale);
    }
    return matrix;
}

/// From the coordinates in which handles have their places to the space around.
SbMatrix SoDragger::spaceOf(const SoDragHandle& handle, SoState* state) const
{
    const SbMatrix motion = getMotionMatrix();
    return getHandleSpace(handle) * geometryMatrix(state, motion) * motion;
}

SbMatrix SoDragger::getHandleMatrix(const SoDragHandle& handle, SoState* state) const
{
    const SbMatrix toAround = spaceOf(handle, state);
    if (!(handle.size.getValue() > 0))
        return toAround;
    const SbMatrix& around = SoModelMatrixElement::get(state);
    const bool onScreen = screenSize.getValue() > 0 && SoViewElement::get(state).valid;
    const SbMatrix toSpace = onScreen ? toAround * around : toAround;
    float size = handle.size.getValue();
    if (onScreen) {
        const SbVec3f place = toSpace.point(handle.position.getValue());
        size *= kalmyr::detail::pixelSize(state, place) * screenSize.getValue();
    }
    const SbMatrix knob = kalmyr::detail::knobMatrix(toSpace, handle.position.getValue(),
                                                     handle.direction.getValue(), size);
    return onScreen ? knob * around.inverse() : knob;
}

void SoDragger::doAction(SoAction* action)
{
    // A tool for the scene, which is no part of the scene's picture in other formats.
    if (action->isOfType(SoToVRMLAction::getClassTypeId())
        || action->isOfType(SoToVRML2Action::getClassTypeId()))
        return;
    if (screenSize.getValue() > 0 && action->isOfType(SoGetBoundingBoxAction::getClassTypeId())) {
        // Of what has its size on the screen only the place counts, and no box around may be kept
        // that rays are tested against.
        auto* measuring = static_cast<SoGetBoundingBoxAction*>(action);
        measuring->doNotCache();
        if (m_surround)
            return;
        SoState* state = action->getState();
        state->push();
        SoModelMatrixElement::mult(state, this, getMotionMatrix());
        measuring->extendBy(SbBox3f(SbVec3f(), SbVec3f()));
        state->pop();
        return;
    }
    SoInteractionKit::doAction(action);
}

// Events.

void SoDragger::lightUp(bool on)
{
    for (int i = 0; i < getNumHandles(); ++i)
        if (SoDragHandle* handle = getHandle(i))
            if (handle->part.getValue() == m_held->part.getValue())
                handle->setActive(on);
}

void SoDragger::keepValues()
{
    m_before.clear();
    for (SoField* field : getFields()) {
        if (field == &isActive || field->isOfType(SoSFNode::getClassTypeId()))
            continue;
        SbString text;
        field->get(text);
        m_before.push_back({field, text, field->isDefault()});
    }
}

void SoDragger::restoreValues()
{
    for (const Before& before : m_before) {
        SbString now;
        before.field->get(now);
        if (now == before.text)
            continue;
        before.field->set(before.text);
        before.field->setDefault(before.isDefault);
    }
}

SoDragPointer SoDragger::pointerOf(SoHandleEventAction* action) const
{
    SoDragPointer pointer(action);
    pointer.hit = m_hit;
    pointer.anchor = m_anchor;
    pointer.opposite = m_opposite;
    return pointer;
}

void SoDragger::take(SoHandleEventAction* action)
{
    const SoPickedPoint* picked = action->getPickedPoint();
    const SoRef<SoPath> here(action->getCurPath());
    if (!picked || !picked->getPath()->containsPath(here.get()))
        return;
    const SoPath* path = picked->getPath();
    SoDragHandle* handle = nullptr;
    for (int i = here->getLength(); i < path->getLength() && !handle; ++i)
        if (path->getNode(i)->isOfType(SoDragHandle::getClassTypeId()))
            handle = static_cast<SoDragHandle*>(path->getNode(i));
    if (!handle || handle->motion.getValue() == SoDragHandle::NONE)
        return;
    m_held = handle;
    const SbMatrix toAround = SoModelMatrixElement::get(action->getState()).inverse();
    m_hit = SoDragPointer(action).pointNear(toAround.point(picked->getPoint()));
    const SbMatrix space = spaceOf(*handle, action->getState());
    const bool isKnob = handle->size.getValue() > 0;
    m_anchor = isKnob ? space.point(handle->position.getValue()) : m_hit;
    m_opposite = isKnob ? space.point(-handle->position.getValue())
                        : space.point(-space.inverse().point(m_hit));
    const SoDragPointer pointer = pointerOf(action);
    action->setGrabber(this);
    action->setHandled();
    keepValues();
    lightUp(true);
    begin(*handle, pointer);
    isActive.setValue(true);
    call(m_startCallbacks);
}

void SoDragger::rest()
{
    lightUp(false);
    m_held = nullptr;
    m_before.clear();
    isActive.setValue(false);
    isActive.setDefault(true); // nothing to write
    call(m_finishCallbacks);
}

void SoDragger::letGo(SoHandleEventAction* action)
{
    action->releaseGrabber();
    action->setHandled();
    rest();
}

void SoDragger::handleEvent(SoHandleEventAction* action)
{
    const SoEvent* event = action->getEvent();
    if (!event)
        return;
    const SoRef<SoDragger> self(this); // a callback may take it out of the graph
    if (!m_held) {
        if (SoMouseButtonEvent::isPressEvent(event, SoMouseButtonEvent::BUTTON1))
            take(action);
        return;
    }
    if (action->getGrabber() != this) { // somebody else let go of it
        rest();
    } else if (SoMouseButtonEvent::isReleaseEvent(event, SoMouseButtonEvent::BUTTON1)) {
        letGo(action);
    } else if (SoKeyboardEvent::isKeyPressEvent(event, SoKeyboardEvent::ESCAPE)) {
        restoreValues();
        call(m_motionCallbacks);
        letGo(action);
    } else if (event->isOfType(SoLocation2Event::getClassTypeId())) {
        action->setHandled();
        const SoRef<SoDragHandle> held = m_held;
        follow(*held, pointerOf(action));
        call(m_motionCallbacks);
    }
}
