#pragma once

#include <QString>

class SoMiraboTreeView;
class SoNode;

namespace mirabo {

/// Where a node stands, from the root down: "Separator > Group wheel > Cube". One of its places
/// when it has several; empty when the tree does not show it.
QString placeOf(const SoMiraboTreeView& tree, const SoNode* node);

} // namespace mirabo
