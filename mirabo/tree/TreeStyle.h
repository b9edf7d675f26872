#pragma once

#include <QPalette>
#include <QString>
#include <QStyledItemDelegate>

/// Looks of the scene tree that do not depend on its rows.
namespace mirabo {

/// Style sheet of the tree for a light or a dark desktop.
QString treeStyleSheet(const QPalette& palette);

/// A colour as it can be read on a background: its hue kept, its lightness moved away from it.
QColor readableOn(const QColor& background, const QColor& color);

/// Paints rows with their colours made readable on the palette's background.
class TreeDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace mirabo
