#include "mirabo/tree/OpenBranches.h"
#include "mirabo/tree/RowList.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <QScopedValueRollback>
#include <QSignalBlocker>

#include <utility>
#include <vector>

// Filtering of rows. A hidden row is out of the widget, but for the top-level ones.

using mirabo::asItem;

namespace {

/// Whether a row is to be hidden or shown.
bool differs(const SoTreeViewItem* row, const mirabo::RowFilter& filter)
{
    return row->isRevealed() || row->isFilteredOut() != filter.hides(row->getNodeType());
}

/// Rows with something below them that is to be hidden or shown, upper ones first.
std::vector<SoTreeViewItem*> findChanges(const mirabo::RowList& tops,
                                         const mirabo::TreeContext& context)
{
    std::vector<SoTreeViewItem*> changed;
    std::vector<SoTreeViewItem*> open;
    for (int row = tops.count(); row-- > 0;)
        open.push_back(tops.at(row));
    while (!open.empty()) {
        SoTreeViewItem* item = open.back();
        open.pop_back();
        bool anyDiffers = false;
        const auto look = [&](const QTreeWidgetItem* parent) {
            for (int row = 0, rows = parent->childCount(); row < rows; ++row) {
                SoTreeViewItem* child = asItem(parent->child(row));
                anyDiffers |= differs(child, context.filter);
                if (child->rowCount() > 0)
                    open.push_back(child);
            }
        };
        look(item);
        if (item->hasHiddenRows())
            look(context.hidden.at(item).get());
        if (anyDiffers)
            changed.push_back(item);
    }
    return changed;
}

/// The row itself or the next one above that the filter will show; null: none.
SoTreeViewItem* nextShown(SoTreeViewItem* item, const mirabo::RowFilter& filter)
{
    SoTreeViewItem* shown = item;
    for (; item; item = item->parentItem())
        if (filter.hides(item->getNodeType()))
            shown = item->parentItem();
    return shown;
}

/// Takes the rows below all of them, and puts them below again as the filter wants it.
///
/// A row that is put below another is walked through with all that is below it. So all are taken
/// first, and upper ones are put back first, while they have nothing below them.
void sort(const std::vector<SoTreeViewItem*>& parents, const mirabo::RowFilter& filter)
{
    std::vector<QList<QTreeWidgetItem*>> rows;
    rows.reserve(parents.size());
    for (SoTreeViewItem* parent : parents)
        rows.push_back(parent->takeRows());
    for (std::size_t i = 0; i < parents.size(); ++i) {
        for (QTreeWidgetItem* row : qAsConst(rows[i]))
            asItem(row)->setFilteredOut(filter.hides(asItem(row)->getNodeType()));
        parents[i]->insertRows(0, rows[i]);
        parents[i]->childrenChanged();
    }
}

} // namespace

void SoMiraboTreeView::setFilter(int filter)
{
    m_context.filter.setMask(filter);
    filterItems();
}

void SoMiraboTreeView::filterItems()
{
    const PatchScope scope(*this);
    SoTreeViewItem* current = asItem(currentItem());
    if (SoTreeViewItem* next = nextShown(current, m_context.filter); next != current)
        QTreeWidget::setCurrentItem(next); // whoever hears of it may show another scene
    const mirabo::RowList tops(*this, nullptr);
    const std::vector<SoTreeViewItem*> changed = findChanges(tops, m_context);
    bool topsDiffer = false;
    for (int row = 0; row < tops.count(); ++row)
        topsDiffer = topsDiffer || differs(tops.at(row), m_context.filter);
    if (changed.empty() && !topsDiffer)
        return;
    sortRows(changed);
    m_scrollPending = true;
    resizeAllColumns();
}

/// Sorts the rows below all of `parents` outside of the widget, which would do much for each.
void SoMiraboTreeView::sortRows(const std::vector<SoTreeViewItem*>& parents)
{
    const QSignalBlocker quiet(this); // the current row stays
    SoTreeViewItem* current = nextShown(asItem(currentItem()), m_context.filter);
    m_openBranches->putAside();
    const QScopedValueRollback<bool> closing(m_closing, true); // a layout would open them again
    QTreeWidget::setCurrentItem(nullptr);
    const mirabo::RowList tops(*this, nullptr);
    const QList<QTreeWidgetItem*> rows = tops.takeAll();
    sort(parents, m_context.filter);
    std::vector<SoTreeViewItem*> shownAgain;
    for (QTreeWidgetItem* row : rows) {
        SoTreeViewItem* top = asItem(row);
        const bool wasHidden = top->isFilteredOut();
        top->setFilteredOut(m_context.filter.hides(top->getNodeType()));
        if (wasHidden && !top->isFilteredOut())
            shownAgain.push_back(top);
    }
    tops.insert(0, rows);
    for (SoTreeViewItem* top : shownAgain)
        top->setHidden(false);
    QTreeWidget::setCurrentItem(current);
    rowsAboutToChange();
}

void SoMiraboTreeView::reveal(SoTreeViewItem* item)
{
    std::vector<SoTreeViewItem*> hidden;
    for (SoTreeViewItem* at = item; at; at = at->parentItem())
        if (at->isFilteredOut())
            hidden.push_back(at);
    if (hidden.empty())
        return;
    rowsAboutToChange();
    for (; !hidden.empty(); hidden.pop_back()) {
        SoTreeViewItem* row = hidden.back();
        SoTreeViewItem* parent = row->parentItem();
        const int at = row->rowInParent();
        if (parent)
            parent->takeRow(at);
        row->setFilteredOut(false, true);
        if (parent)
            parent->insertRow(at, row);
        else
            row->setHidden(false);
        if (parent)
            parent->childrenChanged(at);
    }
    m_openBranches->came();
    resizeAllColumns();
}

void SoMiraboTreeView::setCurrentItem(QTreeWidgetItem* item)
{
    reveal(asItem(item));
    QTreeWidget::setCurrentItem(item);
}
