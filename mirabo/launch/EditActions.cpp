#include "mirabo/launch/EditActions.h"

#include "mirabo/core/Messages.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/MrbCommand.h"
#include "mirabo/tree/NodeAdding.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeEditCommand.h"
#include "mirabo/tree/TreeEditor.h"
#include "mirabo/viewer/SceneClipboard.h"
#include "mirabo/viewer/SceneText.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QStatusBar>

namespace mirabo {

namespace {

constexpr char kClipboardTitle[] = "Mirabo Insert Clipboard";
constexpr int kMessageMs = 5000; // how long a message stays in the status bar

/// Null when the viewer would have it selected, if anybody had chosen it.
SoNode* unselectableCurrent(const SoMiraboTreeView& tree)
{
    const auto* row = static_cast<const SoTreeViewItem*>(tree.currentItem());
    if (!row || row->isDead())
        return nullptr;
    const bool isSelectable =
        !row->isFromField()
        && SoMiraboViewer::instance()->getHighlightMode() == SoMiraboViewer::OUTLINED;
    return isSelectable ? nullptr : row->getNode();
}

} // namespace

EditActions::EditActions(SoMiraboMainFrame* frame, SoMiraboTreeView* tree, SoCommandManager* hub)
    : m_frame(frame),
      m_owner(hub->undoStack(), [hub](MrbCommand* command) { return hub->addCommand(command); })
{
    m_editor = new TreeEditor(tree, {hub->undoStack(), m_owner,
                                     [this](const Refusal& refusal) { show(refusal); },
                                     [](SoNode* root) {
                                         // Not another scene: what was done before can still be
                                         // undone.
                                         SoMiraboViewer::instance()->setScene(root, false);
                                     }});
    m_adding =
        new NodeAdding(tree, frame, [editor = m_editor](SoNode* node, SoTreeViewItem* target) {
            return editor && editor->addNode(node, target);
        });
    connectTree(tree, hub);
    registerActions(tree, hub);
    registerClipboard(tree, hub);
    registerScene(tree, hub);
    connect(tree, &SoMiraboTreeView::statusHint, frame, [frame](const QString& hint) {
        if (hint.isEmpty())
            frame->statusBar()->clearMessage();
        else
            frame->statusBar()->showMessage(hint);
    });
}

EditActions::~EditActions()
{
    if (SoMiraboViewer::exists())
        SoMiraboViewer::instance()->setSceneEdits({});
    delete m_adding; // the tree's, as the editor is, but both use what is ours
    delete m_editor;
}

/// Last in what calls it: the tool may have ended when the box is closed.
void EditActions::show(const Refusal& refusal) const
{
    if (m_frame)
        m_frame->statusBar()->clearMessage(); // may tell of a step that was not made
    if (refusal.kind == Refusal::Kind::Information)
        showInformation(m_frame, refusal.title, refusal.text);
    else
        showWarning(m_frame, refusal.title, refusal.text);
}

void EditActions::connectTree(SoMiraboTreeView* tree, SoCommandManager* hub)
{
    connect(tree, &SoMiraboTreeView::commandReady, m_editor,
            [editor = m_editor](TreeEditCommand* command) {
                editor->run(std::unique_ptr<TreeEditCommand>(command));
            });
    connect(tree, &SoMiraboTreeView::deleteRequested, m_editor, &TreeEditor::deleteCurrent);
    connect(tree, &SoMiraboTreeView::moveRequested, m_editor, &TreeEditor::moveRow);
    connect(tree, &SoMiraboTreeView::referenceRequested, m_editor, &TreeEditor::addReference);
    connect(tree, &SoMiraboTreeView::stepRequested, m_editor, &TreeEditor::stepCurrent);
    connect(hub, &SoCommandManager::moveRequested, m_editor, &TreeEditor::moveRow);
}

void EditActions::registerActions(SoMiraboTreeView* tree, SoCommandManager* hub)
{
    ActionRegistry& actions = hub->actions();
    // The current row may be one that nothing can be done with, which the user is told then.
    const auto hasRow = [tree] { return tree->currentItem() != nullptr; };
    for (const ActionId id : {ActionId::AddNode, ActionId::Insert})
        actions.add(id, m_adding, {[adding = m_adding] { adding->open(); }, hasRow});
    actions.add(ActionId::DeleteNode, m_editor,
                {[editor = m_editor] { editor->deleteCurrent(); },
                 [editor = m_editor] { return editor->canDeleteCurrent(); }});
    connect(tree, &QTreeWidget::currentItemChanged, hub, [hub] { hub->actions().updateLater(); });
}

void EditActions::registerClipboard(SoMiraboTreeView* tree, SoCommandManager* hub)
{
    hub->actions().add(ActionId::InsertClipboard, this,
                       {[this] { insertClipboard(); },
                        [this, tree] { return m_clipboardHasText && tree->currentItem(); }});
    const auto look = [this, hub] {
        const QMimeData* data = QGuiApplication::clipboard()->mimeData();
        m_clipboardHasText = data && data->hasText();
        m_clipboardMayHoldPath = mayHoldPath(data);
        hub->actions().updateLater();
    };
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, look);
    look();
}

/// Cut, copy and paste of the selection, which follows the current row.
void EditActions::registerScene(SoMiraboTreeView* tree, SoCommandManager* hub)
{
    SoMiraboViewer* viewer = SoMiraboViewer::instance();
    const QPointer<TreeEditor> editor = m_editor;
    viewer->setSceneEdits(
        {[tree = QPointer(tree)]() -> SoNode* {
             return tree ? unselectableCurrent(*tree) : nullptr;
         },
         [tree = QPointer(tree), editor](const SoPath& path) {
             return tree && editor && editor->cutRow(tree->rowOfPath(path));
         },
         [editor](SoNode* node) { return editor && editor->pasteTopLevel(node); }});
    connect(viewer, &SoMiraboViewer::selectionChanged, hub,
            [hub] { hub->actions().updateLater(); });
    ActionRegistry& actions = hub->actions();
    actions.add(ActionId::Copy, this,
                {[viewer] { viewer->copySelection(); }, [viewer] { return viewer->canCopy(); }});
    actions.add(
        ActionId::Cut, this,
        {[viewer] { viewer->cutSelection(); },
         [viewer, editor] { return viewer->canCopy() && editor && editor->canDeleteCurrent(); }});
    actions.add(ActionId::Paste, this,
                {[this] { paste(); }, [this] { return m_clipboardMayHoldPath; }});
}

void EditActions::paste()
{
    if (!SoMiraboViewer::instance()->pasteClipboard() && m_frame)
        m_frame->statusBar()->showMessage(
            tr("The clipboard holds nothing that was copied from a scene."), kMessageMs);
}

void EditActions::insertClipboard()
{
    QString problem;
    const SoRef<SoNode> node = readSceneText(QGuiApplication::clipboard()->text(), problem);
    if (!node)
        show({Refusal::Kind::Warning, kClipboardTitle,
              "The text of the clipboard is no scene.<br>" + problem.toHtmlEscaped()});
    else if (m_editor)
        m_editor->addNode(node.get());
}

} // namespace mirabo
