#pragma once

#include "mirabo/tree/DisabledPlaces.h"
#include "mirabo/tree/TreeEditCommand.h"

class SoTreeViewItem;

/// Takes the node of a row out of the place where the row stands, and can put it back. Without the
/// root nothing is shown: the other top-level nodes go and come back with it.
///
/// The node is taken by the constructor already, so that what cannot be deleted is never pushed;
/// execute() does not do it again. Keeps a reference on the node only while it holds the last one.
class SoTreeDeleteNodeCommand final : public mirabo::TreeEditCommand {
public:
    /// `done`: whether the node was taken; otherwise nothing has changed and refusal() tells why.
    SoTreeDeleteNodeCommand(SoTreeViewItem* item, std::shared_ptr<const mirabo::TreeEditHost> host,
                            bool& done);

    /// Where the node was: 0 a child (or the root), 1 in a field, 2 a part of a kit, 3 in a kit's
    /// list, 4 a child of a container that shows its children by a field.
    int getDeleteKind() const { return static_cast<int>(m_slot.kind()); }
    /// Number of the row among its siblings.
    int getChildIndex() const { return m_childIndex; }
    /// The node lives by this command only.
    bool isOwner() const { return m_node.isHeld(); }

private:
    bool apply() override;
    bool revert() override;
    void visitNodes(const std::function<void(mirabo::KeptNode&)>& visit) override;
    std::vector<const mirabo::NodeSlot*> left() const override { return {&m_slot}; }
    SoTreeViewItem* arrived(SoMiraboTreeView& view) override;
    const char* boxTitle() const override { return "Mirabo Delete Node"; }
    QString failedText() const;
    mirabo::Refusal whyNot() const;
    bool restoreTops();

    mirabo::KeptNode m_node;
    mirabo::NodeSlot m_slot;
    mirabo::DisabledPlaces m_disabled;    ///< what was out of the scene when its root was deleted
    std::vector<mirabo::KeptNode> m_tops; ///< with the root among them, when that is deleted
    int m_childIndex;
    int m_row;                    ///< below its parent's row, when it was deleted first
    SoTreeViewItem* m_parentItem; ///< only compared
};
