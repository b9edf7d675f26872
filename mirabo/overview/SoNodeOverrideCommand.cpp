#include "mirabo/overview/SoNodeOverrideCommand.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>

namespace {

void apply(SoNode* node, bool state)
{
    SoDB::writelock();
    node->setOverride(state);
    SoDB::writeunlock();
}

} // namespace

SoNodeOverrideCommand::SoNodeOverrideCommand(SoNode* node, bool state)
    : m_node(node), m_state(state)
{
}

bool SoNodeOverrideCommand::execute()
{
    apply(m_node.get(), m_state);
    return true;
}

void SoNodeOverrideCommand::undo()
{
    apply(m_node.get(), !m_state);
}

void SoNodeOverrideCommand::redo()
{
    execute();
}
