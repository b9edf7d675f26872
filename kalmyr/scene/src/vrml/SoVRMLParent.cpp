#include <kalmyr/vrml/SoVRMLParent.h>

#include <kalmyr/actions/SoBoundingBoxCache.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include "core/CacheLock.h"

SO_NODE_SOURCE(SoVRMLParent)

SoVRMLParent::SoVRMLParent()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
    SO_VRML_EXPOSED_EMPTY(children);
    SO_VRML_EVENT_IN(addChildren);
    SO_VRML_EVENT_IN(removeChildren);
    SO_VRML_FIELD(bboxCenter, (0.0f, 0.0f, 0.0f));
    SO_VRML_FIELD(bboxSize, (-1.0f, -1.0f, -1.0f));
    children.bindTo(&m_children);
}

SoVRMLParent::~SoVRMLParent() = default;

void SoVRMLParent::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoVRMLParent, SoGroup, "VRMLParent");
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<SoVRMLParent*>(node)->measure(static_cast<SoGetBoundingBoxAction*>(action));
    });
    SoRayPickAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<SoVRMLParent*>(node)->rayPick(static_cast<SoRayPickAction*>(action));
    });
}

void SoVRMLParent::doAction(SoAction* action)
{
    SoState* state = action->getState();
    state->push();
    setState(state);
    action->traverseChildren(m_children);
    state->pop();
}

void SoVRMLParent::measure(SoGetBoundingBoxAction* action)
{
    {
        const kalmyr::detail::CacheLock lock;
        if (!action->open(this, m_boxCache.get()))
            return;
    }
    setState(action->getState());
    action->measureChildren(m_children, &m_boxCache);
    const kalmyr::detail::CacheLock lock;
    action->close(this, &m_boxCache);
}

void SoVRMLParent::notify(SoNotification& notification)
{
    if (m_boxCache)
        m_boxCache->noteChange(notification);
    SoGroup::notify(notification);
}

bool SoVRMLParent::isCulled(SoRayPickAction* action) const
{
    const kalmyr::detail::CacheLock lock;
    return action->isCulled(this, m_boxCache.get());
}

void SoVRMLParent::rayPick(SoRayPickAction* action)
{
    if (!isCulled(action))
        doAction(action);
}
