#pragma once

#include "mirabo/core/KeptNode.h"
#include "mirabo/extender/MrbCommand.h"

class SoNode;

/// Sets a node's override flag. Undo sets the opposite (intended: not what it was before). Nothing
/// once the node has died: it is not kept alive.
class SoNodeOverrideCommand final : public MrbCommand {
public:
    SoNodeOverrideCommand(SoNode* node, bool state);

    bool execute() override;
    void undo() override;
    void redo() override;

private:
    mirabo::KeptNode m_node; ///< null once it has died
    bool m_state;
};
