#include "Looks.h"

#include <QFontMetrics>
#include <QLabel>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QToolButton>
#include <QWidget>

#include <algorithm>

namespace looks {

bool isDark(const QPalette& palette)
{
    constexpr int kMiddle = 128;
    return palette.color(QPalette::Base).lightness() < kMiddle;
}

QColor warningColor(const QPalette& palette)
{
    return isDark(palette) ? QColor(255, 110, 100) : QColor(198, 40, 40);
}

QColor axisColor(const QPalette& palette, int axis)
{
    static const QColor s_light[] = {{200, 40, 40}, {20, 130, 40}, {40, 80, 210}};
    static const QColor s_dark[] = {{255, 110, 100}, {100, 210, 110}, {120, 160, 255}};
    return isDark(palette) ? s_dark[axis] : s_light[axis];
}

qreal lineWidth(const QWidget* widget)
{
    return std::max(1.5, widget->fontMetrics().height() / 10.0);
}

void paintCheckers(QPainter& painter, const QRectF& room, qreal size)
{
    painter.save();
    painter.setClipRect(room);
    painter.fillRect(room, Qt::white);
    for (int row = 0; row * size < room.height(); ++row)
        for (int column = row % 2; column * size < room.width(); column += 2)
            painter.fillRect(
                QRectF(room.left() + column * size, room.top() + row * size, size, size),
                Qt::lightGray);
    painter.restore();
}

QToolButton* makeButton(const QString& text, const QString& name, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setText(text);
    button->setToolTip(name);
    button->setAccessibleName(name);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

QIcon drawIcon(const QWidget* widget, void (*draw)(QPainter& painter))
{
    const int size = widget->fontMetrics().height();
    QIcon icon;
    for (const auto mode : {QIcon::Normal, QIcon::Disabled}) {
        for (const int scale : {1, 2}) {
            QPixmap pixmap(size * scale, size * scale);
            pixmap.setDevicePixelRatio(scale);
            pixmap.fill(Qt::transparent);
            QPainter painter(&pixmap);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.scale(size, size);
            const auto group = mode == QIcon::Normal ? QPalette::Active : QPalette::Disabled;
            constexpr qreal kPen = 0.09;
            painter.setPen(QPen(widget->palette().color(group, QPalette::ButtonText), kPen,
                                Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            draw(painter);
            painter.end();
            icon.addPixmap(pixmap, mode);
        }
    }
    return icon;
}

QLabel* makeLabel(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    return label;
}

} // namespace looks
