#include "ColorBar.h"

#include "Looks.h"
#include "NumberSteps.h"

#include <QKeyEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double kStep = 0.01;

} // namespace

ColorBar::ColorBar(const QString& name, QWidget* parent)
    : GestureControl(parent), m_colors{Qt::black}
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(name);
    setToolTip(name);
}

QSize ColorBar::sizeHint() const
{
    constexpr int kHeights = 8;
    return {fontMetrics().height() * kHeights, fontMetrics().height()};
}

QSize ColorBar::minimumSizeHint() const
{
    constexpr int kHeights = 3;
    return {fontMetrics().height() * kHeights, fontMetrics().height()};
}

void ColorBar::setPosition(double position)
{
    if (m_position == position)
        return;
    m_position = position;
    update();
}

void ColorBar::setColors(std::vector<QColor> colors)
{
    if (colors.empty() || m_colors == colors)
        return;
    m_colors = std::move(colors);
    update();
}

QRectF ColorBar::groove() const
{
    // The handle stands out by half its width.
    const qreal margin = fontMetrics().height() / 4.0;
    return QRectF(rect()).adjusted(margin, 2, -margin, -2);
}

void ColorBar::moveTo(double position)
{
    position = std::clamp(position, 0.0, 1.0);
    if (position == m_position)
        return;
    enterGesture();
    setPosition(position);
    Q_EMIT moved(position);
}

void ColorBar::dragTo(double x)
{
    // No more digits than pixels can mean.
    constexpr double kDigits = 1000;
    const QRectF room = groove();
    const double position = (x - room.left()) / std::max(1.0, room.width());
    moveTo(std::round(position * kDigits) / kDigits);
}

void ColorBar::stepTo(double position)
{
    if (isDragged())
        return;
    beginsRun();
    constexpr double kDigits = 1e6; // rounds away what sums of fractions leave
    moveTo(std::round(position * kDigits) / kDigits);
}

void ColorBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    commit();
    setDragged(true);
    dragTo(event->localPos().x());
}

void ColorBar::mouseMoveEvent(QMouseEvent* event)
{
    if (isDragged())
        dragTo(event->localPos().x());
}

void ColorBar::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && isDragged())
        commit();
}

void ColorBar::wheelEvent(QWheelEvent* event)
{
    if (!hasFocus()) {
        event->ignore();
        return;
    }
    constexpr double kNotch = 120;
    const QPoint delta = event->angleDelta();
    stepTo(m_position
           + (delta.y() ? delta.y() : delta.x()) / kNotch * kStep * stepFactor(event->modifiers()));
}

void ColorBar::keyPressEvent(QKeyEvent* event)
{
    const double step = kStep * stepFactor(event->modifiers());
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        return stepTo(m_position - step);
    case Qt::Key_Right:
    case Qt::Key_Up:
        return stepTo(m_position + step);
    case Qt::Key_Home:
        return stepTo(0);
    case Qt::Key_End:
        return stepTo(1);
    case Qt::Key_Escape:
        return cancel();
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return commit();
    default:
        QWidget::keyPressEvent(event);
    }
}

void ColorBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF room = groove();
    const qreal bar = room.height() * 0.5;
    const QRectF strip(room.left(), room.center().y() - bar / 2, room.width(), bar);
    if (std::any_of(m_colors.begin(), m_colors.end(),
                    [](const QColor& color) { return color.alpha() < 255; }))
        looks::paintCheckers(painter, strip, bar / 2);
    QLinearGradient gradient(strip.topLeft(), strip.topRight());
    for (std::size_t i = 0; i < m_colors.size(); ++i)
        gradient.setColorAt(
            static_cast<double>(i)
                / static_cast<double>(std::max<std::size_t>(1, m_colors.size() - 1)),
            m_colors[i]);
    painter.setBrush(gradient);
    painter.setPen(QPen(palette().color(QPalette::Mid), 1));
    painter.drawRect(strip);

    const bool isBeyond = !(m_position >= 0 && m_position <= 1);
    const double shown = m_position > 0 ? std::min(m_position, 1.0) : 0;
    const qreal half = room.height() / 4;
    const QRectF handle(strip.left() + shown * strip.width() - half, room.top(), 2 * half,
                        room.height());
    if (!isEnabled())
        painter.setOpacity(0.5);
    painter.setBrush(palette().color(QPalette::Button));
    const QColor frame = isBeyond     ? looks::warningColor(palette())
                         : hasFocus() ? palette().color(QPalette::Highlight)
                                      : palette().color(QPalette::WindowText);
    const qreal width = hasFocus() || isBeyond ? looks::lineWidth(this) : 1;
    painter.setPen(QPen(frame, width));
    const qreal inset = width / 2;
    painter.drawRoundedRect(handle.adjusted(inset, inset, -inset, -inset), half / 2, half / 2);
}
