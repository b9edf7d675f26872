#pragma once

#include "mirabo/core/SoMiraboState.h"

#include <QPointer>

class QTreeWidgetItem;
class SoCommandManager;
class SoMiraboTreeView;

/// The user works in the tree: "&Delete" takes the current node out of the graph. Entered when the
/// tree gets the focus.
class SoTreeViewState final : public SoMiraboState {
    Q_OBJECT

public:
    static constexpr char kName[] = "TreeViewState";

    /// Registers itself. The tree owns it.
    SoTreeViewState(SoMiraboTreeView* tree, SoCommandManager* hub);
    ~SoTreeViewState() override;

    void enter() override;
    void leave() override;
    void contextMenu(QContextMenuEvent* event) override;

public Q_SLOTS:
    void updateItemTreeViewAction(QTreeWidgetItem* current, QTreeWidgetItem* previous);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    SoMiraboTreeView* m_tree; // Not owned; it owns us.
    QPointer<SoCommandManager> m_hub;
};
