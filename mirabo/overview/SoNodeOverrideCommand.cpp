#include "mirabo/overview/SoNodeOverrideCommand.h"

#include <kalmyr/core/SoNode.h>

SoNodeOverrideCommand::SoNodeOverrideCommand(SoNode* node, bool state)
    : m_node(node), m_state(state)
{
}

bool SoNodeOverrideCommand::execute()
{
    m_node->setOverride(m_state);
    return true;
}

void SoNodeOverrideCommand::undo()
{
    m_node->setOverride(!m_state);
}

void SoNodeOverrideCommand::redo()
{
    execute();
}
