#pragma once

#include "mirabo/core/KeptNode.h"
#include "mirabo/extender/MrbCommand.h"
#include "mirabo/tree/NodeSlot.h"
#include "mirabo/tree/RowState.h"

#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class SoMiraboTreeView;

namespace mirabo {

/// Why an edit was not made, as the user is told.
struct Refusal {
    enum class Kind { Silent, Information, Warning };
    Kind kind = Kind::Silent;
    QString title;
    QString text;
};

/// A warning with a sentence that tells the reason, which is plain text.
Refusal refusalFor(const QString& title, const QString& html, const QString& reason);

/// Functions of the tool outside of the graph and the tree. Shared, since commands outlive the
/// window; what is empty by then is left out.
struct TreeEditHost {
    /// Shows a refusal, after the present call: boxes run an event loop.
    std::function<void(const Refusal&)> tell;
    /// Makes a node the root of the scene (null: none), keeping the undo stack.
    std::function<void(SoNode*)> setRoot;
};

/// Base of the tree's edit commands.
///
/// The graph and the tree have two states, before and behind the edit. Going from one to the other
/// the command notes down which row was current and what was open in the branches that go, and
/// finds it again when it comes back. The rows themselves follow the graph, in VRML97 worlds as
/// well: the topology manager patches them inside the edit.
///
/// Nodes are kept without showing in their reference counts (KeptNode). When one has died all the
/// same, or the graph refuses, undo and redo change nothing, and the command stays in the state
/// that it is in.
class TreeEditCommand : public MrbCommand {
public:
    /// Makes the edit unless that has been done by the constructor, or by whoever made the command
    /// and wanted to know whether it can be pushed.
    bool execute() final;
    void undo() final;
    void redo() final;

    bool isDone() const { return m_isDone; }
    /// For commands that are made without knowing who runs them.
    void setHost(std::shared_ptr<const TreeEditHost> host) { m_host = std::move(host); }
    /// Why the last edit was not made.
    const Refusal& refusal() const { return m_refusal; }

protected:
    TreeEditCommand(SoMiraboTreeView* view, std::shared_ptr<const TreeEditHost> host);
    explicit TreeEditCommand(SoMiraboTreeView* view);

    /// Edits the graph, under the write lock, with all nodes that matter held. False, with a
    /// refusal and the graph as it was, when that cannot be done.
    virtual bool apply() = 0;
    virtual bool revert() = 0;
    /// Calls `visit` for each of the command's nodes.
    virtual void visitNodes(const std::function<void(KeptNode&)>& visit) = 0;
    /// The places that are emptied by apply() and by revert().
    virtual std::vector<const NodeSlot*> left() const { return {}; }
    virtual std::vector<const NodeSlot*> entered() const { return {}; }
    /// Notes down what the edit will take away of the rows: by default what stands in those places.
    virtual void noteRows(TreeState& state, bool forward) const;
    /// The row to become current after the first execution, and what else is to be done with the
    /// new rows; null: the current row stays.
    virtual SoTreeViewItem* arrived(SoMiraboTreeView&) { return nullptr; }

    SoMiraboTreeView* view() const { return m_view; }
    const TreeEditHost& host() const { return *m_host; }
    bool refuse(Refusal refusal)
    {
        m_refusal = std::move(refusal);
        return false;
    }
    /// For commands that make their edit in several steps: one more step towards done.
    bool runAgain();
    /// Returns the toolkit's reason for a refusal, or a general one.
    QString reason() const;
    void setRoot(SoNode* root) const;
    /// The row of a place below that row, or below the first of its holder's.
    static SoTreeViewItem* rowOf(const SoMiraboTreeView& view, const NodeSlot& slot,
                                 const SoTreeViewItem* holderRow);

private:
    bool go(bool forward);
    bool editGraph(bool forward);
    void enter(const TreeState& state);
    virtual const char* boxTitle() const = 0;

    QPointer<SoMiraboTreeView> m_view;
    std::shared_ptr<const TreeEditHost> m_host;
    TreeState m_before;
    TreeState m_behind;
    Refusal m_refusal;
    QStringList m_posted; ///< by the toolkit, during the last edit
    bool m_isDone = false;
};

} // namespace mirabo
