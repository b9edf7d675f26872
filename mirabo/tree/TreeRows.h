#pragma once

#include "mirabo/tree/SoTreeViewItem.h"

namespace mirabo {

/// All rows of the scene tree are of this class.
inline SoTreeViewItem* asItem(QTreeWidgetItem* item)
{
    return static_cast<SoTreeViewItem*>(item);
}

/// The tree that a row is in, also when the filter hides it; null: none.
inline QTreeWidget* treeOf(const SoTreeViewItem* row)
{
    while (const SoTreeViewItem* above = row->parentItem())
        row = above;
    return row->treeWidget();
}

/// All rows below a row or below `root`, the invisible parent of the top level.
inline int rowCountBelow(QTreeWidgetItem* parent, const QTreeWidgetItem* root)
{
    return parent == root ? parent->childCount() : asItem(parent)->rowCount();
}

inline SoTreeViewItem* rowBelow(QTreeWidgetItem* parent, int row, const QTreeWidgetItem* root)
{
    return parent == root ? asItem(parent->child(row)) : asItem(parent)->rowAt(row);
}

} // namespace mirabo
