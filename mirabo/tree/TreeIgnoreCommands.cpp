#include "mirabo/tree/TreeIgnoreCommands.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/io/SoWriteLock.h>

SoTreeIgnoreFieldCommand::SoTreeIgnoreFieldCommand(SoField* field) : m_field(field)
{
    SoFieldContainer* container = field->getContainer();
    if (container && container->isOfType(SoNode::getClassTypeId()))
        m_container = static_cast<SoNode*>(container);
    const SbName name = container ? container->getFieldName(field) : SbName::empty();
    setName(QString(field->isIgnored() ? "Enable %1" : "Ignore %1")
                .arg(QString::fromUtf8(name.getString())));
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
    setName(mirabo::commandName(disable ? "Disable" : "Enable", *node));
}

bool SoTreeDisableNodeCommand::apply(bool disable)
{
    if (!m_view)
        return false;
    const SoMiraboTreeView::PatchScope scope(*m_view);
    mirabo::TreeState leaving(*m_view);
    mirabo::TreeState others; // the node comes back where its row stood among them
    for (const SoTreeViewItem* row : m_view->itemsOf(m_node.get())) {
        if (!row->isDisabledNode() && !mirabo::mayDisable(row))
            continue;
        leaving.addGreyRows(row->parentItem());
        others.addGreyRows(row->parentItem(), disable ? nullptr : m_node.get());
        if (disable && !row->isDisabledNode())
            leaving.addBranch(*m_view, row);
    }
    if (disable)
        m_saved = mirabo::disableNode(*m_view, m_node.get(), m_disable ? nullptr : &m_put);
    if (!m_saved || (!disable && !mirabo::enableNode(*m_view, *m_saved, &m_put)))
        return false;
    (disable ? m_whileEnabled : m_whileDisabled) = std::move(leaving);
    const mirabo::TreeState& arriving = disable ? m_whileDisabled : m_whileEnabled;
    if (arriving.isKnown())
        arriving.restore(*m_view);
    else if (!disable)
        others.restoreGreyRows(*m_view);
    return true;
}
