#include "GestureControl.h"

#include <QKeyEvent>

#include <utility>

void GestureControl::commit()
{
    m_isDragged = false;
    m_burst.end();
    if (std::exchange(m_isInGesture, false))
        Q_EMIT ended();
}

void GestureControl::enterGesture()
{
    if (!std::exchange(m_isInGesture, true))
        Q_EMIT begun();
}

void GestureControl::cancel()
{
    m_isDragged = false;
    m_burst.end();
    if (std::exchange(m_isInGesture, false))
        Q_EMIT cancelled();
    else
        Q_EMIT finished();
}

bool GestureControl::beginsRun()
{
    if (!m_burst.step())
        return false;
    commit(); // which ends the run that has just begun, too
    m_burst.step();
    return true;
}

bool GestureControl::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride && m_isInGesture
        && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape)
        event->accept();
    return QWidget::event(event);
}

void GestureControl::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    update();
}

void GestureControl::focusOutEvent(QFocusEvent* event)
{
    QWidget::focusOutEvent(event);
    commit();
    update();
}
