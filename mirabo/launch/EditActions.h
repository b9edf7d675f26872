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
struct Refusal;

/// Lets the user edit the scene through the tree: what menus, keys and the mouse ask for becomes a
/// command of the tree's editor.
class EditActions final : public QObject {
    Q_OBJECT

public:
    /// None of them is owned. The hub, and with it the commands, outlives the window.
    EditActions(SoMiraboMainFrame* frame, SoMiraboTreeView* tree, SoCommandManager* hub);
    ~EditActions() override;

    TreeEditor* editor() const { return m_editor; }
    CommandOwner& owner() { return m_owner; }

private:
    void connectTree(SoMiraboTreeView* tree, SoCommandManager* hub);
    void registerActions(SoMiraboTreeView* tree, SoCommandManager* hub);
    void registerClipboard(SoMiraboTreeView* tree, SoCommandManager* hub);
    void registerScene(SoMiraboTreeView* tree, SoCommandManager* hub);
    void insertClipboard();
    void paste();
    void show(const Refusal& refusal) const;

    QPointer<SoMiraboMainFrame> m_frame; // Not owned; the shell's.
    CommandOwner m_owner;
    QPointer<TreeEditor> m_editor; // The tree's; goes with the first of both.
    QPointer<NodeAdding> m_adding; // The same.
    bool m_clipboardHasText = false;
    bool m_clipboardMayHoldPath = false;
};

} // namespace mirabo
