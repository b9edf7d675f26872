#include "mirabo/overview/SoFieldWatch.h"

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>

#include <QHeaderView>
#include <QKeyEvent>

SoFieldWatch::SoFieldWatch(QWidget* parent) : SoMiraboList(parent)
{
    setObjectName("SoFieldWatch");
    setAccessibleName("Watched fields");
    setEmptyHint(tr("Select a field in the node overview and press \"Watch\" to keep it in view."));
    for (int i = 0; i + 1 < columnCount(); ++i) {
        const int width = mirabo::readListColumnWidth(mirabo::kFieldWatchGroup, i);
        if (width == -1)
            continue;
        header()->setSectionResizeMode(i + 1, QHeaderView::Interactive);
        setColumnWidth(i + 1, width);
    }
    connect(this, &QTreeWidget::itemSelectionChanged, this, &SoFieldWatch::fieldSelectionChanged);
    connect(this, &QTreeWidget::itemDoubleClicked, this, &SoFieldWatch::revealRequested);
    initPreferences();
}

SoFieldItem* SoFieldWatch::addField(const SoFieldItem& row)
{
    const SoField* field = row.getField();
    if (!field || findFieldItem(field))
        return nullptr;
    if (field->isOfType(SoSFNode::getClassTypeId()) || field->isOfType(SoMFNode::getClassTypeId()))
        return nullptr; // nodes are looked at in the overview
    auto* added = new SoFieldItem(this, row);
    added->updateValue();
    return added;
}

void SoFieldWatch::fieldSelectionChanged()
{
    if (currentItem())
        Q_EMIT rowChosen(currentItem());
}

void SoFieldWatch::deleteCurrent()
{
    QTreeWidgetItem* row = currentItem();
    if (!row)
        return;
    removeFieldItem(row);
    delete row;
    if (topLevelItemCount() == 0)
        Q_EMIT listCleared();
}

void SoFieldWatch::initPreferences()
{
    setPreferences();
}

void SoFieldWatch::setPreferences()
{
    mirabo::StyleTable styles = mirabo::defaultFieldStyles();
    mirabo::readStyles(mirabo::kFieldWatchGroup, styles);
    setStyles(styles);
}

void SoFieldWatch::saveColumnWidths()
{
    for (int i = 0; i + 1 < columnCount(); ++i)
        mirabo::writeListColumnWidth(mirabo::kFieldWatchGroup, i, columnWidth(i + 1));
}

void SoFieldWatch::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Delete)
        deleteCurrent();
    SoMiraboList::keyReleaseEvent(event);
}
