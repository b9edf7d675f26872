#pragma once

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/tree/RowState.h"
#include "mirabo/tree/TreeContext.h"

#include <QPointer>

#include <memory>

class SoField;
class SoMiraboTreeView;

/// What "Set Ignored/Enable" does, undoably.

/// Turns the ignore flag of a node's field around.
class SoTreeIgnoreFieldCommand final : public MrbCommand {
public:
    explicit SoTreeIgnoreFieldCommand(SoField* field);

    bool execute() override;
    void undo() override { execute(); }
    void redo() override { execute(); }

private:
    SoField* m_field;          // Not owned; its container keeps it.
    SoRef<SoNode> m_container; ///< null for a field that is none of a node
};

/// Takes a node out of the graph, leaving its rows grey, or puts it back.
class SoTreeDisableNodeCommand final : public MrbCommand {
public:
    SoTreeDisableNodeCommand(SoMiraboTreeView* view, SoNode* node, bool disable);

    /// False when the node has no place that it can be taken out of or put back to.
    bool execute() override { return apply(m_disable); }
    void undo() override { apply(!m_disable); }
    void redo() override { apply(m_disable); }

private:
    bool apply(bool disable);

    QPointer<SoMiraboTreeView> m_view;
    SoRef<SoNode> m_node;
    std::shared_ptr<const mirabo::SavedLinks> m_saved; ///< null: it never was out
    mirabo::SavedLinks m_put;                          ///< where enabling has put it
    bool m_disable;
    mirabo::TreeState m_whileEnabled;
    mirabo::TreeState m_whileDisabled;
};
