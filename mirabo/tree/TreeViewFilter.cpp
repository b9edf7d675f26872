#include "mirabo/tree/OpenBranches.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <QScopedValueRollback>
#include <QSignalBlocker>

#include <utility>
#include <vector>

// Filtering of rows. A hidden row is out of the widget, but for the root.

using mirabo::asItem;

namespace {

/// Rows with something below them that is to be hidden or shown, upper ones first.
std::vector<SoTreeViewItem*> findChanges(SoTreeViewItem* root, const mirabo::TreeContext& context)
{
    std::vector<SoTreeViewItem*> changed;
    std::vector<SoTreeViewItem*> open{root};
    while (!open.empty()) {
        SoTreeViewItem* item = open.back();
        open.pop_back();
        bool differs = false;
        const auto look = [&](const QTreeWidgetItem* parent) {
            for (int row = 0, rows = parent->childCount(); row < rows; ++row) {
                SoTreeViewItem* child = asItem(parent->child(row));
                differs |= child->isRevealed()
                           || child->isFilteredOut() != context.filter.hides(child->getNodeType());
                if (child->rowCount() > 0)
                    open.push_back(child);
            }
        };
        look(item);
        if (item->hasHiddenRows())
            look(context.hidden.at(item).get());
        if (differs)
            changed.push_back(item);
    }
    return changed;
}

/// The row itself or the next one above that the filter will show; null: not even the root.
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
    SoTreeViewItem* root = rootItem();
    if (!root)
        return;
    const bool hidesRoot = m_context.filter.hides(root->getNodeType());
    const std::vector<SoTreeViewItem*> changed = findChanges(root, m_context);
    if (changed.empty() && root->isFilteredOut() == hidesRoot && !root->isRevealed())
        return;
    sortRows(changed);
    root->setFilteredOut(hidesRoot);
    root->setHidden(hidesRoot);
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
    SoTreeViewItem* root = rootItem();
    const int at = indexOfTopLevelItem(root);
    takeTopLevelItem(at);
    sort(parents, m_context.filter);
    insertTopLevelItem(at, root);
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
