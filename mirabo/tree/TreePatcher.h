#pragma once

#include "mirabo/tree/TreeBuilder.h"

#include <cstdint>
#include <vector>

class QTreeWidgetItem;
class SoMNodeField;
class SoMiraboTreeView;
class SoTreeViewItem;

namespace mirabo {

class RowList;

/// Brings the rows of a tree back in line with the graph, touching only what differs.
///
/// The single edits take a short way when the rows are what they were before the edit, which is
/// looked at next to the edited place; in every other case the whole list of rows is compared. So
/// changes that nobody reported are found together with the next one that is.
/// All functions return whether rows changed.
class TreePatcher {
public:
    explicit TreePatcher(SoMiraboTreeView& view);

    /// `index` counts in the node's child list, which has the change in it already. Item null: the
    /// list of the view's container, which holds the root.
    bool childInserted(SoTreeViewItem* item, const SoNode* child, int index);
    bool childRemoved(SoTreeViewItem* item, const SoNode* child, int index);
    bool childReplaced(SoTreeViewItem* item, const SoNode* child, int index);

    /// The same for a list of nodes in a field of the item's node, one that is not its child list.
    bool fieldNodeInserted(SoTreeViewItem* item, SoMNodeField* field, int index);
    bool fieldNodeRemoved(SoTreeViewItem* item, SoMNodeField* field, const SoNode* child,
                          int index);
    bool fieldNodeReplaced(SoTreeViewItem* item, SoMNodeField* field, int index);

    bool syncChildren(SoTreeViewItem* item);
    bool syncFields(SoTreeViewItem* item);
    bool sync(SoTreeViewItem* item);
    /// An item and all rows below it whose nodes have changed since that stamp, themselves or
    /// below, or have changes that nobody reported. Never looks at a node before it has found it in
    /// the graph.
    bool syncSince(SoTreeViewItem* item, std::uint64_t since);

    /// The top-level rows, which are those of the view's topNodes().
    bool syncTops();
    bool syncTopsSince(std::uint64_t since);

private:
    // In these, no item stands for the top level.
    RowList rowsBelow(SoTreeViewItem* item) const;
    ShownChildren childrenOf(const SoTreeViewItem* item) const;
    bool syncRows(SoTreeViewItem* item, int begin, int end, const std::vector<PlacedNode>& wanted);
    void rowsChanged(SoTreeViewItem* item, int row = 0);
    void insertRow(SoTreeViewItem* item, int row, const PlacedNode& place);
    void insertRows(SoTreeViewItem* item, int row, const PlacedNode* first, int count);
    void removeRow(SoTreeViewItem* item, int row);
    void removeRows(SoTreeViewItem* item, int row, int count);
    void rearrange(SoTreeViewItem* item, int begin, int end, const PlacedNode* first, int count);

    bool isInLine(const SoTreeViewItem* item) const;
    bool syncAroundDisabled(SoTreeViewItem* item);

    SoMiraboTreeView& m_view;
    TreeContext& m_context;
    TreeBuilder m_builder;
};

/// Number of rows below `item` that stand for children, disabled ones included; those for nodes of
/// fields come after them.
int childRowCount(const SoTreeViewItem* item);

} // namespace mirabo
