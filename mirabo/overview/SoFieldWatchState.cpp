#include "mirabo/overview/SoFieldWatchState.h"

#include "mirabo/core/Modal.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/overview/SoFieldWatch.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QMenu>

SoFieldWatchState::SoFieldWatchState(SoFieldWatch* watch, QAction* deleteAction,
                                     SoCommandManager* hub)
    : SoMiraboState(watch), m_watch(watch), m_delete(deleteAction), m_hub(hub)
{
}

SoFieldWatchState::~SoFieldWatchState() = default;

void SoFieldWatchState::enter()
{
    if (!m_delete || !m_hub)
        return;
    connect(m_delete, &QAction::triggered, m_hub, &SoCommandManager::deleteFieldWatch);
    connect(m_watch, &QTreeWidget::currentItemChanged, this,
            &SoFieldWatchState::updateItemFieldWatchAction);
    connect(m_watch, &SoFieldWatch::listCleared, this, &SoFieldWatchState::listClearedSlot);
    updateItemFieldWatchAction(m_watch->currentItem(), nullptr);
}

void SoFieldWatchState::leave()
{
    m_watch->disconnect(this);
    if (!m_delete || !m_hub)
        return;
    disconnect(m_delete, &QAction::triggered, m_hub, &SoCommandManager::deleteFieldWatch);
    m_delete->setEnabled(false);
}

void SoFieldWatchState::updateItemFieldWatchAction(QTreeWidgetItem* current, QTreeWidgetItem*)
{
    if (m_delete)
        m_delete->setEnabled(current);
}

void SoFieldWatchState::listClearedSlot()
{
    updateItemFieldWatchAction(nullptr, nullptr);
}

void SoFieldWatchState::contextMenu(QContextMenuEvent* event)
{
    event->accept();
    if (!m_hub || !m_watch->itemAt(event->pos()))
        return;
    mirabo::Modal<QMenu> menu(m_watch);
    connect(menu->addAction(tr("&Delete")), &QAction::triggered, m_hub,
            &SoCommandManager::deleteFieldWatch);
    menu.run(event->globalPos());
}
