#include "EventBridge.h"

#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseWheelEvent.h>
#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/io/SoReadLock.h>

#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QTabletEvent>
#include <QTimer>
#include <QTouchEvent>
#include <QWheelEvent>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace {

constexpr double kPatience = 0.02;     // seconds
constexpr int kRetryMilliseconds = 20; // until the next try when another thread is editing

struct KeyName {
    int qt;
    SoKeyboardEvent::Key key;
};

constexpr KeyName kKeys[] = {
    {Qt::Key_Backspace, SoKeyboardEvent::BACKSPACE},
    {Qt::Key_Tab, SoKeyboardEvent::TAB},
    {Qt::Key_Backtab, SoKeyboardEvent::TAB},
    {Qt::Key_Return, SoKeyboardEvent::RETURN},
    {Qt::Key_Enter, SoKeyboardEvent::PAD_ENTER},
    {Qt::Key_Escape, SoKeyboardEvent::ESCAPE},
    {Qt::Key_Delete, SoKeyboardEvent::DELETE},
    {Qt::Key_Shift, SoKeyboardEvent::LEFT_SHIFT},
    {Qt::Key_Control, SoKeyboardEvent::LEFT_CONTROL},
    {Qt::Key_Alt, SoKeyboardEvent::LEFT_ALT},
    {Qt::Key_AltGr, SoKeyboardEvent::RIGHT_ALT},
    {Qt::Key_CapsLock, SoKeyboardEvent::CAPS_LOCK},
    {Qt::Key_NumLock, SoKeyboardEvent::NUM_LOCK},
    {Qt::Key_ScrollLock, SoKeyboardEvent::SCROLL_LOCK},
    {Qt::Key_Home, SoKeyboardEvent::HOME},
    {Qt::Key_Left, SoKeyboardEvent::LEFT_ARROW},
    {Qt::Key_Up, SoKeyboardEvent::UP_ARROW},
    {Qt::Key_Right, SoKeyboardEvent::RIGHT_ARROW},
    {Qt::Key_Down, SoKeyboardEvent::DOWN_ARROW},
    {Qt::Key_PageUp, SoKeyboardEvent::PAGE_UP},
    {Qt::Key_PageDown, SoKeyboardEvent::PAGE_DOWN},
    {Qt::Key_End, SoKeyboardEvent::END},
    {Qt::Key_Insert, SoKeyboardEvent::INSERT},
    {Qt::Key_Pause, SoKeyboardEvent::PAUSE},
    {Qt::Key_Print, SoKeyboardEvent::PRINT},
};

constexpr KeyName kKeypadKeys[] = {
    {Qt::Key_Plus, SoKeyboardEvent::PAD_ADD},
    {Qt::Key_Minus, SoKeyboardEvent::PAD_SUBTRACT},
    {Qt::Key_Asterisk, SoKeyboardEvent::PAD_MULTIPLY},
    {Qt::Key_Slash, SoKeyboardEvent::PAD_DIVIDE},
    {Qt::Key_Period, SoKeyboardEvent::PAD_PERIOD},
    {Qt::Key_Comma, SoKeyboardEvent::PAD_PERIOD}, // where the decimal sign is a comma
};

// Qt reports the character, the toolkit the key; a US keyboard decides where they differ.
constexpr char kShifted[] = "~!@#$%^&*()_+{}|:\"<>?";
constexpr char kPlain[] = "`1234567890-=[]\\;',./";

template <std::size_t N>
SoKeyboardEvent::Key find(const KeyName (&table)[N], int qt)
{
    const auto* at = std::find_if(std::begin(table), std::end(table),
                                  [qt](const KeyName& k) { return k.qt == qt; });
    return at == std::end(table) ? SoKeyboardEvent::UNDEFINED : at->key;
}

SoKeyboardEvent::Key offset(SoKeyboardEvent::Key first, int by)
{
    return static_cast<SoKeyboardEvent::Key>(first + by);
}

} // namespace

EventBridge::EventBridge(SoGuiRenderArea* area, QWidget* widget)
    : QObject(widget), m_area(area), m_widget(widget)
{
    widget->setFocusPolicy(Qt::StrongFocus);
    widget->setMouseTracking(true);
    widget->setAttribute(Qt::WA_AcceptTouchEvents);
    widget->installEventFilter(this);
}

void EventBridge::takeSize()
{
    if (!m_area)
        return;
    const qreal ratio = m_widget->devicePixelRatioF();
    const SbVec2i32 size(std::max(qRound(m_widget->width() * ratio), 1),
                         std::max(qRound(m_widget->height() * ratio), 1));
    if (!(size == m_area->getSize()))
        m_area->setSize(size);
    if (static_cast<float>(ratio) != m_area->getPixelRatio())
        m_area->setPixelRatio(static_cast<float>(ratio));
}

