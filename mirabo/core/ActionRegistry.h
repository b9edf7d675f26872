#pragma once

#include "mirabo/core/MainActions.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <array>
#include <functional>
#include <vector>

class QAction;

namespace mirabo {

/// Handler of a request: its function, its enabled rule and its text.
struct ActionHandler {
    std::function<void()> run;
    /// Whether run() would do something now; none: always.
    std::function<bool()> isPossible = {};
    /// Returns what run() would do, such as "Undo Delete Cube", for tool tips and the status bar;
    /// none or empty: what the action's text says.
    std::function<QString()> hint = {};
};

/// The handlers of the requests of menus, tool bars and panels.
///
/// The owner of a capability registers a handler for it; the last one registered is in force, so
/// a panel can put its own in front of another's while it has the focus. A request for which there
/// is no handler, or whose handler has nothing to do, is refused, and its action is disabled.
///
/// In the tool's thread only.
class ActionRegistry final : public QObject {
    Q_OBJECT

public:
    ActionRegistry();
    ~ActionRegistry() override;

    /// Lets an action of the window show whether its request is possible, and what it would do.
    /// Not owned; it may die.
    void bind(ActionId id, QAction* action);

    /// Registers a handler until `owner` dies or withdraws it. One of the same owner is replaced.
    void add(ActionId id, QObject* owner, ActionHandler handler);
    void withdraw(ActionId id, const QObject* owner);
    /// Withdraws everything, and lets go of the actions.
    void clear();

    /// Runs the handler in force; false when there is none or nothing to do.
    bool run(ActionId id);
    bool isPossible(ActionId id) const;
    QString hint(ActionId id) const;

    /// Asks the handler again whether it has something to do, and what.
    void update(ActionId id);
    /// The same for all requests, once, in the next pass of the event loop.
    void updateLater();

Q_SIGNALS:
    void updated();

private:
    struct Entry {
        QObject* owner; // Not owned; its death withdraws the entry.
        ActionHandler handler;
    };
    struct Slot {
        std::vector<Entry> entries; ///< the last one is in force
        QPointer<QAction> action;
        QString ownHint; ///< the action's tool tip when nobody says more
    };

    Slot& slot(ActionId id) { return m_slots[static_cast<std::size_t>(id)]; }
    const Slot& slot(ActionId id) const { return m_slots[static_cast<std::size_t>(id)]; }
    void ownerDied(QObject* owner);
    void updateAll();

    std::array<Slot, kRequestCount> m_slots;
    bool m_updatePending = false;
};

} // namespace mirabo
