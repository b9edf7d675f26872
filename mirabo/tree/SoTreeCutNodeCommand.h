#pragma once

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/tree/TreeEditCommand.h"

#include <memory>
#include <vector>

class SoTreeViewItem;

/// Takes the node of a row out of its place, and then, from there up to the top-level row, what is
/// left without content: separators with no shape below them, and other groups without children. A
/// separator that still holds a shape ends the way up.
class SoTreeCutNodeCommand final : public MrbCommand {
public:
    /// `done`: whether the node was taken; otherwise nothing has changed and refusal() tells why.
    SoTreeCutNodeCommand(SoTreeViewItem* item,
                         const std::shared_ptr<const mirabo::TreeEditHost>& host, bool& done);

    const mirabo::Refusal& refusal() const { return m_refusal; }

    /// The edit was made by the constructor.
    bool execute() override { return true; }
    void undo() override;
    void redo() override;

private:
    bool take(SoTreeViewItem* item, const std::shared_ptr<const mirabo::TreeEditHost>& host);

    std::vector<std::unique_ptr<mirabo::TreeEditCommand>> m_steps; ///< deletions, from below up
    mirabo::Refusal m_refusal;
};
