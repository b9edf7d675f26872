#pragma once

#include <QHeaderView>

/// Header of a field list; a right click asks for the column menu.
class SoHeaderView final : public QHeaderView {
    Q_OBJECT

public:
    explicit SoHeaderView(QWidget* parent);

Q_SIGNALS:
    /// The right button was released at a global position.
    void rightClicked(const QPoint& position);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
};
