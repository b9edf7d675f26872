#pragma once

#include "mirabo/core/Panels.h"
#include "mirabo/core/UndoStack.h"

#include <QObject>

class MrbCommand;
class QTreeWidgetItem;
class SoFieldContainer;
class SoField;
class SoMiraboMainFrame;
class SoNode;

/// The hub: every menu action and most requests of the panels end in one of its slots. It does
/// little itself; it asks the document, the tree and the panels, and keeps the undo stack.
class SoCommandManager final : public QObject {
    Q_OBJECT

public:
    SoCommandManager();
    ~SoCommandManager() override;

    /// Once per start, when the window and the panels exist. None of them is owned.
    void setUp(SoMiraboMainFrame* frame, mirabo::SceneDocument* document, mirabo::SceneTree* tree,
               mirabo::NodePanels* panels);
    /// The panels are about to go; requests do nothing from now on.
    void release();

    const mirabo::UndoStack& undoStack() const { return m_undo; }
    /// A command was pushed since the stack was cleared.
    bool isModified() const { return m_undo.isModified(); }

public Q_SLOTS:
    void reloadFile();
    void closeApp();
    void openFile();
    /// The sender is an action that holds the path as its data.
    void openFileRecent();
    void newFile();
    void closeFile();
    /// Draws the shown scene again.
    void refreshView();

    /// Executes a command and keeps it for undo. Returns what it returned.
    bool addCommand(MrbCommand* command);
    void undo();
    void redo();
    void clearUndoCommand();
    /// Somebody outside the tool changed the structure of the scene: what was done before it can
    /// no longer be undone. Ignored while one of our own commands is the cause.
    void outsideStructureChange();

    void nodeNameChanged(SoNode* node);
    /// The user's choice in the tree: shown in the overview, announced to extensions.
    void treeNodeChosen(SoNode* node, SoNode* kit, bool newTab);
    /// An extension's choice: shown in tree and overview.
    void selectedNodeChanged(SoFieldContainer* node);
    void fieldSelected(SoField* field);
    void setNodeOverview();
    void nodeSetOverride(bool on);
    void expandAll();
    void showAllReferences();
    void removeAllReferences();
    void nextReference();
    void previousReference();
    void refreshOverview();

    void launchAboutMiraboFrame();
    void launchMiraboHelpViewer();

Q_SIGNALS:
    /// An override command for the node that the overview shows is wanted.
    void overrideCommandRequested(bool on);

private:
    void announce(SoNode* node);

    mirabo::UndoStack m_undo;
    SoMiraboMainFrame* m_frame = nullptr;
    mirabo::SceneDocument* m_document = nullptr;
    mirabo::SceneTree* m_tree = nullptr;
    mirabo::NodePanels* m_panels = nullptr;
    bool m_announcing = false; ///< the services repeat what we told them ourselves
};
