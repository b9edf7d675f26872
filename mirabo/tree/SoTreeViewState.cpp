#include "mirabo/tree/SoTreeViewState.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboStateManager.h"
#include "mirabo/tree/SoMiraboTreeView.h"

#include <QContextMenuEvent>

using mirabo::ActionId;

SoTreeViewState::SoTreeViewState(SoMiraboTreeView* tree, SoCommandManager* hub)
    : SoMiraboState(tree), m_tree(tree), m_hub(hub)
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
    if (!m_hub)
        return;
    m_hub->actions().add(
        ActionId::Delete, this,
        {[hub = m_hub] { hub->treeDeleteNode(); },
         [hub = m_hub] { return hub->actions().isPossible(ActionId::DeleteNode); }});
    connect(m_tree, &QTreeWidget::currentItemChanged, this,
            &SoTreeViewState::updateItemTreeViewAction);
}

void SoTreeViewState::leave()
{
    disconnect(m_tree, &QTreeWidget::currentItemChanged, this, nullptr);
    if (m_hub)
        m_hub->actions().withdraw(ActionId::Delete, this);
}

void SoTreeViewState::updateItemTreeViewAction(QTreeWidgetItem*, QTreeWidgetItem*)
{
    if (m_hub)
        m_hub->actions().update(ActionId::Delete);
}

void SoTreeViewState::contextMenu(QContextMenuEvent* event)
{
    m_tree->onCustomContextMenu(event->pos());
    event->accept();
}
