#include "mirabo/overview/SoNodeOverrideCommand.h"

#include "mirabo/core/CommandName.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoWriteLock.h>

namespace {

bool apply(const mirabo::KeptNode& node, bool state)
{
    const SoWriteLock lock;
    if (!lock || !node)
        return false;
    node->setOverride(state);
    return true;
}

} // namespace

SoNodeOverrideCommand::SoNodeOverrideCommand(SoNode* node, bool state)
    : m_node(node), m_state(state)
{
    setName(mirabo::commandName(state ? "Override" : "Do Not Override", *node));
}

bool SoNodeOverrideCommand::execute()
{
    return apply(m_node, m_state);
}

void SoNodeOverrideCommand::undo()
{
    apply(m_node, !m_state);
}

void SoNodeOverrideCommand::redo()
{
    execute();
}
