#pragma once

#include "GestureControl.h"

#include <kalmyr/base/SbRotation.h>

/// A ball with three axes that shows a rotation and is turned by the mouse or by keys: arrows,
/// Page Up and Page Down (Shift: further, Ctrl: less far).
class Trackball final : public GestureControl {
    Q_OBJECT

public:
    explicit Trackball(QWidget* parent = nullptr);

    void setRotation(const SbRotation& rotation);
    const SbRotation& rotation() const { return m_rotation; }

    QSize sizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return width; }

Q_SIGNALS:
    /// `by`: what the ball was turned by since begun(), in the space of the fixed axes.
    void turned(const SbRotation& by);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void begin();
    void turn(const SbRotation& by);
    bool turnByKey(const QKeyEvent& event);
    qreal radius() const;
    /// The point of the ball below a position.
    SbVec3f pointAt(const QPointF& position) const;
    void paintAxes(QPainter& painter, bool isFront) const;
    void paintGrid(QPainter& painter) const;

    SbRotation m_rotation;
    SbVec3f m_grabbed;
    SbRotation m_turned; // since the gesture began
};
