#pragma once

#include "mirabo/tree/TreeEditCommand.h"

#include <vector>

class SoTreeViewItem;

/// Adds nodes at a row: as the last children of the row's node when that keeps a list, else behind
/// it in the list that it stands in itself. Nodes that are added later go to the same list.
///
/// The node may be a new one, or one that stands elsewhere in the scene already.
class SoTreeAddNodeCommand final : public mirabo::TreeEditCommand {
public:
    SoTreeAddNodeCommand(SoTreeViewItem* target, std::shared_ptr<const mirabo::TreeEditHost> host);
    /// Adds at a place that was chosen already, below that row (null: a top-level one).
    SoTreeAddNodeCommand(SoMiraboTreeView* view, mirabo::NodeSlot place, SoTreeViewItem* holderRow,
                         std::shared_ptr<const mirabo::TreeEditHost> host);

    /// Adds a node at once, as a further addition of this command. Only before it is pushed. False,
    /// with nothing changed, when refusal() tells why.
    bool add(SoNode* node);
    int getAdditionCount() const { return static_cast<int>(m_additions.size()); }
    /// Index of an addition in its list; -1: as the last one.
    int getIndex(int addition) const;

private:
    struct Addition {
        mirabo::KeptNode node;
        mirabo::NodeSlot slot;
        bool asLast;
    };

    bool apply() override;
    bool revert() override;
    void visitNodes(const std::function<void(mirabo::KeptNode&)>& visit) override;
    std::vector<const mirabo::NodeSlot*> entered() const override;
    SoTreeViewItem* arrived(SoMiraboTreeView& view) override;
    const char* boxTitle() const override { return "Add node"; }
    bool put(Addition& addition);

    std::optional<mirabo::NodeSlot> m_place; ///< of the next addition; none: there is none
    bool m_asLast = false;
    mirabo::Refusal m_noPlace;
    std::vector<Addition> m_additions;
    bool m_isAdding = false;
    SoTreeViewItem* m_holderRow; ///< only compared
};
