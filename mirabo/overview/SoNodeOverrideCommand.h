#pragma once

#include "mirabo/extender/MrbCommand.h"

#include <kalmyr/base/SoRef.h>

class SoNode;

/// Sets a node's override flag. Undo sets the opposite (intended: not what it was before).
class SoNodeOverrideCommand final : public MrbCommand {
public:
    SoNodeOverrideCommand(SoNode* node, bool state);

    bool execute() override;
    void undo() override;
    void redo() override;

private:
    SoRef<SoNode> m_node; ///< held: undo may come long after the node has left the scene
    bool m_state;
};
