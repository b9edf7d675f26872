#pragma once

#include <QAbstractButton>
#include <QColor>

/// A button that shows a colour.
class ColorSwatch final : public QAbstractButton {
    Q_OBJECT

public:
    explicit ColorSwatch(QWidget* parent = nullptr);

    /// `isBeyond`: the colour is only the nearest one that can be shown; marked.
    void setColor(const QColor& color, bool isBeyond = false);
    const QColor& color() const { return m_color; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_color;
    bool m_isBeyond = false;
};
