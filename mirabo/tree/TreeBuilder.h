#pragma once

#include "mirabo/tree/ChildRules.h"

class SoTreeViewItem;

namespace mirabo {

/// Makes the rows of whole subgraphs, outside of any view and without recursion: a graph may be
/// deeper than the call stack.
class TreeBuilder {
public:
    explicit TreeBuilder(TreeContext& context) : m_context(context) {}

    /// The row of a node to be put below `parent` (null: top level), with everything below it.
    SoTreeViewItem* build(SoNode* node, SoField* source, const SoTreeViewItem* parent);
    /// Entries directly below a node, in order.
    std::vector<PlacedNode> placesBelow(const SoNode* node);

private:
    void fill(SoTreeViewItem* item);

    TreeContext& m_context;
    FieldNodes m_fieldNodes;
    std::vector<SoTreeViewItem*> m_open; ///< made, but not filled yet
    std::vector<PlacedNode> m_places;
};

/// Deletes rows that are in no view, however deep they reach; later, when their view is announcing
/// its current row.
void destroyRows(SoTreeViewItem* top);

} // namespace mirabo
