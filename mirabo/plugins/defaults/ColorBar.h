#pragma once

#include "GestureControl.h"

#include <QColor>

#include <vector>

/// A slider over a gradient, for one component of a colour.
///
/// Mouse, wheel with focus, arrow keys (a hundredth; Shift: a tenth, Ctrl: a thousandth), Home and
/// End. A drag or a run of keys is one gesture, as of NumberBox.
class ColorBar final : public GestureControl {
    Q_OBJECT
    Q_PROPERTY(double position READ position)

public:
    explicit ColorBar(const QString& name, QWidget* parent = nullptr);

    /// 0 to 1; one beyond is shown at the end, and marked.
    void setPosition(double position);
    double position() const { return m_position; }
    /// The colours from left to right, evenly spaced, at least one.
    void setColors(std::vector<QColor> colors);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void moved(double position);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QRectF groove() const;
    void dragTo(double x);
    void moveTo(double position);
    void stepTo(double position);

    double m_position = 0;
    std::vector<QColor> m_colors;
};
