#include "mirabo/overview/SoNodeOverviewList.h"

#include "mirabo/overview/FieldText.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/core/SoField.h>

#include <QContextMenuEvent>
#include <QMenu>

SoNodeOverviewList::SoNodeOverviewList(QWidget* parent) : SoMiraboList(parent)
{
    setObjectName("m_nodeOverviewList");
    setEmptyHint(tr("Select a node in the tree to see its fields."));
    restoreColumnWidths(mirabo::kNodeOverviewGroup);
}

void SoNodeOverviewList::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu;
    if (const SoFieldItem* item = currentFieldItem(); item && itemAt(event->pos()) == item) {
        connect(menu.addAction(tr("&Copy Value")), &QAction::triggered, this,
                &SoNodeOverviewList::copyCurrentValue);
        QAction* watch = menu.addAction(tr("&Watch"));
        watch->setEnabled(item->getField() && mirabo::isWatchable(*item->getField()));
        connect(watch, &QAction::triggered, this, &SoNodeOverviewList::watchRequested);
        QAction* ignore = menu.addAction(tr("&Set Ignored/Enable"));
        ignore->setEnabled(item->getField());
        connect(ignore, &QAction::triggered, this, &SoNodeOverviewList::ignoreRequested);
        menu.addSeparator();
    }
    QAction* parts = menu.addAction(tr("Show &Catalog Parts"));
    parts->setCheckable(true);
    parts->setChecked(isShowingCatalogParts());
    connect(parts, &QAction::triggered, this, &SoNodeOverviewList::catalogPartsRequested);
    menu.exec(event->globalPos());
}
