#pragma once

#include "mirabo/tree/MovePlan.h"
#include "mirabo/tree/TreeEditCommand.h"

class SoTreeViewItem;

/// Takes the node of a row out of its place and puts it into another one. What is open below it
/// stays open, and if the row was current, the new one is.
class SoTreeMoveNodeCommand final : public mirabo::TreeEditCommand {
public:
    /// To where a drop on the target brings it. Where it cannot go, execute() tells.
    SoTreeMoveNodeCommand(SoTreeViewItem* dragged, SoTreeViewItem* target, bool spaceHeld,
                          std::shared_ptr<const mirabo::TreeEditHost> host);
    /// To a place that was chosen already.
    SoTreeMoveNodeCommand(SoTreeViewItem* row, const mirabo::MovePlan& plan,
                          std::shared_ptr<const mirabo::TreeEditHost> host);

    int getOldIndex() const { return m_from.index(); }
    /// Index in the new list with the node taken out of the old one; -1 when it goes nowhere.
    int getNewIndex() const { return m_to ? m_to->index() : -1; }

private:
    bool apply() override;
    bool revert() override;
    void visitNodes(const std::function<void(mirabo::KeptNode&)>& visit) override;
    std::vector<const mirabo::NodeSlot*> left() const override { return {&m_from}; }
    std::vector<const mirabo::NodeSlot*> entered() const override
    {
        return m_to ? std::vector<const mirabo::NodeSlot*>{&*m_to}
                    : std::vector<const mirabo::NodeSlot*>();
    }
    SoTreeViewItem* arrived(SoMiraboTreeView& view) override;
    const char* boxTitle() const override { return "Mirabo Move Node"; }
    QString failedText() const;
    bool shift(mirabo::NodeSlot& from, mirabo::NodeSlot& to);

    mirabo::KeptNode m_node;
    mirabo::NodeSlot m_from;
    std::optional<mirabo::NodeSlot> m_to;
    QString m_whyNot;
    bool m_isIdle;
    SoTreeViewItem* m_holderRow;  ///< only compared
    mirabo::BranchState m_branch; ///< of the row that is moved
    bool m_hadCurrent = false;    ///< the current row was at or below it
    mirabo::RowPath m_currentBelow;
};
