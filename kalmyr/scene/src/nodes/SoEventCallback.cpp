#include <kalmyr/nodes/SoEventCallback.h>

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/core/SoLightPath.h>
#include <kalmyr/events/SoEvent.h>

#include <algorithm>

/// A path whose head may die.
class SoEventCallback::PathWatch final : public SoAuditor {
public:
    explicit PathWatch(const SoPath& path) : m_head(path.getHead()), m_below(path, false)
    {
        if (m_head)
            m_head->addAuditor(this, SoAuditor::PATH);
    }
    ~PathWatch()
    {
        if (m_head)
            m_head->removeAuditor(this);
    }
    SoRef<SoPath> resolve() const { return m_below.resolveFrom(m_head); }
    void auditedChanged(SoNotification&) override {}
    void auditedDying() override { m_head = nullptr; }

private:
    SoNode* m_head; // Not owned; it tells when it dies.
    SoLightPath m_below;
};

SO_NODE_SOURCE(SoEventCallback)

SoEventCallback::SoEventCallback()
{
    SO_NODE_CONSTRUCTOR(SoNode);
}

SoEventCallback::~SoEventCallback() = default;

void SoEventCallback::initClass()
{
    SO_NODE_INIT_CLASS(SoEventCallback, SoNode, "EventCallback");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
    SoHandleEventAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<SoEventCallback*>(node)->handleEvent(static_cast<SoHandleEventAction*>(action));
    });
}

void SoEventCallback::addEventCallback(SoType eventType, Function* function, void* userData)
{
    if (function)
        m_entries.push_back({eventType, function, userData});
}

void SoEventCallback::removeEventCallback(SoType eventType, Function* function, void* userData)
{
    const auto at =
        std::find(m_entries.begin(), m_entries.end(), Entry{eventType, function, userData});
    if (at != m_entries.end())
        m_entries.erase(at);
}

void SoEventCallback::setPath(const SoPath* path)
{
    m_path = path ? std::make_unique<PathWatch>(*path) : nullptr;
}

SoRef<SoPath> SoEventCallback::getPath() const
{
    return m_path ? m_path->resolve() : nullptr;
}

void SoEventCallback::setHandled()
{
    if (m_action)
        m_action->setHandled();
}

bool SoEventCallback::isHandled() const
{
    return m_action && m_action->isHandled();
}

bool SoEventCallback::concerns(SoHandleEventAction* action) const
{
    if (!m_path)
        return true;
    const SoRef<SoPath> path = m_path->resolve();
    const SoPickedPoint* picked = path ? action->getPickedPoint() : nullptr;
    return picked && picked->getPath()->containsPath(path.get());
}

void SoEventCallback::handleEvent(SoHandleEventAction* action)
{
    const SoEvent* event = action->getEvent();
    if (!event || m_entries.empty() || !concerns(action))
        return;
    const SoRef<SoEventCallback> self(this); // a callback may remove the node from the graph
    m_event = event;
    m_action = action;
    // A copy: callbacks may add and remove callbacks.
    for (const Entry& entry : std::vector<Entry>(m_entries)) {
        if (event->isOfType(entry.type))
            entry.function(entry.userData, this);
    }
    m_event = nullptr;
    m_action = nullptr;
}
