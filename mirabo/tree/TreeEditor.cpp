#include "mirabo/tree/TreeEditor.h"

#include "mirabo/tree/MovePlan.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeAddNodeCommand.h"
#include "mirabo/tree/SoTreeDeleteNodeCommand.h"
#include "mirabo/tree/SoTreeMoveNodeCommand.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/core/SoNode.h>

#include <optional>
#include <utility>

namespace mirabo {

TreeEditor::TreeEditor(SoMiraboTreeView* view, Wiring wiring)
    : QObject(view),
      m_view(view),
      m_stack(wiring.stack),
      m_owner(wiring.owner),
      m_host(std::make_shared<TreeEditHost>()),
      m_showBox(std::move(wiring.showBox))
{
    m_host->setRoot = std::move(wiring.setRoot);
    // Undo and redo run inside the stack, where the host's changes are taken for our own.
    m_host->tell = [this](const Refusal& refusal) {
        QMetaObject::invokeMethod(
            this, [this, refusal] { show(refusal); }, Qt::QueuedConnection);
    };
}

TreeEditor::~TreeEditor()
{
    *m_host = {}; // the commands live on
}

SoTreeViewItem* TreeEditor::current() const
{
    return m_view ? asItem(m_view->currentItem()) : nullptr;
}

bool TreeEditor::isReady() const
{
    return m_view && !m_stack.isBusy();
}

void TreeEditor::show(const Refusal& refusal)
{
    if (refusal.kind != Refusal::Kind::Silent && m_showBox)
        m_showBox(refusal);
}

/// Pushes what was done, else tells why it was not.
bool TreeEditor::finish(std::unique_ptr<TreeEditCommand> command, bool done)
{
    if (done)
        return m_owner.push(std::move(command));
    const Refusal refusal = command->refusal();
    command.reset();
    show(refusal); // last: the box may see the end of us
    return false;
}

bool TreeEditor::push(std::unique_ptr<MrbCommand> command)
{
    return isReady() && m_owner.push(std::move(command));
}

bool TreeEditor::deleteRow(SoTreeViewItem* row)
{
    if (!row || !isReady() || row->isDisabledNode())
        return false;
    bool done = false;
    std::unique_ptr<TreeEditCommand> command;
    std::optional<UndoStack::Busy> busy(std::in_place, m_stack);
    command = std::make_unique<SoTreeDeleteNodeCommand>(row, m_host, done);
    if (done)
        return finish(std::move(command), true);
    busy.reset();
    return finish(std::move(command), false);
}

bool TreeEditor::deleteCurrent()
{
    return deleteRow(current());
}

bool TreeEditor::canDeleteCurrent() const
{
    const SoTreeViewItem* row = current();
    return row && !row->isDisabledNode();
}

bool TreeEditor::addNode(SoNode* node, SoTreeViewItem* target)
{
    const SoRef<SoNode> kept(node);
    SoTreeViewItem* row = target ? target : current();
    if (!node || !row || !isReady() || row->isDisabledNode())
        return false;
    std::optional<UndoStack::Busy> busy(std::in_place, m_stack);
    auto command = std::make_unique<SoTreeAddNodeCommand>(row, m_host);
    if (!command->add(node)) {
        busy.reset();
        return finish(std::move(command), false);
    }
    const bool done = finish(std::move(command), true);
    busy.reset();
    if (m_view && current())
        Q_EMIT nodeAdded(current());
    return done;
}

bool TreeEditor::addType(SoType type, SoTreeViewItem* target)
{
    return addNode(SoNode::create(type), target);
}

bool TreeEditor::moveRow(SoTreeViewItem* row, SoTreeViewItem* target, bool spaceHeld)
{
    if (!row || !target || row == target || !isReady())
        return false;
    return runMove(row, planMove(row, target, spaceHeld));
}

bool TreeEditor::stepCurrent(MoveStep step)
{
    SoTreeViewItem* row = current();
    return row && isReady() && runMove(row, planStep(row, step));
}

bool TreeEditor::canStepCurrent(MoveStep step) const
{
    SoTreeViewItem* row = current();
    return row && planStep(row, step).isPossible();
}

bool TreeEditor::runMove(SoTreeViewItem* row, const MovePlan& plan)
{
    std::optional<UndoStack::Busy> busy(std::in_place, m_stack);
    auto command = std::make_unique<SoTreeMoveNodeCommand>(row, plan, m_host);
    if (command->execute())
        return finish(std::move(command), true);
    busy.reset();
    return finish(std::move(command), false);
}

bool TreeEditor::addReference(SoTreeViewItem* row, SoTreeViewItem* target, bool spaceHeld)
{
    if (!row || !target || !isReady())
        return false;
    MovePlan plan = planReference(row, target, spaceHeld);
    if (!plan.isPossible()) {
        Refusal why = refusalFor("Add node", "Can not add this node", plan.refusal);
        if (plan.isIdle)
            why.kind = Refusal::Kind::Silent;
        show(why);
        return false;
    }
    std::optional<UndoStack::Busy> busy(std::in_place, m_stack);
    auto command =
        std::make_unique<SoTreeAddNodeCommand>(std::move(*plan.slot), plan.holderRow, m_host);
    if (command->add(row->getNode()))
        return finish(std::move(command), true);
    busy.reset();
    return finish(std::move(command), false);
}

} // namespace mirabo
