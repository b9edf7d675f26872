#pragma once

#include "mirabo/core/CommandOwner.h"
#include "mirabo/tree/TreeEditor.h"

#include <QObject>
#include <QPointer>

class SoCommandManager;
class SoMiraboMainFrame;
class SoMiraboTreeView;

namespace mirabo {

class NodeAdding;

/// Lets the user edit the scene through the tree: what menus, keys and the mouse ask for becomes a
/// command of the tree's editor.
class EditActions final : public QObject {
    Q_OBJECT

public:
    /// None of them is owned. The hub, and with it the commands, outlives the window.
    EditActions(SoMiraboMainFrame* frame, SoMiraboTreeView* tree, SoCommandManager* hub);
    ~EditActions() override;

    TreeEditor* editor() const { return m_editor; }
    NodeAdding* adding() const { return m_adding; }
    CommandOwner& owner() { return m_owner; }

private:
    void connectTree(SoMiraboTreeView* tree, SoCommandManager* hub);
    void registerActions(SoMiraboTreeView* tree, SoCommandManager* hub);

    CommandOwner m_owner;
    QPointer<TreeEditor> m_editor; // The tree's; goes with the first of both.
    QPointer<NodeAdding> m_adding; // The same.
};

} // namespace mirabo
