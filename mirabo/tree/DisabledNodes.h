#pragma once

#include "mirabo/tree/TreeContext.h"

class SoMiraboTreeView;

/// Taking a node out of the graph for a while. Its rows stay where they were, grey, and know where
/// it is to be put back. Only what a group holds as a child is taken; occurrences that fields hold,
/// parts of node kits and the content of files stay.
namespace mirabo {

/// Whether the row's node may be taken out of the place where the row stands.
bool mayDisable(const SoTreeViewItem* item);

/// Takes the node out of every group that the tree shows it in, under the write lock of the scene
/// database. Returns the places, none when there are none.
SavedLinks disableNode(SoMiraboTreeView& view, SoNode* node);

/// Puts the node back: to where its grey rows stand, else to the places of old. Places whose group
/// has come below the node meanwhile are left out.
void enableNode(SoMiraboTreeView& view, const SavedLinks& saved);

} // namespace mirabo
