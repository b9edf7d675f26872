#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace support {

/// Only a hang takes so long.
inline constexpr int kHangMs = 240'000;

/// Sends what is posted and due, what that posts included, and nothing that comes by itself later:
/// after it, what was not set off with a delay has happened.
inline void flush()
{
    // An event that is posted last is sent last; what came meanwhile may have posted others.
    constexpr int kChain = 10;
    for (int i = 0; i < kChain; ++i) {
        bool isLast = false;
        QObject context;
        QMetaObject::invokeMethod(
            &context, [&isLast] { isLast = true; }, Qt::QueuedConnection);
        while (!isLast)
            QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

/// Sends events until the condition holds. False when it never does.
template <class Condition>
[[nodiscard]] bool passUntil(Condition condition)
{
    constexpr int kWakeMs = 5; // conditions that no event makes true are asked all the same
    const QDeadlineTimer limit(kHangMs);
    QTimer wake;
    wake.start(kWakeMs);
    while (!condition()) {
        if (limit.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

/// Sends events until the widget's window is on the screen.
[[nodiscard]] inline bool passUntilExposed(const QWidget* widget)
{
    return passUntil([widget] {
        const QWindow* window = widget->window()->windowHandle();
        return window && window->isExposed();
    });
}

} // namespace support
