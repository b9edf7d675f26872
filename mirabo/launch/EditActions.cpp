#include "mirabo/launch/EditActions.h"

#include "mirabo/core/Messages.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/MrbCommand.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeEditCommand.h"
#include "mirabo/tree/TreeEditor.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <QPointer>
#include <QStatusBar>

namespace mirabo {

namespace {

void showBox(QWidget* parent, const Refusal& refusal)
{
    if (refusal.kind == Refusal::Kind::Information)
        showInformation(parent, refusal.title, refusal.text);
    else
        showWarning(parent, refusal.title, refusal.text);
}

} // namespace

EditActions::EditActions(SoMiraboMainFrame* frame, SoMiraboTreeView* tree, SoCommandManager* hub)
    : m_owner(hub->undoStack(), [hub](MrbCommand* command) { return hub->addCommand(command); })
{
    const QPointer<QWidget> parent(frame);
    m_editor = new TreeEditor(tree, {hub->undoStack(), m_owner,
                                     [parent](const Refusal& refusal) { showBox(parent, refusal); },
                                     [](SoNode* root) {
                                         // Not another scene: what was done before can still be
                                         // undone.
                                         SoMiraboViewer::instance()->setScene(root, false);
                                     }});
    connectTree(tree);
    connectHub(tree, hub);
    connect(tree, &SoMiraboTreeView::statusHint, frame, [frame](const QString& hint) {
        if (hint.isEmpty())
            frame->statusBar()->clearMessage();
        else
            frame->statusBar()->showMessage(hint);
    });
}

EditActions::~EditActions()
{
    delete m_editor; // the tree's, but it uses what is ours
}

void EditActions::connectTree(SoMiraboTreeView* tree)
{
    connect(tree, &SoMiraboTreeView::commandReady, m_editor,
            [editor = m_editor](MrbCommand* command) {
                editor->push(std::unique_ptr<MrbCommand>(command));
            });
    connect(tree, &SoMiraboTreeView::deleteRequested, m_editor, &TreeEditor::deleteCurrent);
    connect(tree, &SoMiraboTreeView::moveRequested, m_editor, &TreeEditor::moveRow);
    connect(tree, &SoMiraboTreeView::referenceRequested, m_editor, &TreeEditor::addReference);
    connect(tree, &SoMiraboTreeView::stepRequested, m_editor, &TreeEditor::stepCurrent);
}

void EditActions::connectHub(SoMiraboTreeView* tree, SoCommandManager* hub)
{
    hub->actions().add(ActionId::DeleteNode, m_editor,
                       {[editor = m_editor] { editor->deleteCurrent(); },
                        [editor = m_editor] { return editor->canDeleteCurrent(); }});
    connect(hub, &SoCommandManager::moveRequested, m_editor, &TreeEditor::moveRow);
    connect(tree, &QTreeWidget::currentItemChanged, hub,
            [hub] { hub->actions().update(ActionId::DeleteNode); });
}

} // namespace mirabo
