#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <QAccessible>

#include <algorithm>
#include <utility>
#include <vector>

// A layout of all open rows takes 15 ms for 100,000 of them. An edit of a row below those in view
// changes nothing that is to be seen, so its layout waits: for a moment, and until somebody needs
// it.
//
// Meanwhile the base has entries for rows that are gone, or have other numbers, behind those in
// view. Entries are compared and counted only; whatever would go further lays out first.

using mirabo::asItem;

namespace {

/// How long the layout may be behind; milliseconds.
constexpr int kLayoutDelay = 300;

/// The base looks at some rows beyond the last one in view, too; pixels.
constexpr int kRoomBeyond = 200;

/// Rows of all levels from the top to an index.
std::vector<int> rowsTo(QModelIndex index)
{
    std::vector<int> rows;
    for (; index.isValid(); index = index.parent())
        rows.insert(rows.begin(), index.row());
    return rows;
}

} // namespace

SoMiraboTreeView::RowEdit::RowEdit(SoMiraboTreeView& view, const SoTreeViewItem* parent, int row)
    : m_view(view)
{
    if (!view.isOutOfSight(parent, row)) {
        view.rowsAboutToChange();
        return;
    }
    view.m_editIsOutOfSight = true;
    view.m_layoutIsBehind = true;
    if (!view.m_layoutTimer.isActive())
        view.m_layoutTimer.start();
    view.graphChanged();
}

SoMiraboTreeView::RowEdit::~RowEdit()
{
    if (std::exchange(m_view.m_editIsOutOfSight, false))
        m_view.m_layoutIsBehind = true; // whatever was laid out in the midst of it
}

void SoMiraboTreeView::setUpLayout()
{
    m_layoutTimer.setSingleShot(true);
    m_layoutTimer.setInterval(kLayoutDelay);
    connect(&m_layoutTimer, &QTimer::timeout, this, [this] {
        if (m_layoutIsBehind)
            scheduleDelayedItemsLayout();
    });
    // The base connects its slot by name, and would lay out for every row.
    disconnect(model(), SIGNAL(rowsRemoved(QModelIndex, int, int)), this,
               SLOT(rowsRemoved(QModelIndex, int, int)));
    connect(model(), &QAbstractItemModel::rowsRemoved, this,
            [this](const QModelIndex& parent, int first, int last) {
                if (!m_editIsOutOfSight)
                    rowsRemoved(parent, first, last);
            });
}

void SoMiraboTreeView::layOutNow() const
{
    if (m_layoutIsBehind)
        const_cast<SoMiraboTreeView*>(this)->doItemsLayout();
}

/// Whether a row is, or would be, further down than what is painted.
bool SoMiraboTreeView::isOutOfSight(const SoTreeViewItem* parent, int row) const
{
    // Screen readers read the base's entries themselves.
    if (!isVisible() || m_closing || QAccessible::isActive() || state() != NoState)
        return false;
    const QModelIndex last = indexAt({1, viewport()->height() + kRoomBeyond});
    if (!last.isValid())
        return false;
    // Mostly the parent is above or at the last row in view.
    for (QModelIndex at = last; at.isValid(); at = at.parent()) {
        if (itemFromIndex(at) == parent)
            return true;
        if (itemFromIndex(at.parent()) == parent)
            return row > at.row();
    }
    std::vector<int> place = rowsTo(indexFromItem(parent));
    place.push_back(row);
    return rowsTo(last) < place;
}

/// What the graph has to do with the looks of each row in view.
QStringList SoMiraboTreeView::looksInView() const
{
    QStringList looks;
    const int height = std::max(1, rowHeight(indexAt({1, 1})));
    for (int y = 1; y < viewport()->height() + height; y += height) {
        const SoTreeViewItem* item = asItem(itemFromIndex(indexAt({1, y})));
        if (!item)
            break;
        QString look = QString::number(reinterpret_cast<quintptr>(item), 16);
        for (const int column :
             {SoTreeViewItem::Type, SoTreeViewItem::Name, SoTreeViewItem::ReferenceCount})
            look += '\n' + item->data(column, Qt::DisplayRole).toString();
        for (const bool flag : {item->hasReferenceMark(), item->isBookmarked(),
                                item->isDisabledNode(), item->childCount() > 0})
            look += flag ? '+' : '-';
        looks << look;
    }
    return looks;
}

void SoMiraboTreeView::rowsInserted(const QModelIndex& parent, int start, int end)
{
    if (m_editIsOutOfSight)
        QAbstractItemView::rowsInserted(parent, start, end);
    else
        QTreeWidget::rowsInserted(parent, start, end);
}

void SoMiraboTreeView::rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end)
{
    if (m_editIsOutOfSight)
        QAbstractItemView::rowsAboutToBeRemoved(parent, start, end);
    else
        QTreeWidget::rowsAboutToBeRemoved(parent, start, end);
}

QRect SoMiraboTreeView::visualRect(const QModelIndex& index) const
{
    if (m_repaintsAll)
        return QRect();
    layOutNow();
    return QTreeWidget::visualRect(index);
}

QModelIndex SoMiraboTreeView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    layOutNow();
    return QTreeWidget::moveCursor(action, modifiers);
}

void SoMiraboTreeView::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command)
{
    layOutNow();
    QTreeWidget::setSelection(rect, command);
}

QRegion SoMiraboTreeView::visualRegionForSelection(const QItemSelection& selection) const
{
    if (m_repaintsAll)
        return QRegion();
    layOutNow();
    return QTreeWidget::visualRegionForSelection(selection);
}

void SoMiraboTreeView::scrollContentsBy(int dx, int dy)
{
    layOutNow();
    QTreeWidget::scrollContentsBy(dx, dy);
}

void SoMiraboTreeView::resizeEvent(QResizeEvent* event)
{
    layOutNow();
    QTreeWidget::resizeEvent(event);
}
