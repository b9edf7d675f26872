#include "mirabo/tree/TreeIgnoreCommands.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>

#include <unordered_set>

SoTreeIgnoreFieldCommand::SoTreeIgnoreFieldCommand(SoMiraboTreeView* view, const SoField* field)
    : TreeEditCommand(view),
      m_container(static_cast<SoNode*>(field->getContainer())),
      m_name(field->getContainer()->getFieldName(field))
{
    setName(QString(field->isIgnored() ? "Enable %1" : "Ignore %1")
                .arg(QString::fromUtf8(m_name.getString())));
}

void SoTreeIgnoreFieldCommand::visitNodes(const std::function<void(mirabo::KeptNode&)>& visit)
{
    visit(m_container);
}

bool SoTreeIgnoreFieldCommand::apply()
{
    SoField* field = m_container->getField(m_name);
    if (!field)
        return refuse({mirabo::Refusal::Kind::Warning, boxTitle(), "The field is gone."});
    field->setIgnored(!field->isIgnored());
    return true;
}

SoTreeDisableNodeCommand::SoTreeDisableNodeCommand(SoMiraboTreeView* view, SoNode* node,
                                                   bool disable)
    : TreeEditCommand(view),
      m_node(node),
      m_saved(view->context().disabled.find(node)),
      m_disable(disable)
{
    setName(mirabo::commandName(disable ? "Disable" : "Enable", *node));
}

void SoTreeDisableNodeCommand::noteRows(mirabo::TreeState& state, bool forward) const
{
    const bool goes = forward == m_disable;
    // A group from which the node is taken may also stand in a kit, with the node as its part.
    std::unordered_set<const SoNode*> groups;
    const std::vector<SoTreeViewItem*> rows = view()->itemsOf(m_node.get());
    for (const SoTreeViewItem* row : rows)
        if (mirabo::mayDisable(row))
            groups.insert(row->getParentNode());
    for (const Place& place : m_put)
        groups.insert(place.parent.get());
    for (const SoTreeViewItem* row : rows) {
        const bool isPlace = row->parentItem() && !row->isDirectlyFromField()
                             && groups.count(row->getParentNode()) > 0;
        if (!row->isDisabledNode() && !isPlace)
            continue;
        state.addGreyRows(row->parentItem());
        if (goes && !row->isDisabledNode())
            state.addBranch(*view(), row);
    }
}

bool SoTreeDisableNodeCommand::disable()
{
    if (view()) {
        mirabo::SavedLinks only{m_node.get(), {}};
        for (const Place& place : m_put)
            if (place.parent)
                only.links.push_back({place.parent.get(), place.index});
        m_saved = mirabo::disableNode(*view(), m_node.get(), m_disable ? nullptr : &only);
    }
    return m_saved
           || refuse({mirabo::Refusal::Kind::Warning, boxTitle(),
                      mirabo::nodeText(*m_node.get()).toHtmlEscaped()
                          + " stands nowhere that it can be taken out of."});
}

bool SoTreeDisableNodeCommand::enable()
{
    if (!view() || !m_saved)
        return refuse({mirabo::Refusal::Kind::Warning, boxTitle(),
                       mirabo::nodeText(*m_node.get()).toHtmlEscaped()
                           + " has no place that it can be put back to."});
    m_others = {};
    for (const SoTreeViewItem* row : view()->itemsOf(m_node.get()))
        if (row->isDisabledNode())
            m_others.addGreyRows(row->parentItem(), m_node.get());
    mirabo::SavedLinks put;
    if (!mirabo::enableNode(*view(), *m_saved, &put))
        return false;
    m_put.clear();
    for (const mirabo::ParentLink& link : put.links)
        m_put.push_back({mirabo::KeptNode(link.parent.get()), link.index});
    m_saved.reset(); // it shows in the reference counts
    return true;
}

/// The node has come back to where its row stood among other grey ones.
SoTreeViewItem* SoTreeDisableNodeCommand::arrived(SoMiraboTreeView& view)
{
    if (!m_disable)
        m_others.restoreGreyRows(view);
    return nullptr;
}
