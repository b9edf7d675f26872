#pragma once

#include <vector>

class QTreeWidgetItem;
class SoTreeViewItem;

namespace mirabo {

/// Number of a row among its siblings, and those of the rows above it, top level first. Places
/// compare like the rows stand from top to bottom.
using RowPlace = std::vector<int>;

/// Goes from row to row of a tree, in the order from top to bottom or back, open or not.
///
/// Only valid while no row comes or goes; place() outlasts that, since it names no row.
class RowWalker {
public:
    /// `root` is the invisible parent of the top level.
    explicit RowWalker(QTreeWidgetItem* root) : m_root(root) {}

    /// The row where it stands, or null: beyond either end, or not started.
    SoTreeViewItem* row() const { return m_row; }
    RowPlace place() const;

    void toFirst();
    void toLast();
    void toRow(SoTreeViewItem* row);
    /// To the row at a place or, when there is none any more, to the one that is closest above it.
    void toPlace(const RowPlace& place);
    /// One row down or up.
    void step(bool backward) { backward ? toPrevious() : toNext(); }

private:
    struct Level {
        QTreeWidgetItem* parent;
        int row;
    };

    void toNext();
    void toPrevious();
    void enter(QTreeWidgetItem* parent, int row);
    void descend();

    QTreeWidgetItem* m_root; // Not owned; the widget's.
    SoTreeViewItem* m_row = nullptr;
    std::vector<Level> m_levels;
};

} // namespace mirabo
