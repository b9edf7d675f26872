#include <kalmyr/vrml/SoVRMLParent.h>

#include <kalmyr/actions/SoBoundingBoxCache.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNotification.h>
#include <kalmyr/sensors/SoDelayQueueSensor.h>
#include <kalmyr/vrml/SoVRMLDirectionalLight.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include "core/CacheLock.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

/// Nodes came to a group, which cannot be edited before all have heard of it. Made for this one
/// time, so that groups that nodes never come to cost nothing.
class SoVRMLParent::Arrival {
public:
    Arrival(SoVRMLParent* group, SoMFNode& event)
        : m_group(group),
          m_event(event),
          m_sensor([](void* self, SoSensor*) { static_cast<Arrival*>(self)->run(); }, this)
    {
        m_sensor.setPriority(0);
        m_sensor.schedule();
    }

private:
    void run()
    {
        m_group->takeArrivals(m_event);
        delete this;
    }

    SoRef<SoVRMLParent> m_group;
    SoMFNode& m_event;
    SoOneShotSensor m_sensor;
};

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

bool SoVRMLParent::noteChange(const SoNotification& notification)
{
    if (m_boxCache)
        m_boxCache->noteChange(notification);
    // A group that nobody holds yet, or that dies, must not be held for a moment.
    if (notification.container == this && getRefCount() > 0 && isNotifyEnabled()) {
        if (notification.field == &addChildren)
            new Arrival(this, addChildren);
        else if (notification.field == &removeChildren)
            new Arrival(this, removeChildren);
    }
    return SoGroup::noteChange(notification);
}

void SoVRMLParent::takeArrivals(SoMFNode& event)
{
    const std::vector<SoNode*> nodes = event.getValues();
    const std::vector<SoRef<SoNode>> held(nodes.begin(), nodes.end());
    // An event leaves nothing behind.
    const bool told = event.enableNotify(false);
    event.setNum(0);
    event.setDefault(true);
    event.enableNotify(told);
    if (&event == &addChildren)
        addMissing(nodes);
    else
        removeKnown(nodes);
}

/// Most nodes have few parents, and most groups few children.
bool SoVRMLParent::isChild(const SoNode* node) const
{
    const SoAuditorList& auditors = node->getAuditors();
    if (auditors.getLength() >= getNumChildren())
        return m_children.find(node) >= 0;
    for (int i = 0; i < auditors.getLength(); ++i)
        if (auditors.getObject(i) == &m_children)
            return true;
    return false;
}

void SoVRMLParent::addMissing(const std::vector<SoNode*>& nodes)
{
    for (SoNode* node : nodes)
        if (node && !isChild(node))
            addChild(node);
}

void SoVRMLParent::removeKnown(const std::vector<SoNode*>& nodes)
{
    constexpr std::size_t kFew = 8;
    if (nodes.size() <= kFew) {
        for (const SoNode* node : nodes)
            while (node && isChild(node))
                removeChild(m_children.find(node));
        return;
    }
    const std::unordered_set<const SoNode*> going(nodes.begin(), nodes.end());
    for (int i = getNumChildren(); --i >= 0;)
        if (i < getNumChildren() && going.count(getChild(i)) > 0)
            removeChild(i);
}

void SoVRMLParent::doAction(SoAction* action)
{
    SoState* state = action->getState();
    state->push();
    setState(state);
    action->traverseChildren(m_children);
    state->pop();
}

void SoVRMLParent::doActionLightsFirst(SoAction* action)
{
    const std::vector<SoNode*>& nodes = m_children.getNodes();
    const auto isLight = [](const SoNode* node) {
        return node->isOfType(SoVRMLDirectionalLight::getClassTypeId());
    };
    // Most groups have none, or have them in front.
    const auto firstOther = std::find_if_not(nodes.begin(), nodes.end(), isLight);
    if (action->getPathAppliedTo() || std::none_of(firstOther, nodes.end(), isLight)) {
        doAction(action);
        return;
    }
    SoState* state = action->getState();
    state->push();
    setState(state);
    for (const bool lights : {true, false})
        for (int i = 0; i < m_children.getLength() && !action->hasTerminated(); ++i)
            if (isLight(m_children[i]) == lights)
                action->traverse(m_children[i], i);
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
