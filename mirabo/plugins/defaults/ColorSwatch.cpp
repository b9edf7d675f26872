#include "ColorSwatch.h"

#include "Looks.h"

#include <QPainter>

ColorSwatch::ColorSwatch(QWidget* parent) : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleName("Choose a colour");
}

void ColorSwatch::setColor(const QColor& color, bool isBeyond)
{
    if (m_color == color && m_isBeyond == isBeyond)
        return;
    m_color = color;
    m_isBeyond = isBeyond;
    update();
}

QSize ColorSwatch::sizeHint() const
{
    // As high as a line of text with a frame.
    const int height = fontMetrics().height() + 2 * looks::kSpacing;
    return {height * 2, height};
}

void ColorSwatch::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal width = hasFocus() ? looks::lineWidth(this) : 1;
    const QRectF room = QRectF(rect()).adjusted(width, width, -width, -width);
    // Disabled it shows its colour as well: that is what people look for.
    if (m_color.alpha() < 255)
        looks::paintCheckers(painter, room, room.height() / 4);
    painter.fillRect(room, m_color);
    if (m_color.alpha() < 255) { // the left half shows the colour itself
        QColor opaque = m_color;
        opaque.setAlpha(255);
        painter.fillRect(QRectF(room.left(), room.top(), room.width() / 2, room.height()), opaque);
    }
    const QColor frame = hasFocus() ? palette().color(QPalette::Highlight)
                                    : palette().color(isDown() ? QPalette::Text : QPalette::Mid);
    painter.setPen(QPen(frame, width));
    painter.setBrush(Qt::NoBrush);
    const qreal inset = width / 2;
    painter.drawRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset));
    if (!m_isBeyond)
        return;
    // A folded corner: there is more than can be shown.
    const qreal fold = room.height() / 2.5;
    const QPointF corner = room.topRight();
    const QPointF points[] = {corner, corner - QPointF(fold, 0), corner + QPointF(0, fold)};
    painter.setPen(Qt::NoPen);
    painter.setBrush(looks::warningColor(palette()));
    painter.drawPolygon(points, 3);
}
