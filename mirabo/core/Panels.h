#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class QTreeWidgetItem;
class SoFieldItem;
class SoMiraboEdition;
class SoNode;
class SoPath;
class SoTreeViewItem;

/// Interfaces of the panels for the command hub; each panel implements its interface. The panels
/// talk back by signals only, connected by the launch code.
namespace mirabo {

/// The document: the inspected scene and the file that it came from.
class SceneDocument {
public:
    /// Makes `root` the scene (null: none); clears the undo stack when asked to.
    virtual void setScene(SoNode* root, bool resetCommands) = 0;
    virtual SoNode* getScene() const = 0;
    /// Reads a file and makes it the document. False, with a message shown and the old scene kept,
    /// when it cannot be read.
    virtual bool openSceneFile(const QString& fileName) = 0;
    /// Replaces the scene by an empty one; false when the user cancelled.
    virtual bool closeScene() = 0;
    virtual void reopenRecentFile(int index) = 0;
    /// Whether the scene came from a file that can be read again.
    virtual bool canReload() const = 0;
    /// Outlines the object at the end of a path in the viewer; null for none.
    virtual void highlight(const SoPath* path) = 0;
    virtual void saveWindowSettings() = 0;
    virtual void refresh() = 0;

protected:
    ~SceneDocument() = default;
};

/// The tree of the scene.
class SceneTree {
public:
    /// Node of the current row, and the node kit that it is a part of; null when there is none.
    virtual SoNode* getCurrentNode() const = 0;
    virtual SoNode* getCurrentKit() const = 0;
    /// Makes the first row of a node current and scrolls to it; false when it has none.
    virtual bool revealNode(const SoNode* node) = 0;
    virtual void expandBelow(QTreeWidgetItem* startItem) = 0;
    /// The texts of a node's rows are painted anew.
    virtual void nodeTextChanged(const SoNode* node) = 0;

protected:
    ~SceneTree() = default;
};

/// Node overview tabs and field watch.
class NodePanels {
public:
    virtual void showNode(SoNode* node, SoNode* kit, bool newTab) = 0;
    /// The same for the node of a row of the tree.
    virtual void showRow(SoTreeViewItem* row, bool newTab) = 0;
    /// Node of the current tab, or null.
    virtual SoNode* getNode() const = 0;
    virtual void clear() = 0;
    /// The scene below the shown nodes changed in a way that their rows do not follow by
    /// themselves.
    virtual void refresh() = 0;
    virtual void saveColumnWidths() = 0;
    virtual void closeOverview(int index) = 0;
    /// Watches the selected field of the current tab.
    virtual void watchSelectedField() = 0;
    /// Watches the field of a row that was dragged or given by an extension.
    virtual void watchField(SoFieldItem* row) = 0;
    virtual void deleteWatchedField() = 0;
    /// Makes the field of a watched row the selected one; null: none.
    virtual void selectWatchedField(QTreeWidgetItem* row) = 0;
    /// Shows the node of a watched row in overview and tree.
    virtual void showWatchedNode(QTreeWidgetItem* row) = 0;
    /// The first row in the tree of each node that a tab shows, in the order of the tabs.
    virtual QList<SoTreeViewItem*> shownRows() const = 0;
    virtual SoMiraboEdition* edition() const = 0;

protected:
    ~NodePanels() = default;
};

} // namespace mirabo