SoMouseButtonEvent::Button EventBridge::buttonOf(Qt::MouseButton button)
{
    switch (button) {
    case Qt::LeftButton:
        return SoMouseButtonEvent::BUTTON1;
    case Qt::MiddleButton:
        return SoMouseButtonEvent::BUTTON2;
    case Qt::RightButton:
        return SoMouseButtonEvent::BUTTON3;
    case Qt::BackButton:
        return SoMouseButtonEvent::BUTTON4;
    case Qt::ForwardButton:
        return SoMouseButtonEvent::BUTTON5;
    default:
        return SoMouseButtonEvent::ANY;
    }
}

SoKeyboardEvent::Key EventBridge::keyOf(const QKeyEvent& event)
{
    const int key = event.key();
    if (event.modifiers() & Qt::KeypadModifier) {
        if (key >= Qt::Key_0 && key <= Qt::Key_9)
            return offset(SoKeyboardEvent::PAD_0, key - Qt::Key_0);
        const SoKeyboardEvent::Key pad = find(kKeypadKeys, key);
        if (pad != SoKeyboardEvent::UNDEFINED)
            return pad;
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F12)
        return offset(SoKeyboardEvent::F1, key - Qt::Key_F1);
    if (key >= Qt::Key_A && key <= Qt::Key_Z)
        return offset(SoKeyboardEvent::A, key - Qt::Key_A);
    if (key >= Qt::Key_Space && key < 127) {
        const char* shifted = std::strchr(kShifted, key);
        return static_cast<SoKeyboardEvent::Key>(shifted ? kPlain[shifted - kShifted] : key);
    }
    return find(kKeys, key);
}

