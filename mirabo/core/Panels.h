#pragma once

#include <QString>
#include <QStringList>

class QTreeWidgetItem;
class SoNode;
class SoPath;

/// What the command hub asks of the panels; each panel implements its interface. The panels talk
/// back by signals only, connected by the launch code.
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
    virtual void showReferencesOfCurrent() = 0;
    virtual void hideReferences() = 0;
    virtual void nextReference() = 0;
    virtual void previousReference() = 0;
    /// The texts of a node's rows are painted anew.
    virtual void nodeTextChanged(const SoNode* node) = 0;

protected:
    ~SceneTree() = default;
};

/// Node overview tabs and field watch.
class NodePanels {
public:
    virtual void showNode(SoNode* node, SoNode* kit, bool newTab) = 0;
    /// Node of the current tab, or null.
    virtual SoNode* getNode() const = 0;
    virtual void clear() = 0;
    /// The scene below the shown nodes changed in a way that their rows do not follow by
    /// themselves.
    virtual void refresh() = 0;
    virtual void saveColumnWidths() = 0;

protected:
    ~NodePanels() = default;
};

} // namespace mirabo
