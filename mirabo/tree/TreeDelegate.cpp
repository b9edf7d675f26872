#include "mirabo/tree/TreeDelegate.h"

#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"

#include <QIcon>
#include <QPainter>

namespace mirabo {

namespace {

/// An icon in front of a plate on which its colours are seen in a selected row.
QIcon plated(const QIcon& icon, const QSize& size, qreal scale)
{
    constexpr double kRounding = 3;
    QPixmap pixmap(size * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 255, 255, 225));
    painter.drawRoundedRect(QRectF(QPointF(), QSizeF(size)), kRounding, kRounding);
    icon.paint(&painter, QRect(QPoint(1, 1), size - QSize(2, 2)));
    painter.end();
    QIcon made(pixmap);
    made.addPixmap(pixmap, QIcon::Selected); // not tinted
    return made;
}

} // namespace

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
    if (option->state & QStyle::State_Selected && !option->icon.isNull())
        option->icon = plated(option->icon, option->decorationSize, m_view->devicePixelRatioF());
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