bool EventBridge::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_widget || !m_area)
        return false;
    switch (event->type()) {
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::ScreenChangeInternal:
        takeSize();
        return false;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        return mousePressed(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
        return mouseReleased(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
        return mouseMoved(*static_cast<QMouseEvent*>(event));
    case QEvent::Wheel:
        return wheelTurned(*static_cast<QWheelEvent*>(event));
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
        event->accept(); // otherwise Qt makes a second event of it
        return penUsed(*static_cast<QTabletEvent*>(event));
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        event->accept();
        return touched(*static_cast<QTouchEvent*>(event));
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return keyChanged(*static_cast<QKeyEvent*>(event));
    default:
        return false;
    }
}

bool EventBridge::deliver(const SoEvent& event)
{
    const SoRef<SoGuiRenderArea> area(m_area); // who handles the event may let go of it
    const QPointer<EventBridge> self(this);    // and may delete the window
    ++m_sending;
    const bool isHandled = area->processEvent(&event);
    if (!self)
        return true;
    --m_sending;
    return isHandled;
}

void EventBridge::deliverWaiting()
{
    while (m_area && !m_waiting.empty()) {
        const SoReadLock graph{SbTime(kPatience)};
        if (!graph) {
            QTimer::singleShot(kRetryMilliseconds, this, &EventBridge::deliverWaiting);
            return;
        }
        const std::unique_ptr<SoEvent> event = std::move(m_waiting.front());
        m_waiting.pop_front();
        const QPointer<EventBridge> self(this);
        deliver(*event);
        if (!self)
            return;
    }
    m_waiting.clear();
}

template <class Event>
bool EventBridge::send(Event& event, Qt::KeyboardModifiers modifiers, const QPointF& position)
{
    const qreal ratio = m_widget->devicePixelRatioF();
    const SbVec2i32 size = m_area->getSize();
    // A drag may leave the window on any side, so nothing is clipped to it.
    const auto pixel = [](qreal at) {
        return static_cast<short>(std::clamp(std::floor(at), -32768.0, 32767.0));
    };
    const qreal fromTop = std::floor(position.y() * ratio);
    event.setPosition(SbVec2s(pixel(position.x() * ratio), pixel(size[1] - 1 - fromTop)));
    event.setTime(SbTime::getTimeOfDay());
    event.setShiftDown(modifiers & Qt::ShiftModifier);
    event.setCtrlDown(modifiers & Qt::ControlModifier);
    event.setAltDown(modifiers & Qt::AltModifier);
    {
        // Not waiting for long: the editor may be waiting for the user interface.
        const SoReadLock graph{SbTime(m_waiting.empty() ? kPatience : 0)};
        if (graph && m_waiting.empty())
            return deliver(event);
    }
    if (event.isOfType(SoLocation2Event::getClassTypeId()))
        return true; // the next motion says as much
    if (m_waiting.empty())
        QTimer::singleShot(kRetryMilliseconds, this, &EventBridge::deliverWaiting);
    m_waiting.push_back(std::make_unique<Event>(event));
    return true;
}

bool EventBridge::sendButton(const QMouseEvent& event, SoButtonEvent::State state)
{
    const SoMouseButtonEvent::Button button = buttonOf(event.button());
    if (button == SoMouseButtonEvent::ANY)
        return false;
    SoMouseButtonEvent translated;
    translated.setButton(button);
    translated.setState(state);
    translated.setDoubleClick(event.type() == QEvent::MouseButtonDblClick);
    return send(translated, event.modifiers(), event.localPos());
}

bool EventBridge::mousePressed(const QMouseEvent& event)
{
    if (event.button() == Qt::RightButton && onMenuButton && onMenuButton(event))
        return true;
    sendButton(event, SoButtonEvent::DOWN);
    return true; // a press inside the scene is never one on what lies behind the widget
}

bool EventBridge::mouseReleased(const QMouseEvent& event)
{
    sendButton(event, SoButtonEvent::UP);
    return true;
}

bool EventBridge::mouseMoved(const QMouseEvent& event)
{
    SoLocation2Event translated;
    send(translated, event.modifiers(), event.localPos());
    return true;
}

bool EventBridge::wheelTurned(const QWheelEvent& event)
{
    // With Alt down Qt reports a vertical wheel as a horizontal one.
    const QPoint angle = event.angleDelta();
    SoMouseWheelEvent translated;
    translated.setDelta(angle.y() != 0 ? angle.y() : angle.x());
    return translated.getDelta() != 0 && send(translated, event.modifiers(), event.position());
}

/// A pen is a mouse.
bool EventBridge::penUsed(const QTabletEvent& event)
{
    const auto as = [&event](QEvent::Type type) {
        return QMouseEvent(type, event.posF(), event.posF(), event.globalPosF(), event.button(),
                           event.buttons(), event.modifiers());
    };
    switch (event.type()) {
    case QEvent::TabletPress:
        return mousePressed(as(QEvent::MouseButtonPress));
    case QEvent::TabletRelease:
        return mouseReleased(as(QEvent::MouseButtonRelease));
    default:
        return mouseMoved(as(QEvent::MouseMove));
    }
}

/// One finger is the first button; two pan and zoom.
bool EventBridge::touched(const QTouchEvent& event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    const QPointer<EventBridge> self(this); // who handles an event may delete the window
    for (const TouchTracker::Step& step : m_fingers.follow(event)) {
        if (!self || !m_area)
            return true;
        switch (step.kind) {
        case TouchTracker::Step::PRESS:
            sendFinger(modifiers, SoButtonEvent::DOWN, step.now.middle);
            break;
        case TouchTracker::Step::RELEASE:
            sendFinger(modifiers, SoButtonEvent::UP, step.now.middle);
            break;
        case TouchTracker::Step::MOVE: {
            SoLocation2Event translated;
            send(translated, modifiers, step.now.middle);
            break;
        }
        case TouchTracker::Step::BEGIN_TWO:
            sendGesture(modifiers, SoGestureEvent::BEGIN, step.before, step.now);
            break;
        case TouchTracker::Step::MOVE_TWO:
            sendGesture(modifiers, SoGestureEvent::UPDATE, step.before, step.now);
            break;
        case TouchTracker::Step::END_TWO:
            sendGesture(modifiers, SoGestureEvent::END, step.before, step.now);
            break;
        }
    }
    return true;
}

void EventBridge::sendFinger(Qt::KeyboardModifiers modifiers, SoButtonEvent::State state,
                             const QPointF& at)
{
    SoMouseButtonEvent translated;
    translated.setButton(SoMouseButtonEvent::BUTTON1);
    translated.setState(state);
    send(translated, modifiers, at);
}

void EventBridge::sendGesture(Qt::KeyboardModifiers modifiers, SoGestureEvent::State state,
                              const TouchTracker::Pair& before, const TouchTracker::Pair& now)
{
    const QPointF way = (now.middle - before.middle) * m_widget->devicePixelRatioF();
    SoGestureEvent translated;
    translated.setState(state);
    translated.setMotion(SbVec2f(static_cast<float>(way.x()), static_cast<float>(-way.y())));
    if (before.distance > 0)
        translated.setScale(static_cast<float>(now.distance / before.distance));
    send(translated, modifiers, now.middle);
}

bool EventBridge::keyChanged(const QKeyEvent& event)
{
    const bool released = event.type() == QEvent::KeyRelease;
    if (released && event.isAutoRepeat())
        return false; // the key is still down
    const SoKeyboardEvent::Key key = keyOf(event);
    if (key == SoKeyboardEvent::UNDEFINED)
        return false;
    SoKeyboardEvent translated;
    translated.setKey(key);
    translated.setState(released ? SoButtonEvent::UP : SoButtonEvent::DOWN);
    return send(translated, event.modifiers(), m_widget->mapFromGlobal(QCursor::pos()));
}
