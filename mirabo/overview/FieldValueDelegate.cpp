#include "mirabo/overview/FieldValueDelegate.h"

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoMiraboList.h"

FieldValueDelegate::FieldValueDelegate(SoMiraboList* list) : QStyledItemDelegate(list), m_list(list)
{
}

void FieldValueDelegate::initStyleOption(QStyleOptionViewItem* option,
                                         const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const SoFieldItem* item = m_list->fieldItem(index.row());
    if (!item)
        return;
    const bool changed = !item->isFieldDefault();
    option->font = m_list->valueFont(changed);
    const QColor color = m_list->valueColor(changed);
    // Black is the style's "no colour of its own": it follows the palette, so that it can be read
    // on dark desktops too.
    if (color != Qt::black && !(option->state & QStyle::State_Selected))
        option->palette.setColor(QPalette::Text, color);
}
