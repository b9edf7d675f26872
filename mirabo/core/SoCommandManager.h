#pragma once

#include "mirabo/core/ActionRegistry.h"
#include "mirabo/core/Panels.h"
#include "mirabo/core/UndoStack.h"

#include <QObject>

#include <functional>

class MrbCommand;
class SoFieldContainer;
class SoField;
class SoMiraboEdition;
class SoMiraboMainFrame;

/// Rows of the tree. They belong to it, and go with their nodes.
using SoTreeViewItemList = QList<SoTreeViewItem*>;

/// The hub: every menu action and most requests of the panels end in one of its slots. It does
/// little itself: its slots run what the owner of a capability registered in actions(), or ask the
/// document, the tree and the panels; and it keeps the undo stack.
class SoCommandManager final : public QObject {
    Q_OBJECT

public:
    /// Most rows that getItemOverviewList() tells of.
    static constexpr int kOverviewCount = 30;

    SoCommandManager();
    ~SoCommandManager() override;

    /// Once per start, when the window and the panels exist. None of them is owned.
    void setUp(SoMiraboMainFrame* frame, mirabo::SceneDocument* document, mirabo::SceneTree* tree,
               mirabo::NodePanels* panels);
    /// The handlers of all requests; the actions of the window follow it.
    mirabo::ActionRegistry& actions() { return m_actions; }
    /// Makes the command that switches the override flag of the node that the overview shows; null
    /// when there is none to switch.
    void setOverrideFactory(std::function<MrbCommand*(bool on)> factory);
    /// The panels are about to go; requests do nothing from now on.
    void release();

    const mirabo::UndoStack& undoStack() const { return m_undo; }
    mirabo::UndoStack& undoStack() { return m_undo; }
    /// Returns the name of a command on the stack for the user, 0 being the oldest.
    QString nameOfStep(int index) const;
    /// A command was pushed since the stack was cleared.
    bool isModified() const { return m_undo.isModified(); }
    /// For the handler of a save, before which the stack is cleared: whether the scene was modified
    /// then. When nothing is saved it still is.
    bool wasModifiedBeforeSave() const { return m_modifiedBeforeSave; }

    // The order of the virtual slots is part of the binary interface.
public Q_SLOTS:
    virtual void reloadFile();
    virtual void closeApp();
    virtual void printFile();
    virtual void printQt();
    virtual void openFile();
    /// The sender is an action that holds the path as its data.
    virtual void openFileRecent();
    virtual void newFile();
    virtual void saveFile();
    virtual void saveAsFile();
    virtual void closeFile();
    virtual void copy();
    virtual void paste();
    /// Draws the shown scene again.
    virtual void refreshView();
    virtual void setFieldWatch(SoFieldItem* row);
    /// The extensions that are active changed: their entries are shown anew.
    virtual void extensionsChanged();
    /// Switches the override flag of the node that the overview shows, undoably.
    virtual void nodeSetOverride(bool on);

public Q_SLOTS:
    /// Executes a command and keeps it for undo. Returns what it returned.
    bool addCommand(MrbCommand* command);
    void undo();
    void redo();
    /// Undoes or redoes until that many commands are executed; no further when the stack is cleared
    /// meanwhile.
    void goToCommand(int executed);
    void clearUndoCommand();
    /// Shows a line in the status bar for a while.
    void showStatus(const QString& text) const;
    /// Somebody outside the tool changed the structure of the scene: what was done before it can
    /// no longer be undone. Ignored while one of our own commands is the cause.
    void outsideStructureChange();
    void setScene(SoNode* root);

    void nodeNameChanged(SoNode* node);
    /// The user's choice in the tree: shown in the overview, announced to extensions.
    void treeNodeChosen(SoNode* node, SoNode* kit, bool newTab);
    /// An extension's choice: shown in tree and overview.
    void selectedNodeChanged(SoFieldContainer* node);
    void fieldSelected(SoField* field);
    /// Shows a row's node (null: the tree's current one), in the current tab or a new one.
    void setNodeOverview(SoTreeViewItem* item = nullptr, bool addTab = true);
    void closeNodeOverview(int index);
    void refreshOverview();
    /// Makes the field of a watched row the one that editors see; null: none.
    void setFieldEditorFromWatch(QTreeWidgetItem* row);
    /// Shows the node of a watched row in overview and tree.
    void setNodeOverviewFromWatch(QTreeWidgetItem* row);
    void deleteFieldWatch();
    /// The controller of overview and watch; null while there is no window.
    SoMiraboEdition* getNodeEdition() const;
    /// The rows of the nodes that the overview shows now, at most kOverviewCount, in the order of
    /// its tabs. Filled anew by each call; never null.
    SoTreeViewItemList* getItemOverviewList();
    void highlightNodeItem(const SoPath* path);

    void expandAll(QTreeWidgetItem* startItem = nullptr);
    void showAllReferences();
    void removeAllReferences();
    void nextReference();
    void previousReference();
    void ignoreEnable();

    void treeAddNode();
    void treeDeleteNode();
    /// While the space bar is held a moved node becomes a sibling of its target.
    void spaceBarPressed(bool held) { m_spaceHeld = held; }
    void treeMoveNode(SoTreeViewItem* itemToMove, SoTreeViewItem* itemInsertAfter);
    void saveSubSceneGraph();
    void cutNode();
    void copyNode() { copy(); }
    void pasteNode() { paste(); }

    void toggleBookmark();
    void nextBookmark();
    void previousBookmark();
    void clearBookmark();
    void showFindDialog();
    void find();
    void findNext();
    void findPrevious();
    void setFilter(int filter);

    void editPreferences();
    void launchAboutMiraboFrame();
    void launchMiraboHelpViewer();

Q_SIGNALS:
    /// The undo stack has changed; told once, in the next pass of the event loop.
    void historyChanged();
    void extensionsDescribed();
    /// The item's node is to move to the target; `asSibling`: behind it, with the space bar held.
    void moveRequested(SoTreeViewItem* item, SoTreeViewItem* target, bool asSibling);
    /// Rows of other categories are to be hidden; one bit for each category.
    void filterRequested(int mask);

private:
    void announce(SoNode* node);
    void registerOwnActions();
    void registerUndo();
    void stackChanged();
    void runSave(mirabo::ActionId id);

    mirabo::UndoStack m_undo;
    mirabo::ActionRegistry m_actions;
    SoMiraboMainFrame* m_frame = nullptr;
    mirabo::SceneDocument* m_document = nullptr;
    mirabo::SceneTree* m_tree = nullptr;
    mirabo::NodePanels* m_panels = nullptr;
    std::function<MrbCommand*(bool)> m_overrideFactory;
    SoTreeViewItemList m_overviewList;
    bool m_spaceHeld = false;
    bool m_modifiedBeforeSave = false;
    bool m_historyPending = false;
    bool m_announcing = false; ///< the services repeat what we told them ourselves
};
