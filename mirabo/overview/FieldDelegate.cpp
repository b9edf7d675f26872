#include "mirabo/overview/FieldDelegate.h"

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoMiraboList.h"

#include <QPainter>
#include <QStyle>
#include <QTextLayout>

#include <algorithm>

namespace {

/// More characters never fit into a cell, and laying them out to find that out is slow.
constexpr int kMaxCellLength = 1000;
constexpr int kLeastLetterWidth = 2;
/// Looks that the style sheet has rules for.
constexpr QStyle::State kStyledStates =
    QStyle::State_Selected | QStyle::State_MouseOver | QStyle::State_HasFocus;

QPalette::ColorGroup colorGroup(const QStyleOptionViewItem& option)
{
    if (!(option.state & QStyle::State_Enabled))
        return QPalette::Disabled;
    return option.state & QStyle::State_Active ? QPalette::Normal : QPalette::Inactive;
}

/// Lays a text out in one line; returns its width.
qreal layOut(QTextLayout& layout, const QStyleOptionViewItem& option, int width)
{
    QTextOption text(QStyle::visualAlignment(option.direction, Qt::AlignLeft));
    text.setTextDirection(option.direction);
    text.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(text);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(width);
    layout.endLayout();
    return line.naturalTextWidth();
}

void drawText(QPainter& painter, const QStyleOptionViewItem& option, const QRect& cell)
{
    QTextLayout layout(option.text, option.font, painter.device());
    if (layOut(layout, option, cell.width()) > cell.width()) {
        layout.setText(
            option.fontMetrics.elidedText(option.text, option.textElideMode, cell.width()));
        layOut(layout, option, cell.width());
    }
    const qreal top = cell.top() + (cell.height() - layout.boundingRect().height()) / 2;
    painter.setPen(option.palette.color(colorGroup(option), QPalette::Text));
    layout.draw(&painter, QPointF(cell.left(), qRound(top)));
}

} // namespace

FieldDelegate::FieldDelegate(SoMiraboList* list) : QStyledItemDelegate(list), m_list(list) {}

void FieldDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const
{
    // The view draws whole rows, though only one cell of each has changed.
    if (!m_list->isPainting(option.rect))
        return;
    if (option.state & kStyledStates)
        QStyledItemDelegate::paint(painter, option, index);
    else
        paintPlain(painter, option, index);
}

/// Does the work of the style, which lays every text out three times.
void FieldDelegate::paintPlain(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const
{
    QStyleOptionViewItem shown = option;
    initStyleOption(&shown, index);
    const int margin =
        m_list->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, &shown, m_list) + 1;
    const QRect cell = shown.rect.adjusted(margin, 0, -margin, 0);
    if (shown.textElideMode == Qt::ElideRight)
        shown.text.truncate(cell.width() / kLeastLetterWidth + 1);
    painter->save();
    painter->setClipRect(shown.rect, Qt::IntersectClip);
    const bool enabled = shown.state & QStyle::State_Enabled;
    if (!shown.icon.isNull())
        shown.icon.paint(painter,
                         QStyle::alignedRect(shown.direction, Qt::AlignCenter,
                                             shown.decorationSize.boundedTo(shown.rect.size()),
                                             shown.rect),
                         Qt::AlignCenter, enabled ? QIcon::Normal : QIcon::Disabled);
    if (!shown.text.isEmpty())
        drawText(*painter, shown, cell);
    painter->restore();
}

QSize FieldDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QSize hint = QStyledItemDelegate::sizeHint(option, index);
    hint.setHeight(m_list->rowHeight());
    return hint;
}

void FieldDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->state &= ~QStyle::State_HasFocus; // the row is selected as a whole
    if (index.column() == SoMiraboList::NodeName)
        option->textElideMode = m_list->showsPlace(index.row()) ? Qt::ElideLeft : Qt::ElideRight;
    if (index.column() != SoMiraboList::FieldValue)
        return;
    if (option->text.size() > kMaxCellLength)
        option->text.truncate(kMaxCellLength);
    option->text.replace(QChar::LineSeparator, ' '); // a row is one line
    if (const SoFieldItem* item = m_list->fieldItem(index.row()))
        styleValue(option, !item->isFieldDefault());
}

void FieldDelegate::styleValue(QStyleOptionViewItem* option, bool changed) const
{
    option->font = m_list->valueFont(changed);
    option->fontMetrics = QFontMetrics(option->font);
    const QColor color = mirabo::shownColor(m_list->valueColor(changed), m_list->palette());
    if ((option->state & QStyle::State_Selected)
        || color == option->palette.color(QPalette::Active, QPalette::Text))
        return;
    option->palette.setColor(QPalette::Active, QPalette::Text, color);
    option->palette.setColor(QPalette::Inactive, QPalette::Text, color);
}
