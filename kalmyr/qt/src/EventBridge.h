#pragma once

#include "TouchTracker.h"

#include <kalmyr/events/SoGestureEvent.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoMouseButtonEvent.h>

#include <QObject>

#include <deque>
#include <functional>
#include <memory>

class QKeyEvent;
class QMouseEvent;
class QPointF;
class QTabletEvent;
class QTouchEvent;
class QWheelEvent;
class QWidget;
class SoGuiRenderArea;

/// Watches the widget that shows a scene: its mouse, wheel and keyboard events go to the render
/// area, its size in device pixels and their density become the area's.
class EventBridge final : public QObject {
public:
    /// Belongs to the widget. `area` must outlive it or detach() be called.
    EventBridge(SoGuiRenderArea* area, QWidget* widget);
    void detach() { m_area = nullptr; }

    /// Whether an event is on its way through the scene: the widget must not be deleted.
    bool isSending() const { return m_sending > 0; }

    /// Sets the area's size, without any event; for what is drawn before the widget is shown.
    void takeSize();
    /// Asked first for every press of the right button in viewing mode; true when it was used.
    std::function<bool(const QMouseEvent&)> onMenuButton;

    bool eventFilter(QObject* watched, QEvent* event) override;

    static SoKeyboardEvent::Key keyOf(const QKeyEvent& event);
    static SoMouseButtonEvent::Button buttonOf(Qt::MouseButton button);

private:
    bool mousePressed(const QMouseEvent& event);
    bool mouseReleased(const QMouseEvent& event);
    bool mouseMoved(const QMouseEvent& event);
    bool wheelTurned(const QWheelEvent& event);
    bool keyChanged(const QKeyEvent& event);
    bool penUsed(const QTabletEvent& event);
    bool touched(const QTouchEvent& event);
    void sendFinger(Qt::KeyboardModifiers modifiers, SoButtonEvent::State state, const QPointF& at);
    void sendGesture(Qt::KeyboardModifiers modifiers, SoGestureEvent::State state,
                     const TouchTracker::Pair& before, const TouchTracker::Pair& now);
    template <class Event>
    bool send(Event& event, Qt::KeyboardModifiers modifiers, const QPointF& position);
    bool deliver(const SoEvent& event);
    void deliverWaiting();
    bool sendButton(const QMouseEvent& event, SoButtonEvent::State state);

    SoGuiRenderArea* m_area; // Not owned.
    QWidget* m_widget;       // Not owned; owns us.
    int m_sending = 0;
    TouchTracker m_fingers;
    /// Presses, releases and turns of the wheel that came while another thread edited.
    std::deque<std::unique_ptr<SoEvent>> m_waiting;
};
