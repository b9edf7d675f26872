#pragma once

#include "mirabo/tree/TreeContext.h"
#include "mirabo/tree/TreeEditCommand.h"

#include <memory>
#include <vector>

class SoField;

/// The commands of "Set Ignored/Enable".

/// Turns the ignore flag of a node's field around.
class SoTreeIgnoreFieldCommand final : public mirabo::TreeEditCommand {
public:
    /// The field is one of a node.
    SoTreeIgnoreFieldCommand(SoMiraboTreeView* view, const SoField* field);

private:
    bool apply() override;
    bool revert() override { return apply(); }
    void visitNodes(const std::function<void(mirabo::KeptNode&)>& visit) override;
    const char* boxTitle() const override { return "Mirabo Ignore Field"; }

    mirabo::KeptNode m_container;
    SbName m_name; ///< the field itself may be taken from its node and come again
};

/// Takes a node out of the graph, leaving its rows grey, or puts it back.
///
/// Keeps references only while the node is out.
class SoTreeDisableNodeCommand final : public mirabo::TreeEditCommand {
public:
    SoTreeDisableNodeCommand(SoMiraboTreeView* view, SoNode* node, bool disable);

private:
    /// A place that enabling has put the node into.
    struct Place {
        mirabo::KeptNode parent;
        int index;
    };

    bool apply() override { return m_disable ? disable() : enable(); }
    bool revert() override { return m_disable ? enable() : disable(); }
    void visitNodes(const std::function<void(mirabo::KeptNode&)>& visit) override { visit(m_node); }
    void noteRows(mirabo::TreeState& state, bool forward) const override;
    SoTreeViewItem* arrived(SoMiraboTreeView& view) override;
    const char* boxTitle() const override { return m_disable ? "Mirabo Disable" : "Mirabo Enable"; }
    bool disable();
    bool enable();

    mirabo::KeptNode m_node;
    std::shared_ptr<const mirabo::SavedLinks> m_saved; ///< while it is out
    std::vector<Place> m_put;
    bool m_disable;
    mirabo::TreeState m_others; ///< where other grey rows stood when the node came back first
};
