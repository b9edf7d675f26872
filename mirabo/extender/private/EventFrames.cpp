#include "mirabo/extender/private/EventFrames.h"

#include "mirabo/extender/private/Frame.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <QWidget>

#include <atomic>
#include <unordered_set>

namespace mirabo {

namespace {

std::unordered_set<const QObject*> s_roots; ///< not owned; the GUI thread's
std::atomic<bool> s_hasRoots{false};

bool isRoot(const QObject* object)
{
    return s_roots.count(object) > 0;
}

bool isBelowRoot(const QObject* object)
{
    while (object && !isRoot(object))
        object = object->parent();
    return object;
}

/// An event on its way, inside another one.
class CarriedEvent final : public QEvent {
public:
    CarriedEvent(QObject* to, QEvent* carriedEvent)
        : QEvent(eventType()), receiver(to), carried(carriedEvent)
    {
    }

    /// One of its own: filters of the host may take others for theirs.
    static Type eventType()
    {
        static const int s_type = registerEventType();
        return static_cast<Type>(s_type);
    }

    QObject* const receiver;
    QEvent* const carried;
    bool arrived = false;
    bool result = false;
};

/// Qt counts the nesting of events for deferred deletion, by the way that a sent event takes. The
/// event itself cannot be sent once more: it would no longer be one of the window system.
class Carrier final : public QObject {
public:
    bool event(QEvent* event) override
    {
        if (event->type() != CarriedEvent::eventType())
            return QObject::event(event);
        auto* carrying = static_cast<CarriedEvent*>(event);
        carrying->arrived = true;
        carrying->result =
            QCoreApplication::instance()->notify(carrying->receiver, carrying->carried);
        return true;
    }
};

/// The arguments are receiver, event and result; true: the event has been delivered.
bool deliver(void** arguments)
{
    if (!s_hasRoots || !QCoreApplication::instance()
        || QThread::currentThread() != QCoreApplication::instance()->thread())
        return false;
    auto* receiver = static_cast<QObject*>(arguments[0]);
    if (!isBelowRoot(receiver))
        return false;
    auto* event = static_cast<QEvent*>(arguments[1]);
    if (event->type() == QEvent::DeferredDelete)
        return false; // Qt has made sure that the receiver is in use no more
    if (event->type() == QEvent::Show && receiver->isWidgetType() && !isRoot(receiver))
        static_cast<QWidget*>(receiver)->setAttribute(Qt::WA_QuitOnClose, false);
    const Frame frame;
    Carrier carrier;
    CarriedEvent carrying(receiver, event);
    QCoreApplication::sendEvent(&carrier, &carrying);
    *static_cast<bool*>(arguments[2]) = carrying.result;
    return carrying.arrived; // a filter of the host may have kept it
}

} // namespace

void EventFrames::install()
{
    static const bool s_installed =
        QInternal::registerCallback(QInternal::EventNotifyCallback, &deliver);
    Q_UNUSED(s_installed)
}

void EventFrames::addRoot(const QObject* root)
{
    s_roots.insert(root);
    s_hasRoots = true;
}

void EventFrames::removeRoot(const QObject* root)
{
    s_roots.erase(root);
    s_hasRoots = !s_roots.empty();
}

} // namespace mirabo
