#pragma once

#include "mirabo/tree/TreeRows.h"

#include <QTreeWidget>

namespace mirabo {

/// The rows directly below a row, or the top-level ones, in the order of the graph; those that the
/// filter hides included. A hidden top-level row stays in the widget.
class RowList {
public:
    /// Parent null: the top level.
    RowList(const QTreeWidget& tree, SoTreeViewItem* parent)
        : m_parent(parent), m_top(parent ? nullptr : tree.invisibleRootItem())
    {
    }

    int count() const { return m_parent ? m_parent->rowCount() : m_top->childCount(); }
    /// Null past the end.
    SoTreeViewItem* at(int row) const
    {
        return m_parent ? m_parent->rowAt(row) : asItem(m_top->child(row));
    }
    /// -1 for a row that is not in the list.
    int indexOf(const SoTreeViewItem* row) const
    {
        return m_parent ? m_parent->indexOfRow(row)
                        : m_top->indexOfChild(const_cast<SoTreeViewItem*>(row));
    }

    /// The rows must be in no tree.
    void insert(int at, QTreeWidgetItem* row) const
    {
        if (m_parent)
            m_parent->insertRow(at, row);
        else
            m_top->insertChild(at, row);
        hideFiltered(row);
    }
    void insert(int at, const QList<QTreeWidgetItem*>& rows) const
    {
        if (m_parent)
            m_parent->insertRows(at, rows);
        else
            m_top->insertChildren(at, rows);
        for (int i = 0; m_top && i < rows.size(); ++i)
            hideFiltered(rows[i]);
    }
    /// The caller owns what is taken.
    SoTreeViewItem* take(int at) const
    {
        return m_parent ? m_parent->takeRow(at) : asItem(m_top->takeChild(at));
    }
    QList<QTreeWidgetItem*> takeAll() const
    {
        return m_parent ? m_parent->takeRows() : m_top->takeChildren();
    }

private:
    void hideFiltered(QTreeWidgetItem* row) const
    {
        if (m_top && asItem(row)->isFilteredOut())
            row->setHidden(true);
    }

    SoTreeViewItem* m_parent; // Not owned.
    QTreeWidgetItem* m_top;   // Not owned; null below a row.
};

} // namespace mirabo
