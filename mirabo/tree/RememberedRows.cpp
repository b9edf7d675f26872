#include "mirabo/tree/RememberedRows.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/OpenBranches.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

namespace mirabo {

RememberedRows::RememberedRows(const SoMiraboTreeView& tree)
    : m_current(BookmarkPath::of(asItem(tree.currentItem()))),
      m_top(BookmarkPath::of(asItem(tree.itemAt(1, 1))))
{
    struct Visit {
        const SoTreeViewItem* item;
        QModelIndex index; ///< a row that is asked for it looks among all its siblings
        int parent;
    };
    const GraphReading graph;
    std::vector<Visit> open;
    const auto visit = [&](const SoTreeViewItem* item, const QModelIndex& index, int parent) {
        if (item->childCount() > 0 && tree.isExpanded(index))
            open.push_back({item, index, parent});
    };
    m_isRootClosed = tree.rootItem() && !tree.isExpanded(tree.indexFromItem(tree.rootItem()));
    for (int row = 0; row < tree.topLevelItemCount(); ++row)
        visit(asItem(tree.topLevelItem(row)), tree.model()->index(row, 0), -1);
    for (std::size_t i = 0; i < open.size(); ++i) {
        const auto [item, index, parent] = open[i];
        m_open.push_back({parent, BookmarkPath::stepTo(item)});
        for (int row = 0; row < item->childCount(); ++row)
            visit(item->childItem(row), tree.model()->index(row, 0, index), static_cast<int>(i));
    }
}

void RememberedRows::openBranches(SoMiraboTreeView& tree) const
{
    const SoMiraboTreeView::PatchScope scope(tree);
    tree.rowsAboutToChange(); // one layout for all of them
    if (m_isRootClosed)
        tree.collapseItem(tree.rootItem());
    std::vector<QModelIndex> opened;
    for (const OpenRow& open : m_open) {
        opened.emplace_back();
        const QModelIndex above =
            open.parent < 0 ? QModelIndex() : opened[static_cast<std::size_t>(open.parent)];
        if (open.parent >= 0 && !above.isValid())
            continue;
        auto* parent = above.isValid() ? static_cast<QTreeWidgetItem*>(above.internalPointer())
                                       : tree.invisibleRootItem();
        const int row = BookmarkPath::findBelow(tree, parent, open.step);
        if (row < 0)
            continue;
        // The filter's hidden rows have no index.
        const bool isFiltered = above.isValid() && asItem(parent)->hasHiddenRows();
        SoTreeViewItem* item = rowBelow(parent, row, tree.invisibleRootItem());
        opened.back() = isFiltered ? tree.indexFromItem(item) : tree.model()->index(row, 0, above);
        if (opened.back().isValid())
            tree.setExpanded(opened.back(), true);
    }
}

void RememberedRows::restore(SoMiraboTreeView& tree) const
{
    SoTreeViewItem* current = nullptr;
    SoTreeViewItem* top = nullptr;
    {
        const GraphReading graph;
        if (!graph || !tree.rootItem())
            return;
        openBranches(tree);
        for (BookmarkPath path = m_current; !current && !path.isEmpty(); path.steps.pop_back())
            current = path.find(tree);
        top = m_top.find(tree);
    }
    if (top)
        tree.scrollToItem(top, QAbstractItemView::PositionAtTop);
    if (current) // last: whoever hears of it may show another scene
        tree.setCurrentItem(current);
}

} // namespace mirabo
