#include "mirabo/tree/TreeIgnoreCommands.h"

#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/SoMiraboTreeView.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/io/SoWriteLock.h>

SoTreeIgnoreFieldCommand::SoTreeIgnoreFieldCommand(SoField* field) : m_field(field)
{
    SoFieldContainer* container = field->getContainer();
    if (container && container->isOfType(SoNode::getClassTypeId()))
        m_container = static_cast<SoNode*>(container);
}

bool SoTreeIgnoreFieldCommand::execute()
{
    const SoWriteLock lock;
    if (!lock || !m_container)
        return false;
    m_field->setIgnored(!m_field->isIgnored());
    return true;
}

SoTreeDisableNodeCommand::SoTreeDisableNodeCommand(SoMiraboTreeView* view, SoNode* node,
                                                   bool disable)
    : m_view(view), m_node(node), m_saved(view->context().disabled.find(node)), m_disable(disable)
{
}

bool SoTreeDisableNodeCommand::apply(bool disable)
{
    if (!m_view)
        return false;
    if (disable)
        m_saved = mirabo::disableNode(*m_view, m_node.get());
    if (!m_saved)
        return false;
    return disable || mirabo::enableNode(*m_view, *m_saved);
}
