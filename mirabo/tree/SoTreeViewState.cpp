#include "mirabo/tree/SoTreeViewState.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboStateManager.h"
#include "mirabo/tree/SoMiraboTreeView.h"

#include <QAction>
#include <QContextMenuEvent>

SoTreeViewState::SoTreeViewState(SoMiraboTreeView* tree, QAction* deleteAction,
                                 SoCommandManager* hub)
    : SoMiraboState(tree), m_tree(tree), m_delete(deleteAction), m_hub(hub)
{
    SoMiraboStateManager::registerState(kName, this);
    tree->installEventFilter(this);
}

SoTreeViewState::~SoTreeViewState() = default;

bool SoTreeViewState::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::FocusIn)
        SoMiraboStateManager::setCurrentState(kName);
    return false;
}

void SoTreeViewState::enter()
{
    if (!m_delete || !m_hub)
        return;
    connect(m_delete, &QAction::triggered, m_hub, &SoCommandManager::treeDeleteNode);
    connect(m_tree, &QTreeWidget::currentItemChanged, this,
            &SoTreeViewState::updateItemTreeViewAction);
    updateItemTreeViewAction(m_tree->currentItem(), nullptr);
}

void SoTreeViewState::leave()
{
    m_tree->disconnect(this);
    if (!m_delete || !m_hub)
        return;
    disconnect(m_delete, &QAction::triggered, m_hub, &SoCommandManager::treeDeleteNode);
    m_delete->setEnabled(false);
}

void SoTreeViewState::updateItemTreeViewAction(QTreeWidgetItem* current, QTreeWidgetItem*)
{
    // The scene's root hangs on nothing that it could be taken from.
    if (m_delete && m_hub)
        m_delete->setEnabled(current && m_hub->actions().isPossible(mirabo::ActionId::DeleteNode));
}

void SoTreeViewState::contextMenu(QContextMenuEvent* event)
{
    m_tree->onCustomContextMenu(event->pos());
    event->accept();
}
