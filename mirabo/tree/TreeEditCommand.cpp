#include "mirabo/tree/TreeEditCommand.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/core/ErrorScope.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/io/SoWriteLock.h>

namespace mirabo {

namespace {

/// Collects what is posted during an edit: the reason of a refusal is shown, not posted.
void collect(const SoError* error, void* texts)
{
    *static_cast<QStringList*>(texts) << QString::fromUtf8(error->getPrintedText().getString());
}

} // namespace

Refusal refusalFor(const QString& title, const QString& html, const QString& reason)
{
    return {Refusal::Kind::Warning, title, html + "<br>" + reason.toHtmlEscaped()};
}

TreeEditCommand::TreeEditCommand(SoMiraboTreeView* view, std::shared_ptr<const TreeEditHost> host)
    : m_view(view), m_host(std::move(host))
{
}

TreeEditCommand::TreeEditCommand(SoMiraboTreeView* view)
    : TreeEditCommand(view, std::make_shared<TreeEditHost>())
{
}

bool TreeEditCommand::execute()
{
    return m_isDone || go(true);
}

bool TreeEditCommand::runAgain()
{
    const bool isFirst = !m_isDone;
    TreeState before = m_before;
    if (!go(true))
        return false;
    if (!isFirst)
        m_before = std::move(before); // of the command as a whole
    return true;
}

void TreeEditCommand::redo()
{
    if (!m_isDone && !go(true) && m_host->tell)
        m_host->tell(m_refusal);
}

void TreeEditCommand::undo()
{
    if (m_isDone && !go(false) && m_host->tell)
        m_host->tell(m_refusal);
}

bool TreeEditCommand::go(bool forward)
{
    m_refusal = {};
    m_posted.clear();
    const SoWriteLock lock;
    if (!lock)
        return refuse({Refusal::Kind::Warning, boxTitle(),
                       "The scene cannot be edited now: another thread is reading it."});
    std::optional<SoMiraboTreeView::PatchScope> scope;
    TreeState& from = forward ? m_before : m_behind;
    const TreeState& to = forward ? m_behind : m_before;
    TreeState leaving;
    if (m_view) {
        scope.emplace(*m_view);
        leaving = TreeState(*m_view);
        noteRows(leaving, forward);
    }
    if (!editGraph(forward))
        return false;
    // Of an edit that was made, somebody else had to say it.
    for (const QString& text : qAsConst(m_posted))
        SoDebugError::post("TreeEditCommand", "%s", text.toUtf8().constData());
    from = std::move(leaving);
    m_isDone = forward;
    if (m_view)
        enter(to);
    return true;
}

bool TreeEditCommand::editGraph(bool forward)
{
    const ThreadErrorScope<SoDebugError> errors(&collect, &m_posted);
    bool alive = true;
    visitNodes([&alive](KeptNode& node) {
        node.hold();
        alive = alive && node;
    });
    if (!alive)
        refuse({Refusal::Kind::Warning, boxTitle(), "The application has deleted the node."});
    const bool done = alive && (forward ? apply() : revert());
    visitNodes([](KeptNode& node) { node.settle(); });
    return done;
}

QString TreeEditCommand::reason() const
{
    return m_posted.isEmpty() ? QString("The scene has changed meanwhile.") : m_posted.first();
}

void TreeEditCommand::setRoot(SoNode* root) const
{
    if (m_host->setRoot)
        m_host->setRoot(root);
    else if (m_view)
        m_view->setSceneGraph(root);
}

void TreeEditCommand::noteRows(TreeState& state, bool forward) const
{
    for (const NodeSlot* slot : forward ? left() : entered()) {
        if (slot->isRoot()) { // the others go with it
            for (int row = 0; row < m_view->topLevelItemCount(); ++row)
                state.addBranch(*m_view, asItem(m_view->topLevelItem(row)));
            continue;
        }
        if (const SoTreeViewItem* top = slot->topRow(*m_view))
            state.addBranch(*m_view, top);
        for (SoTreeViewItem* holderRow : m_view->itemsOf(slot->holder()))
            if (const SoTreeViewItem* row =
                    holderRow->isDisabledNode() ? nullptr : slot->goingBelow(holderRow))
                state.addBranch(*m_view, row);
    }
    for (const auto& slots : {left(), entered()})
        for (const NodeSlot* slot : slots)
            for (const SoTreeViewItem* holderRow : m_view->itemsOf(slot->holder()))
                state.addGreyRows(holderRow);
}

void TreeEditCommand::enter(const TreeState& state)
{
    // The rows are where the user wants them: nothing that changed is to be gone to.
    m_view->showLater(nullptr);
    m_view->topologyManager().takeChangedItem();
    if (state.isKnown())
        state.restore(*m_view);
    else if (SoTreeViewItem* current = arrived(*m_view))
        m_view->makeCurrent(current);
}

SoTreeViewItem* TreeEditCommand::rowOf(const SoMiraboTreeView& view, const NodeSlot& slot,
                                       const SoTreeViewItem* holderRow)
{
    SoTreeViewItem* any = nullptr;
    if (slot.isTopLevel(view))
        return slot.topRow(view);
    for (SoTreeViewItem* row : view.itemsOf(slot.holder())) {
        if (row->isDisabledNode())
            continue;
        // A list part may have made its group only now.
        if (row == holderRow || row->parentItem() == holderRow)
            return slot.rowBelow(row);
        any = row;
    }
    return any ? slot.rowBelow(any) : nullptr;
}

} // namespace mirabo
