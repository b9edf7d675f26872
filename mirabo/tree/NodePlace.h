#pragma once

#include <QString>

class SoMiraboTreeView;
class SoNode;
class SoTreeViewItem;

namespace mirabo {

/// Where a row stands, from the root down: "Separator > Group wheel > Cube". Empty while the graph
/// cannot be looked at.
QString placeOf(const SoTreeViewItem* row);

/// The same for a node. One of its places when it has several; empty when the tree does not show
/// it.
QString placeOf(const SoMiraboTreeView& tree, const SoNode* node);

} // namespace mirabo
