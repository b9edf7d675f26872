#include "mirabo/extender/private/EventGuard.h"

#include "mirabo/extender/private/HostedExtension.h"

#include <QAbstractButton>
#include <QAction>
#include <QActionEvent>
#include <QChildEvent>
#include <QMenu>
#include <QPointer>

namespace mirabo {

namespace {

/// Events in which menus, buttons and actions emit their signals.
bool setsSlotsOff(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove: // hovered()
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::Timer: // auto repeat
        return true;
    default:
        return false;
    }
}

bool emitsForUser(const QObject* object)
{
    return qobject_cast<const QMenu*>(object) || qobject_cast<const QAbstractButton*>(object)
           || qobject_cast<const QAction*>(object);
}

} // namespace

EventGuard::EventGuard(HostedExtension& owner) : m_owner(owner) {}

void EventGuard::watch(QObject* root)
{
    if (!root->isWidgetType() && !qobject_cast<QAction*>(root))
        return;
    root->installEventFilter(this);
    if (const auto* widget = qobject_cast<QWidget*>(root))
        for (QAction* action : widget->actions())
            action->installEventFilter(this);
    for (QObject* child : root->children())
        watch(child);
}

bool EventGuard::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::ChildPolished)
        watch(static_cast<QChildEvent*>(event)->child());
    else if (type == QEvent::ActionAdded)
        static_cast<QActionEvent*>(event)->action()->installEventFilter(this);
    if (!setsSlotsOff(type) || !emitsForUser(watched))
        return false;
    const QPointer<QObject> target(watched);
    if (!m_owner.isFailed())
        m_owner.run("a slot", [&] {
            if (target)
                target->event(event);
        });
    return true;
}

} // namespace mirabo
