#pragma once

#include <QStyledItemDelegate>

class SoMiraboTreeView;

namespace mirabo {

/// Paints rows of the scene tree in the styles of their texts, made readable on the palette's base.
class TreeDelegate final : public QStyledItemDelegate {
public:
    explicit TreeDelegate(SoMiraboTreeView* view);

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    SoMiraboTreeView* m_view; // Not owned; it is our parent.
};

} // namespace mirabo
