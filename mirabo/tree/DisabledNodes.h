#pragma once

#include "mirabo/tree/TreeContext.h"

class SoMiraboTreeView;
class SoTreeViewItem;

/// Taking a node out of the graph for a while. Its rows stay where they were, grey, and know where
/// it is to be put back. Only what a group holds as a child is taken; occurrences that fields hold,
/// parts of node kits and the content of files stay.
namespace mirabo {

/// Whether the row's node may be taken out of the place where the row stands.
bool mayDisable(const SoTreeViewItem* item);

/// Takes the node out of every group that the tree shows it in, under the write lock of the scene
/// database. Returns the places, or null when there are none. As long as somebody keeps what was
/// returned, rows that are made for those groups anew get their grey rows back. `only`: takes it
/// out of these places and leaves it in others.
std::shared_ptr<const SavedLinks> disableNode(SoMiraboTreeView& view, SoNode* node,
                                              const SavedLinks* only = nullptr);

/// Puts the node back: to where its grey rows stand, else to the places of old. Places whose group
/// has come below the node meanwhile are left out. False, with nothing changed, when the graph may
/// not be edited now. `put`: gets the places in which the node stands on account of it.
bool enableNode(SoMiraboTreeView& view, const SavedLinks& saved, SavedLinks* put = nullptr);

/// Gives a tree that was made anew the disabled nodes that it had before, with their grey rows.
void restoreDisabled(SoMiraboTreeView& view, const DisabledPlaces& places);

/// Gives a row that was filled from the graph the grey rows of what was taken out of its node.
void addGreyRows(SoTreeViewItem* item, TreeContext& context);

} // namespace mirabo
