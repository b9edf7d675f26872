#include "mirabo/tree/OpenBranches.h"

#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <QSignalBlocker>

#include <utility>
#include <vector>

namespace mirabo {

void OpenBranches::open(SoTreeViewItem* item)
{
    if (item->childCount() == 0 || !item->treeWidget())
        keep(item);
    else
        item->setExpanded(true);
}

void OpenBranches::close(SoTreeViewItem* item)
{
    if (m_view.context().putAside.erase(item) > 0)
        item->setPutAside(false);
    item->setExpanded(false);
}

void OpenBranches::rowsChanged(SoTreeViewItem* item)
{
    if (item->childCount() == 0) {
        if (!item->isExpanded())
            return;
        keep(item);
        item->setExpanded(false);
    } else if (!m_isAside && item->treeWidget() && m_view.context().putAside.erase(item) > 0) {
        item->setPutAside(false);
        item->setExpanded(true);
    }
}

void OpenBranches::keep(SoTreeViewItem* item)
{
    item->setPutAside(true);
    m_view.context().putAside.insert(item);
}

void OpenBranches::removalTook(qint64 nanoseconds)
{
    m_spent += nanoseconds;
    if (m_spent < kPatience || m_isAside)
        return;
    m_spent = 0;
    putAside();
}

void OpenBranches::putAside()
{
    // A row that is asked for its index looks among all its siblings.
    struct Visit {
        SoTreeViewItem* item;
        QModelIndex index;
    };
    const QAbstractItemModel* model = m_view.model();
    std::vector<Visit> open;
    for (int row = 0; row < m_view.topLevelItemCount(); ++row)
        open.push_back({asItem(m_view.topLevelItem(row)), model->index(row, 0)});
    while (!open.empty()) {
        const auto [item, index] = open.back();
        open.pop_back();
        if (m_view.isExpanded(index))
            keep(item);
        for (int i = 0, n = item->childCount(); i < n; ++i)
            if (item->childItem(i)->childCount() > 0)
                open.push_back({item->childItem(i), model->index(i, 0, index)});
    }
    m_isAside = true; // first: closing makes a layout
    const QSignalBlocker quiet(&m_view);
    m_view.closeAll();
    m_view.rowsAboutToChange();
}

void OpenBranches::restore()
{
    m_spent = 0;
    if (!std::exchange(m_isAside, false))
        return;
    const auto aside = std::exchange(m_view.context().putAside, {});
    const QSignalBlocker quiet(&m_view);
    m_view.rowsAboutToChange(); // an open branch is then only noted down
    for (SoTreeViewItem* item : aside) {
        item->setPutAside(false);
        open(item);
    }
}

} // namespace mirabo
