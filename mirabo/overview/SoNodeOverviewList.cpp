#include "mirabo/overview/SoNodeOverviewList.h"

#include "mirabo/core/Modal.h"
#include "mirabo/extender/MrbFieldPresentation.h"
#include "mirabo/overview/RowEditor.h"
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
    connect(this, &QTreeWidget::itemDoubleClicked, this, &SoNodeOverviewList::editCurrent);
}

void SoNodeOverviewList::addRowActions(QMenu* menu, const SoFieldItem& row)
{
    connect(menu->addAction(tr("&Copy Value")), &QAction::triggered, this,
            &SoNodeOverviewList::copyCurrentValue);
    const bool isLive = row.getField() != nullptr;
    const bool isEditable = isLive && !row.isDisabled();
    const auto addEdit = [&](const QString& text, bool isEnabled,
                             void (SoNodeOverviewList::*slot)()) {
        QAction* action = menu->addAction(text);
        action->setEnabled(isEnabled);
        connect(action, &QAction::triggered, this, slot);
    };
    addEdit(tr("&Paste Value"), isEditable && mirabo::RowEditor::canPaste(),
            &SoNodeOverviewList::pasteToCurrent);
    addEdit(tr("&Edit"), isEditable, &SoNodeOverviewList::editCurrent);
    addEdit(tr("&Reset to Default"), isLive && !row.isFieldDefault(),
            &SoNodeOverviewList::resetCurrent);
    menu->addSeparator();
    QAction* watch = menu->addAction(tr("&Watch"));
    watch->setEnabled(row.getField()
                      && MrbFieldPresentations::of(*row.getField())->isWatchable(*row.getField()));
    connect(watch, &QAction::triggered, this, &SoNodeOverviewList::watchRequested);
    QAction* ignore = menu->addAction(tr("&Set Ignored/Enable"));
    ignore->setEnabled(row.getField());
    connect(ignore, &QAction::triggered, this, &SoNodeOverviewList::ignoreRequested);
    menu->addSeparator();
}

void SoNodeOverviewList::contextMenuEvent(QContextMenuEvent* event)
{
    mirabo::Modal<QMenu> menu(this);
    const SoFieldItem* item = currentFieldItem();
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    if (item && (byKey || itemAt(event->pos()) == item))
        addRowActions(menu.get(), *item);
    QAction* parts = menu->addAction(tr("Show &Catalog Parts"));
    parts->setCheckable(true);
    parts->setChecked(isShowingCatalogParts());
    connect(parts, &QAction::triggered, this, &SoNodeOverviewList::catalogPartsRequested);
    addColumnActions(menu->addMenu(tr("C&olumns")));
    menu.run(byKey && item ? viewport()->mapToGlobal(visualItemRect(item).bottomLeft())
                           : event->globalPos());
}
