#pragma once

#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/events/SoMouseButtonEvent.h>

namespace kalmyr::detail {

/// Lets a group that is a link be followed by a press of the first button on one of its shapes. Its
/// children come first.
template <class Anchor>
void followClicks()
{
    SoHandleEventAction::addMethod(Anchor::getClassTypeId(), [](SoAction* action, SoNode* node) {
        auto* events = static_cast<SoHandleEventAction*>(action);
        const SoRef<SoNode> held(node);
        const SoRef<SoPath> path(action->getCurPath());
        node->doAction(action);
        if (events->isHandled()
            || !SoMouseButtonEvent::isPressEvent(events->getEvent(), SoMouseButtonEvent::BUTTON1))
            return;
        const SoPickedPoint* picked = events->getPickedPoint();
        if (picked && picked->getPath()->containsPath(path.get())
            && static_cast<Anchor*>(node)->follow())
            events->setHandled();
    });
}

} // namespace kalmyr::detail
