#include "mirabo/tree/TreeDelegate.h"

#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"

namespace mirabo {

TreeDelegate::TreeDelegate(SoMiraboTreeView* view) : QStyledItemDelegate(view), m_view(view) {}

QSize TreeDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QSize hint = QStyledItemDelegate::sizeHint(option, index);
    hint.setHeight(m_view->context().rowHeight);
    return hint;
}

void TreeDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const auto* row = static_cast<const SoTreeViewItem*>(m_view->itemFromIndex(index));
    const TextStyle* style = row ? row->styleOf(index.column()) : nullptr;
    if (!style)
        return;
    option->font = style->font;
    option->fontMetrics = QFontMetrics(style->font);
    if (!style->show)
        option->text.clear();
    const bool isGrey = index.column() == SoTreeViewItem::Type && row->isGrey();
    const QColor base = option->palette.color(QPalette::Base);
    const QColor wanted = option->palette.color(QPalette::Text);
    const QColor text =
        isGrey ? readableOn(base, wanted) : shownColor(style->color, m_view->palette());
    if (text != wanted) // a palette of its own for a cell takes as long as the rest
        option->palette.setColor(QPalette::Text, text);
}

} // namespace mirabo
