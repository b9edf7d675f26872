#include "mirabo/tree/SoTreeAddNodeCommand.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/core/SoNode.h>

using mirabo::NodeSlot;
using mirabo::Refusal;

SoTreeAddNodeCommand::SoTreeAddNodeCommand(SoTreeViewItem* target,
                                           std::shared_ptr<const mirabo::TreeEditHost> host)
    : TreeEditCommand(static_cast<SoMiraboTreeView*>(mirabo::treeOf(target)), std::move(host)),
      m_place(NodeSlot::into(target, -1)),
      m_asLast(m_place.has_value()),
      m_holderRow(target)
{
    if (m_place)
        return;
    m_holderRow = target->parentItem();
    if (NodeSlot::of(target).isRoot()) {
        m_noPlace = {Refusal::Kind::Information, boxTitle(), "Can not add this node"};
        return;
    }
    m_place = NodeSlot::behind(target);
    if (!m_place)
        m_noPlace = mirabo::refusalFor(boxTitle(), "Can not add this node",
                                       QString("The %1 keeps no list of nodes here.")
                                           .arg(mirabo::nodeText(*m_holderRow->getNode())));
}

SoTreeAddNodeCommand::SoTreeAddNodeCommand(SoMiraboTreeView* view, NodeSlot place,
                                           SoTreeViewItem* holderRow,
                                           std::shared_ptr<const mirabo::TreeEditHost> host)
    : TreeEditCommand(view, std::move(host)), m_place(std::move(place)), m_holderRow(holderRow)
{
}

int SoTreeAddNodeCommand::getIndex(int addition) const
{
    const Addition& at = m_additions[static_cast<std::size_t>(addition)];
    return at.asLast ? -1 : at.slot.index();
}

bool SoTreeAddNodeCommand::add(SoNode* node)
{
    if (!m_place)
        return refuse(m_noPlace);
    if (const QString why = m_place->whyNotPut(node); !why.isEmpty())
        return refuse(mirabo::refusalFor(boxTitle(), "Can not add this node", why));
    m_additions.push_back({mirabo::KeptNode(node), *m_place, m_asLast});
    m_isAdding = true;
    const bool done = runAgain();
    m_isAdding = false;
    if (!done) {
        m_additions.pop_back();
        return false;
    }
    m_asLast = true; // what holds the first one is the target of the others
    setName(m_additions.size() == 1
                ? mirabo::commandName("Add", *node)
                : QString("Add %1 Nodes").arg(static_cast<int>(m_additions.size())));
    return true;
}

void SoTreeAddNodeCommand::visitNodes(const std::function<void(mirabo::KeptNode&)>& visit)
{
    for (Addition& addition : m_additions)
        visit(addition.node);
}

std::vector<const NodeSlot*> SoTreeAddNodeCommand::entered() const
{
    std::vector<const NodeSlot*> slots;
    for (const Addition& addition : m_additions)
        slots.push_back(&addition.slot);
    return slots;
}

bool SoTreeAddNodeCommand::put(Addition& addition)
{
    if (addition.asLast)
        addition.slot.setIndex(addition.slot.count());
    if (addition.slot.put(addition.node.get()))
        return true;
    return refuse(mirabo::refusalFor(boxTitle(), "Can not add this node", reason()));
}

bool SoTreeAddNodeCommand::apply()
{
    if (m_isAdding)
        return put(m_additions.back());
    for (std::size_t i = 0; i < m_additions.size(); ++i)
        if (!put(m_additions[i])) {
            while (i-- > 0)
                m_additions[i].slot.take(m_additions[i].node.get());
            return false;
        }
    return !m_additions.empty();
}

bool SoTreeAddNodeCommand::revert()
{
    for (std::size_t i = m_additions.size(); i-- > 0;)
        if (!m_additions[i].slot.take(m_additions[i].node.get())) {
            while (++i < m_additions.size())
                m_additions[i].slot.put(m_additions[i].node.get());
            return refuse(mirabo::refusalFor(boxTitle(), "Can not take this node back", reason()));
        }
    return true;
}

SoTreeViewItem* SoTreeAddNodeCommand::arrived(SoMiraboTreeView& view)
{
    return m_additions.empty() ? nullptr : rowOf(view, m_additions.back().slot, m_holderRow);
}
