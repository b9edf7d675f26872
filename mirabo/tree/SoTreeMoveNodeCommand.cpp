#include "mirabo/tree/SoTreeMoveNodeCommand.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/core/SoNode.h>

using mirabo::MovePlan;
using mirabo::NodeSlot;
using mirabo::Refusal;

namespace {

SoMiraboTreeView* viewOf(const SoTreeViewItem* row)
{
    return static_cast<SoMiraboTreeView*>(mirabo::treeOf(row));
}

} // namespace

SoTreeMoveNodeCommand::SoTreeMoveNodeCommand(SoTreeViewItem* dragged, SoTreeViewItem* target,
                                             bool spaceHeld,
                                             std::shared_ptr<const mirabo::TreeEditHost> host)
    : SoTreeMoveNodeCommand(dragged, mirabo::planMove(dragged, target, spaceHeld), std::move(host))
{
}

SoTreeMoveNodeCommand::SoTreeMoveNodeCommand(SoTreeViewItem* row, const MovePlan& plan,
                                             std::shared_ptr<const mirabo::TreeEditHost> host)
    : TreeEditCommand(viewOf(row), std::move(host)),
      m_node(row->getNode()),
      m_from(NodeSlot::of(row)),
      m_to(plan.slot),
      m_whyNot(plan.refusal),
      m_isIdle(plan.isIdle),
      m_holderRow(plan.holderRow),
      m_branch(*viewOf(row), row)
{
    setName(mirabo::commandName("Move", *row->getNode()));
    if (m_to && m_to->isBeside(m_from) && m_to->index() > m_from.index())
        m_to->setIndex(m_to->index() - 1);
    for (const auto* at = mirabo::asItem(viewOf(row)->currentItem()); at; at = at->parentItem()) {
        if (at == row) {
            m_hadCurrent = true;
            break;
        }
        if (at->parentItem())
            m_currentBelow.insert(m_currentBelow.begin(), at->parentItem()->indexOfRow(at));
    }
}

void SoTreeMoveNodeCommand::visitNodes(const std::function<void(mirabo::KeptNode&)>& visit)
{
    visit(m_node);
}

QString SoTreeMoveNodeCommand::failedText() const
{
    return mirabo::nodeText(*m_node.get()).toHtmlEscaped() + " can't be moved.";
}

bool SoTreeMoveNodeCommand::shift(NodeSlot& from, NodeSlot& to)
{
    if (!from.take(m_node.get()))
        return refuse(mirabo::refusalFor(boxTitle(), failedText(), reason()));
    if (to.put(m_node.get()))
        return true;
    from.put(m_node.get());
    return refuse(mirabo::refusalFor(boxTitle(), failedText(), reason()));
}

bool SoTreeMoveNodeCommand::apply()
{
    if (!m_whyNot.isEmpty()) {
        Refusal why = mirabo::refusalFor(boxTitle(), failedText(), m_whyNot);
        if (m_isIdle)
            why.kind = Refusal::Kind::Silent;
        return refuse(std::move(why));
    }
    return m_to && shift(m_from, *m_to);
}

bool SoTreeMoveNodeCommand::revert()
{
    return shift(*m_to, m_from);
}

SoTreeViewItem* SoTreeMoveNodeCommand::arrived(SoMiraboTreeView& view)
{
    SoTreeViewItem* row = rowOf(view, *m_to, m_holderRow);
    if (!row)
        return nullptr;
    m_branch.apply(view, row);
    m_branch = {};
    if (!m_hadCurrent)
        return nullptr;
    for (const int at : m_currentBelow)
        if (SoTreeViewItem* below = row->rowAt(at))
            row = below;
    return row;
}
