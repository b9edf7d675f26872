#pragma once

#include "mirabo/tree/TreeEditCommand.h"

namespace mirabo {

/// Makes a node the root of a tree that has none.
class SetRootCommand final : public TreeEditCommand {
public:
    SetRootCommand(SoMiraboTreeView* view, std::shared_ptr<const TreeEditHost> host, SoNode* root)
        : TreeEditCommand(view, std::move(host)), m_node(root)
    {
    }

private:
    bool apply() override
    {
        setRoot(m_node.get());
        return true;
    }
    bool revert() override
    {
        setRoot(nullptr);
        return true;
    }
    void visitNodes(const std::function<void(KeptNode&)>& visit) override { visit(m_node); }
    const char* boxTitle() const override { return "Paste node"; }

    KeptNode m_node;
};

} // namespace mirabo
