#pragma once

#include "Burst.h"

#include <QColor>
#include <QWidget>

#include <vector>

/// A slider over a gradient, for one component of a colour. Knows nothing of fields.
///
/// Mouse, wheel with focus, arrow keys (a hundredth; Shift: a tenth, Ctrl: a thousandth), Home and
/// End. A drag or a run of keys is one gesture, as of NumberBox.
class ColorBar final : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double position READ position)

public:
    explicit ColorBar(const QString& name, QWidget* parent = nullptr);

    /// 0 to 1; one beyond is shown at the end, and marked.
    void setPosition(double position);
    double position() const { return m_position; }
    /// The colours from left to right, evenly spaced, at least one.
    void setColors(std::vector<QColor> colors);
    /// Ends the gesture.
    void commit();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void begun();
    void moved(double position);
    void ended();
    void cancelled();
    /// Escape without a gesture.
    void finished();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QRectF groove() const;
    void dragTo(double x);
    void moveTo(double position);
    void stepTo(double position);
    void cancel();

    double m_position = 0;
    std::vector<QColor> m_colors;
    bool m_isInGesture = false;
    bool m_isDragged = false;
    Burst m_burst;
};
