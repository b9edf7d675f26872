#include "mirabo/core/ActionRegistry.h"

#include "mirabo/extender/private/Frame.h"

#include <QAction>

#include <algorithm>
#include <utility>

namespace mirabo {

ActionRegistry::ActionRegistry() = default;
ActionRegistry::~ActionRegistry() = default;

void ActionRegistry::bind(ActionId id, QAction* action)
{
    slot(id).action = action;
    slot(id).ownHint = action ? action->toolTip() : QString();
    update(id);
}

void ActionRegistry::add(ActionId id, QObject* owner, ActionHandler handler)
{
    withdraw(id, owner);
    connect(owner, &QObject::destroyed, this, &ActionRegistry::ownerDied, Qt::UniqueConnection);
    slot(id).entries.push_back({owner, std::move(handler)});
    update(id);
}

void ActionRegistry::withdraw(ActionId id, const QObject* owner)
{
    std::erase_if(slot(id).entries, [owner](const Entry& entry) { return entry.owner == owner; });
    update(id);
}

void ActionRegistry::ownerDied(QObject* owner)
{
    for (Slot& each : m_slots)
        std::erase_if(each.entries, [owner](const Entry& entry) { return entry.owner == owner; });
    updateLater();
}

void ActionRegistry::clear()
{
    for (Slot& each : m_slots)
        each = Slot();
}

bool ActionRegistry::run(ActionId id)
{
    if (!isPossible(id) || !slot(id).entries.back().handler.run)
        return false;
    // A copy: what runs may withdraw its own handler.
    const std::function<void()> function = slot(id).entries.back().handler.run;
    const QPointer<ActionRegistry> self(this);
    const Frame frame; // the host may end the tool meanwhile
    function();
    if (self)
        updateLater();
    return true;
}

bool ActionRegistry::isPossible(ActionId id) const
{
    if (slot(id).entries.empty())
        return false;
    const ActionHandler& handler = slot(id).entries.back().handler;
    return !handler.isPossible || handler.isPossible();
}

QString ActionRegistry::hint(ActionId id) const
{
    const Slot& at = slot(id);
    const bool knows = !at.entries.empty() && at.entries.back().handler.hint;
    return knows ? at.entries.back().handler.hint() : QString();
}

void ActionRegistry::update(ActionId id)
{
    if (!slot(id).action)
        return;
    const Frame frame; // whoever hears of a change may end the tool, or delete the window
    const QPointer<QAction> action = slot(id).action;
    const QString ownHint = slot(id).ownHint;
    const QString hint = this->hint(id);
    action->setEnabled(isPossible(id));
    if (!action)
        return;
    const QString key = action->shortcut().toString(QKeySequence::NativeText);
    const QString tip = key.isEmpty() ? hint : hint + " (" + key + ')';
    action->setToolTip(hint.isEmpty() ? ownHint : tip);
    if (action)
        action->setStatusTip(hint);
}

void ActionRegistry::updateAll()
{
    m_updatePending = false;
    const Frame frame;
    for (std::size_t i = 0; i < m_slots.size(); ++i)
        update(static_cast<ActionId>(i));
    Q_EMIT updated();
}

void ActionRegistry::updateLater()
{
    if (!std::exchange(m_updatePending, true))
        QMetaObject::invokeMethod(this, &ActionRegistry::updateAll, Qt::QueuedConnection);
}

} // namespace mirabo
