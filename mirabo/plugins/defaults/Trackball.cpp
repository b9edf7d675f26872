#include "Trackball.h"

#include "Looks.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace {

constexpr double kLines = 7.5; // of text, the height
constexpr const char* kAxisNames[] = {"x", "y", "z"};

SbVec3f unitVector(int axis)
{
    SbVec3f v;
    v[axis] = 1;
    return v;
}

} // namespace

Trackball::Trackball(QWidget* parent) : GestureControl(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleName("Trackball");
    setCursor(Qt::OpenHandCursor);
    setToolTip("Turns the rotation, seen from the front (z towards you)\n"
               "Drag on the ball, or beside it about z; arrows, Page Up and Page Down: 5 degrees\n"
               "(Shift: 45, Ctrl: 1)");
}

QSize Trackball::sizeHint() const
{
    const int size = static_cast<int>(fontMetrics().lineSpacing() * kLines);
    return {size, size};
}

void Trackball::setRotation(const SbRotation& rotation)
{
    if (m_rotation == rotation)
        return;
    m_rotation = rotation;
    update();
}

void Trackball::begin()
{
    commit();
    m_turned = SbRotation();
}

void Trackball::turn(const SbRotation& by)
{
    m_turned *= by;
    enterGesture();
    Q_EMIT turned(m_turned);
}

qreal Trackball::radius() const
{
    constexpr qreal kPart = 0.43; // leaves room for what the names of the axes stand out
    return std::max(1., kPart * std::min(width(), height()));
}

SbVec3f Trackball::pointAt(const QPointF& position) const
{
    const QPointF p = (position - QPointF(width() / 2.0, height() / 2.0)) / radius();
    const double square = p.x() * p.x() + p.y() * p.y();
    // Beside the ball the points of its rim turn it about the line of sight.
    const double z = square < 1 ? std::sqrt(1 - square) : 0;
    SbVec3f point(static_cast<float>(p.x()), static_cast<float>(-p.y()), static_cast<float>(z));
    point.normalize();
    return point;
}

void Trackball::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    begin();
    setDragged(true);
    m_grabbed = pointAt(event->localPos());
    setCursor(Qt::ClosedHandCursor);
}

void Trackball::mouseMoveEvent(QMouseEvent* event)
{
    if (!isDragged())
        return;
    const SbVec3f point = pointAt(event->localPos());
    if (point == m_grabbed)
        return;
    const SbRotation by(m_grabbed, point);
    m_grabbed = point;
    turn(by);
}

void Trackball::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    setCursor(Qt::OpenHandCursor);
    if (isDragged())
        commit();
}

bool Trackball::turnByKey(const QKeyEvent& event)
{
    struct Key {
        int key, axis, sign;
    };
    static constexpr Key kKeys[] = {{Qt::Key_Left, 1, -1},  {Qt::Key_Right, 1, 1},
                                    {Qt::Key_Up, 0, -1},    {Qt::Key_Down, 0, 1},
                                    {Qt::Key_PageUp, 2, 1}, {Qt::Key_PageDown, 2, -1}};
    const auto key = std::find_if(std::begin(kKeys), std::end(kKeys),
                                  [&event](const Key& k) { return k.key == event.key(); });
    if (key == std::end(kKeys) || isDragged())
        return false;
    constexpr double kDegree = std::numbers::pi / 180;
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    const double degrees = modifiers & Qt::ShiftModifier     ? 45
                           : modifiers & Qt::ControlModifier ? 1
                                                             : 5;
    if (beginsRun())
        m_turned = SbRotation();
    turn(SbRotation(unitVector(key->axis), static_cast<float>(key->sign * degrees * kDegree)));
    return true;
}

void Trackball::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        cancel();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        commit();
    else if (!turnByKey(*event))
        QWidget::keyPressEvent(event);
}

void Trackball::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.4);
    painter.translate(width() / 2.0, height() / 2.0);
    paintAxes(painter, false);
    const qreal r = radius();
    QRadialGradient shade(QPointF(-r / 3, -r / 3), r * 1.5);
    QColor light = palette().color(QPalette::Base);
    QColor dark = palette().color(QPalette::Mid);
    light.setAlphaF(0.55);
    dark.setAlphaF(0.55);
    shade.setColorAt(0, light);
    shade.setColorAt(1, dark);
    painter.setBrush(shade);
    const QColor rim = palette().color(hasFocus() ? QPalette::Highlight : QPalette::Dark);
    painter.setPen(QPen(rim, hasFocus() ? looks::lineWidth(this) : 1));
    painter.drawEllipse(QPointF(), r, r);
    paintGrid(painter);
    paintAxes(painter, true);
}

void Trackball::paintGrid(QPainter& painter) const
{
    constexpr int kSegments = 48;
    QColor line = palette().color(QPalette::Text);
    line.setAlphaF(0.25);
    painter.setPen(QPen(line, 1));
    painter.setBrush(Qt::NoBrush);
    const float r = static_cast<float>(radius());
    for (int axis = 0; axis < 3; ++axis) {
        QPainterPath path;
        bool isDown = false;
        for (int i = 0; i <= kSegments; ++i) {
            const float angle = static_cast<float>(2 * std::numbers::pi * i / kSegments);
            SbVec3f point;
            point[(axis + 1) % 3] = std::cos(angle);
            point[(axis + 2) % 3] = std::sin(angle);
            point = m_rotation.rotated(point) * r;
            const QPointF at(point[0], -point[1]);
            // The half that is seen.
            if (point[2] >= 0 && isDown)
                path.lineTo(at);
            else if (point[2] >= 0)
                path.moveTo(at);
            isDown = point[2] >= 0;
        }
        painter.drawPath(path);
    }
}

void Trackball::paintAxes(QPainter& painter, bool isFront) const
{
    const qreal r = radius();
    QFont font = this->font();
    font.setBold(true);
    painter.setFont(font);
    for (int axis = 0; axis < 3; ++axis) {
        const SbVec3f end = m_rotation.rotated(unitVector(axis));
        const bool isTowards = end[2] >= 0;
        if (isTowards != isFront)
            continue;
        QColor color = looks::axisColor(palette(), axis);
        color.setAlphaF(isFront ? 1 : 0.6);
        painter.setPen(QPen(color, looks::lineWidth(this), Qt::SolidLine, Qt::RoundCap));
        const QPointF tip(end[0] * r, -end[1] * r);
        painter.drawLine(QPointF(), tip * 0.82);
        const qreal box = fontMetrics().height();
        painter.drawText(QRectF(tip.x() * 0.97 - box / 2, tip.y() * 0.97 - box / 2, box, box),
                         Qt::AlignCenter, kAxisNames[axis]);
    }
}
