#include "mirabo/tree/SoTreeDeleteNodeCommand.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/RowList.h"
#include "mirabo/tree/SoMiraboTreeView.h"

#include <kalmyr/nodes/SoGroup.h>

#include <algorithm>

using mirabo::NodeSlot;
using mirabo::Refusal;
using mirabo::RowList;

namespace {

SoMiraboTreeView* viewOf(const SoTreeViewItem* item)
{
    return static_cast<SoMiraboTreeView*>(mirabo::treeOf(item));
}

} // namespace

SoTreeDeleteNodeCommand::SoTreeDeleteNodeCommand(SoTreeViewItem* item,
                                                 std::shared_ptr<const mirabo::TreeEditHost> host,
                                                 bool& done)
    : TreeEditCommand(viewOf(item), std::move(host)),
      m_node(item->getNode()),
      m_slot(NodeSlot::of(item)),
      m_childIndex(item->childIndexValue()),
      m_row(RowList(*item->treeWidget(), item->parentItem()).indexOf(item)),
      m_parentItem(item->parentItem())
{
    if (m_slot.isRoot() && view()->getContainer())
        for (SoNode* node : view()->topNodes())
            m_tops.emplace_back(node);
    setName(mirabo::commandName("Delete", *item->getNode()));
    done = execute();
    m_parentItem = nullptr;
}

void SoTreeDeleteNodeCommand::visitNodes(const std::function<void(mirabo::KeptNode&)>& visit)
{
    visit(m_node);
    for (mirabo::KeptNode& node : m_tops)
        visit(node);
}

QString SoTreeDeleteNodeCommand::failedText() const
{
    return QString("<i>%1</i> can't be deleted.")
        .arg(QString::fromUtf8(m_node->getTypeId().getName().getString()));
}

Refusal SoTreeDeleteNodeCommand::whyNot() const
{
    const QString text = failedText();
    if (m_slot.isContentOfFile())
        return {Refusal::Kind::Information, boxTitle(), text};
    if (m_slot.isGroupOfList())
        return {Refusal::Kind::Warning, boxTitle(),
                "This SoNodeKitListPart container can't be deleted."};
    const QString why = m_slot.whyNotTake();
    return why.isEmpty() ? Refusal() : mirabo::refusalFor(boxTitle(), text, why);
}

bool SoTreeDeleteNodeCommand::apply()
{
    if (Refusal why = whyNot(); !why.text.isEmpty())
        return refuse(std::move(why));
    if (m_slot.isRoot()) {
        if (view())
            m_disabled = view()->context().disabled;
        setRoot(nullptr);
        return true;
    }
    if (m_slot.take(m_node.get()))
        return true;
    if (m_slot.kind() != NodeSlot::Kind::Part)
        return refuse(mirabo::refusalFor(boxTitle(), failedText(), reason()));
    return refuse({Refusal::Kind::Warning, boxTitle(),
                   QString("<i>\"%1\"</i> part can't be deleted.")
                       .arg(QString::fromUtf8(m_slot.name().getString()))});
}

bool SoTreeDeleteNodeCommand::revert()
{
    if (m_slot.isRoot()) {
        setRoot(m_node.get());
        if (!restoreTops())
            return refuse(
                {Refusal::Kind::Warning, boxTitle(), "The scene did not come back as it was."});
        if (view())
            mirabo::restoreDisabled(*view(), m_disabled);
        return true;
    }
    if (m_slot.put(m_node.get()))
        return true;
    const QString what = m_slot.name().isEmpty() ? mirabo::nodeText(*m_node.get())
                                                 : QString::fromUtf8(m_slot.name().getString());
    return refuse({Refusal::Kind::Warning, "Mirabo Set Node", QString("Can't set %1.").arg(what)});
}

/// Puts the other top-level nodes beside the root again, unless they stand there still.
bool SoTreeDeleteNodeCommand::restoreTops()
{
    SoGroup* container = view() ? view()->getContainer() : nullptr;
    for (std::size_t i = 0; container && i < m_tops.size(); ++i) {
        const int index = static_cast<int>(i);
        SoNode* node = m_tops[i].get();
        const bool isThere =
            index < container->getNumChildren() && container->getChild(index) == node;
        if (!isThere && !container->insertChild(node, index))
            return false;
    }
    return true;
}

/// The row that has taken the place, else the one before it, else their parent: pressing Delete
/// again goes on with the siblings.
SoTreeViewItem* SoTreeDeleteNodeCommand::arrived(SoMiraboTreeView& view)
{
    const auto rows = view.itemsOf(m_slot.holder());
    if (rows.empty() && !m_slot.isTopLevel(view))
        return nullptr;
    const auto known = std::find(rows.begin(), rows.end(), m_parentItem);
    SoTreeViewItem* parent = known != rows.end() ? *known : rows.empty() ? nullptr : rows.front();
    const RowList list(view, parent);
    for (int row = m_row; row < list.count(); ++row)
        if (!list.at(row)->isFilteredOut())
            return list.at(row);
    for (int row = std::min(m_row, list.count()); row-- > 0;)
        if (!list.at(row)->isFilteredOut())
            return list.at(row);
    return parent;
}
