#pragma once

#include "mirabo/tree/NodeSlot.h"

#include <QString>

#include <optional>

class SoTreeViewItem;

namespace mirabo {

/// Where a row's node would go by a drop, or by a step with the keyboard, and why it would not. For
/// the commands and for what is shown before the mouse button is released.
struct MovePlan {
    enum class Where {
        Nowhere,
        First, ///< before the other nodes of the target
        Into,  ///< behind the other nodes of the target
        Behind ///< beside the target
    };

    Where where = Where::Nowhere;
    std::optional<NodeSlot> slot;        ///< with the index that it has before the node is taken
    SoTreeViewItem* target = nullptr;    ///< the row that `where` refers to
    SoTreeViewItem* holderRow = nullptr; ///< the row below which the node arrives
    QString refusal;                     ///< a sentence; empty: it goes there
    bool isIdle = false;                 ///< refused since there is nothing to do

    bool isPossible() const { return slot && refusal.isEmpty(); }
};

/// A drop on a row: onto its own parent a node becomes the first one there; otherwise it goes into
/// a target that keeps a list of nodes, or behind one that does not. With the space bar held it
/// goes behind the target in either case.
MovePlan planMove(SoTreeViewItem* dragged, SoTreeViewItem* target, bool spaceHeld);

/// The same for a further reference to the dragged row's node, which stays where it is.
MovePlan planReference(SoTreeViewItem* dragged, SoTreeViewItem* target, bool spaceHeld);

/// Steps with the keyboard.
enum class MoveStep { Up, Down, IntoPrevious, OutOfParent };
MovePlan planStep(SoTreeViewItem* row, MoveStep step);

} // namespace mirabo
