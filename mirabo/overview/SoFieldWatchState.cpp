#include "mirabo/overview/SoFieldWatchState.h"

#include "mirabo/core/Modal.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/overview/SoFieldWatch.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QMenu>

using mirabo::ActionId;

SoFieldWatchState::SoFieldWatchState(SoFieldWatch* watch, SoCommandManager* hub)
    : SoMiraboState(watch), m_watch(watch), m_hub(hub)
{
}

SoFieldWatchState::~SoFieldWatchState() = default;

void SoFieldWatchState::enter()
{
    if (!m_hub)
        return;
    m_hub->actions().add(ActionId::Delete, this,
                         {[hub = m_hub] { hub->deleteFieldWatch(); },
                          [watch = m_watch] { return watch->currentItem() != nullptr; }});
    connect(m_watch, &QTreeWidget::currentItemChanged, this,
            &SoFieldWatchState::updateItemFieldWatchAction);
    connect(m_watch, &SoFieldWatch::listCleared, this, &SoFieldWatchState::listClearedSlot);
}

void SoFieldWatchState::leave()
{
    // Not the signal that enters it again.
    disconnect(m_watch, &QTreeWidget::currentItemChanged, this, nullptr);
    disconnect(m_watch, &SoFieldWatch::listCleared, this, nullptr);
    if (m_hub)
        m_hub->actions().withdraw(ActionId::Delete, this);
}

void SoFieldWatchState::updateItemFieldWatchAction(QTreeWidgetItem*, QTreeWidgetItem*)
{
    if (m_hub)
        m_hub->actions().update(ActionId::Delete);
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
