#include "mirabo/tree/TreeEditor.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/MovePlan.h"
#include "mirabo/tree/SetRootCommand.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeAddNodeCommand.h"
#include "mirabo/tree/SoTreeCutNodeCommand.h"
#include "mirabo/tree/SoTreeDeleteNodeCommand.h"
#include "mirabo/tree/SoTreeMoveNodeCommand.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoWriteLock.h>

#include <algorithm>
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

namespace {

/// Whether the graph has the row, as far as is known.
bool isUsable(const SoTreeViewItem* row)
{
    return row && !row->isDead() && !row->isDisabledNode()
           && (!row->parentItem() || !row->parentItem()->isDead());
}

/// Returns the refusal for a row that is not usable.
QString whyNotUsable(const SoTreeViewItem* row)
{
    return row->isDisabledNode() && !row->isDead()
               ? "The node has been taken out of the scene; enable it first."
               : "The application has deleted the node.";
}

} // namespace

bool TreeEditor::run(const char* title, std::initializer_list<SoTreeViewItem*> rows,
                     const Make& make)
{
    if (!isReady())
        return false;
    Refusal refusal;
    bool done = false;
    {
        const UndoStack::Busy busy(m_stack);
        std::unique_ptr<MrbCommand> command;
        {
            // From the first look at the rows' nodes on: they may die while others edit.
            const SoWriteLock lock;
            const auto unusable = std::find_if_not(rows.begin(), rows.end(), isUsable);
            if (!lock)
                refusal = {Refusal::Kind::Warning, title,
                           "The scene cannot be edited now: another thread is reading it."};
            else if (unusable == rows.end())
                command = make(refusal);
            else if (*unusable)
                refusal = {Refusal::Kind::Information, title, whyNotUsable(*unusable)};
        }
        if (command)
            done = m_owner.push(std::move(command));
    }
    if (!done)
        show(refusal); // last: the box may see the end of us
    return done;
}

bool TreeEditor::run(std::unique_ptr<TreeEditCommand> command)
{
    return run("Mirabo Ignore Node", {}, [&](Refusal& refusal) {
        command->setHost(m_host);
        const bool done = command->execute();
        refusal = command->refusal();
        return done ? std::move(command) : nullptr;
    });
}

bool TreeEditor::deleteRow(SoTreeViewItem* row)
{
    return run("Mirabo Delete Node", {row}, [&](Refusal& refusal) {
        bool done = false;
        auto command = std::make_unique<SoTreeDeleteNodeCommand>(row, m_host, done);
        refusal = command->refusal();
        return done ? std::move(command) : nullptr;
    });
}

bool TreeEditor::deleteCurrent()
{
    return deleteRow(current());
}

bool TreeEditor::cutRow(SoTreeViewItem* row)
{
    if (!row)
        row = current();
    return run("Mirabo Delete Node", {row}, [&](Refusal& refusal) {
        bool done = false;
        auto command = std::make_unique<SoTreeCutNodeCommand>(row, m_host, done);
        refusal = command->refusal();
        return done ? std::move(command) : nullptr;
    });
}

bool TreeEditor::canDeleteCurrent() const
{
    return isUsable(current());
}

bool TreeEditor::addNode(SoNode* node, SoTreeViewItem* target)
{
    const SoRef<SoNode> kept(node);
    SoTreeViewItem* row = target ? target : current();
    const bool done = node && run("Add node", {row}, [&](Refusal& refusal) {
                          auto command = std::make_unique<SoTreeAddNodeCommand>(row, m_host);
                          const bool added = command->add(node);
                          refusal = command->refusal();
                          return added ? std::move(command) : nullptr;
                      });
    if (done && current())
        Q_EMIT nodeAdded(current());
    return done;
}

bool TreeEditor::addType(SoType type, SoTreeViewItem* target)
{
    return addNode(SoNode::create(type), target);
}

bool TreeEditor::pasteTopLevel(SoNode* node)
{
    const SoRef<SoNode> kept(node);
    return node && run("Paste node", {}, [&](Refusal& refusal) {
               std::unique_ptr<TreeEditCommand> command;
               bool done = false;
               if (!m_view->getRoot()) {
                   command = std::make_unique<SetRootCommand>(m_view, m_host, node);
                   done = command->execute();
               } else if (auto place = NodeSlot::behindAll(*m_view)) {
                   auto add = std::make_unique<SoTreeAddNodeCommand>(m_view, std::move(*place),
                                                                     nullptr, m_host);
                   done = add->add(node);
                   command = std::move(add);
               }
               if (command) {
                   command->setName(commandName("Paste", *node));
                   refusal = command->refusal();
               } else {
                   refusal = {Refusal::Kind::Information, "Paste node", "Can not paste this node"};
               }
               return done ? std::move(command) : nullptr;
           });
}

bool TreeEditor::addReference(SoTreeViewItem* row, SoTreeViewItem* target, bool spaceHeld)
{
    return run("Add node", {row, target}, [&](Refusal& refusal) {
        MovePlan plan = planReference(row, target, spaceHeld);
        std::unique_ptr<SoTreeAddNodeCommand> command;
        if (!plan.isPossible()) {
            refusal = refusalFor("Add node", "Can not add this node", plan.refusal);
            if (plan.isIdle)
                refusal.kind = Refusal::Kind::Silent;
            return command;
        }
        command = std::make_unique<SoTreeAddNodeCommand>(m_view.data(), std::move(*plan.slot),
                                                         plan.holderRow, m_host);
        const bool added = command->add(row->getNode());
        refusal = command->refusal();
        return added ? std::move(command) : nullptr;
    });
}

bool TreeEditor::runMove(SoTreeViewItem* row, SoTreeViewItem* target,
                         const std::function<MovePlan()>& plan)
{
    return run("Mirabo Move Node", {row, target}, [&](Refusal& refusal) {
        auto command = std::make_unique<SoTreeMoveNodeCommand>(row, plan(), m_host);
        const bool moved = command->execute();
        refusal = command->refusal();
        return moved ? std::move(command) : nullptr;
    });
}

bool TreeEditor::moveRow(SoTreeViewItem* row, SoTreeViewItem* target, bool spaceHeld)
{
    return runMove(row, target, [&] { return planMove(row, target, spaceHeld); });
}

bool TreeEditor::stepCurrent(MoveStep step)
{
    SoTreeViewItem* row = current();
    return runMove(row, row, [&] { return planStep(row, step); });
}

bool TreeEditor::canStepCurrent(MoveStep step) const
{
    SoTreeViewItem* row = current();
    const GraphReading graph;
    return graph && isUsable(row) && planStep(row, step).isPossible();
}

} // namespace mirabo
