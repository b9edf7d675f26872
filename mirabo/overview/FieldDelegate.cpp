#include "mirabo/overview/FieldDelegate.h"

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoMiraboList.h"

namespace {

/// More characters never fit into a cell, and laying them out to find that out is slow.
constexpr int kMaxCellLength = 1000;

} // namespace

FieldDelegate::FieldDelegate(SoMiraboList* list) : QStyledItemDelegate(list), m_list(list) {}

void FieldDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const
{
    // The view draws whole rows, though only one cell of each has changed.
    if (m_list->isPainting(option.rect))
        QStyledItemDelegate::paint(painter, option, index);
}

void FieldDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.column() == SoMiraboList::NodeName)
        option->textElideMode = Qt::ElideLeft;
    if (index.column() != SoMiraboList::FieldValue)
        return;
    if (option->text.size() > kMaxCellLength)
        option->text.truncate(kMaxCellLength);
    if (const SoFieldItem* item = m_list->fieldItem(index.row()))
        styleValue(option, !item->isFieldDefault());
}

void FieldDelegate::styleValue(QStyleOptionViewItem* option, bool changed) const
{
    option->font = m_list->valueFont(changed);
    option->fontMetrics = QFontMetrics(option->font);
    const QColor color = m_list->valueColor(changed);
    // Black is the style's "no colour of its own": it follows the palette, so that it can be read
    // on dark desktops too.
    if (color == Qt::black || (option->state & QStyle::State_Selected))
        return;
    option->palette.setColor(QPalette::Active, QPalette::Text, color);
    option->palette.setColor(QPalette::Inactive, QPalette::Text, color);
}
