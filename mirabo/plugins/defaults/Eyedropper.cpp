#include "Eyedropper.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPixmap>
#include <QScreen>
#include <QWidget>

Eyedropper::Eyedropper(QObject* parent) : QObject(parent)
{
    QApplication::setOverrideCursor(Qt::CrossCursor);
    qApp->installEventFilter(this);
}

Eyedropper::~Eyedropper()
{
    qApp->removeEventFilter(this);
    QApplication::restoreOverrideCursor();
}

QColor Eyedropper::colorAt(const QPoint& globalPosition)
{
    QPixmap pixel;
    if (QWidget* widget = QApplication::widgetAt(globalPosition)) {
        pixel = widget->grab(QRect(widget->mapFromGlobal(globalPosition), QSize(1, 1)));
    } else if (QScreen* screen = QApplication::screenAt(globalPosition)) {
        const QPoint at = globalPosition - screen->geometry().topLeft();
        pixel = screen->grabWindow(0, at.x(), at.y(), 1, 1);
    }
    return pixel.isNull() ? QColor() : pixel.toImage().pixelColor(0, 0);
}

void Eyedropper::finish(const QColor& color)
{
    m_isFinished = true;
    if (color.isValid())
        Q_EMIT picked(color);
    else
        Q_EMIT givenUp();
}

bool Eyedropper::eventFilter(QObject*, QEvent* event)
{
    // Events come to the window first, then to the widget: what is taken here goes no further.
    switch (event->type()) {
    case QEvent::MouseMove:
        if (!m_isFinished)
            Q_EMIT hovered(colorAt(static_cast<QMouseEvent*>(event)->globalPos()));
        return true;
    case QEvent::MouseButtonPress: {
        const auto& mouse = static_cast<const QMouseEvent&>(*event);
        if (m_isFinished) // the release went elsewhere
            return false;
        finish(mouse.button() == Qt::LeftButton ? colorAt(mouse.globalPos()) : QColor());
        return true;
    }
    case QEvent::MouseButtonRelease:
        // The click was no widget's, nor is its end.
        if (m_isFinished)
            deleteLater();
        return true;
    case QEvent::MouseButtonDblClick:
    case QEvent::ContextMenu:
    case QEvent::Wheel:
        return true;
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
        if (static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape)
            return false;
        event->accept();
        if (event->type() == QEvent::KeyPress && !m_isFinished) {
            finish({});
            deleteLater();
        }
        return true;
    default:
        return false;
    }
}
