#include "mirabo/overview/SoFieldWatch.h"

#include "mirabo/core/Modal.h"
#include "mirabo/core/SoMiraboState.h"
#include "mirabo/core/SoMiraboStateManager.h"
#include "mirabo/extender/MrbFieldPresentation.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoFieldWatchState.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QScreen>

#include <algorithm>
#include <memory>
#include <utility>

SoFieldWatch::SoFieldWatch(QWidget* parent) : SoMiraboList(parent)
{
    setObjectName("SoFieldWatch");
    setAccessibleName("Watched fields");
    setEmptyHint(tr("Select a field in the node overview and press \"Watch\" to keep it in view."));
    setContextMenuPolicy(Qt::CustomContextMenu);
    applyStoredWidths();
    connect(this, &QTreeWidget::itemSelectionChanged, this, &SoFieldWatch::fieldSelectionChanged);
    connect(this, &QTreeWidget::itemDoubleClicked, this, &SoFieldWatch::revealRequested);
    connect(this, &QWidget::customContextMenuRequested, this, &SoFieldWatch::showContextMenu);
    connect(model(), &QAbstractItemModel::rowsInserted, this, &SoFieldWatch::countRows);
    connect(model(), &QAbstractItemModel::rowsRemoved, this, &SoFieldWatch::countRows);
    connect(model(), &QAbstractItemModel::modelReset, this, &SoFieldWatch::countRows);
    initPreferences();
}

SoFieldWatch::~SoFieldWatch()
{
    model()->disconnect(this);
}

void SoFieldWatch::applyStoredWidths()
{
    // Rows of many nodes say little without the node's name: unlike the overview's, its column is
    // open until the user closes it.
    restoreColumnWidths(mirabo::kFieldWatchGroup);
    if (!mirabo::hasListColumnWidth(mirabo::kFieldWatchGroup, NodeName - 1))
        openColumn(NodeName);
    m_widths = storedWidths();
}

std::vector<int> SoFieldWatch::storedWidths() const
{
    std::vector<int> widths;
    for (int column = 1; column < columnCount(); ++column)
        widths.push_back(storedWidth(column));
    return widths;
}

void SoFieldWatch::countRows()
{
    const bool has = topLevelItemCount() > 0;
    if (m_hadRows && !has)
        Q_EMIT listCleared();
    m_hadRows = has;
}

SoFieldItem* SoFieldWatch::addField(const SoFieldItem& row)
{
    const SoFieldItem::Look look(row);
    const SoField* field = look.field();
    if (!field || !MrbFieldPresentations::of(*field)->isWatchable(*field) || findFieldItem(field))
        return nullptr;
    auto* added = new SoFieldItem(this, row);
    labelRow(added);
    addTopLevelItem(added);
    return added;
}

SoFieldItem* SoFieldWatch::addField(SoNode* node, const QString& fieldName)
{
    const mirabo::GraphReading graph;
    if (!graph)
        return nullptr;
    const SoFieldData* data = node->getFieldData();
    const int index = data ? data->getIndex(SbName(fieldName.toUtf8().constData())) : -1;
    const std::unique_ptr<SoFieldItem> row(index < 0 ? nullptr : makeRow(node, index));
    return row ? addField(*row) : nullptr;
}

void SoFieldWatch::labelRow(SoFieldItem* row)
{
    const SoFieldItem::Look look(*row);
    const SoNode* node = look.node();
    if (node && node->getName().isEmpty())
        row->setText(NodeName, placeOf(node));
}

void SoFieldWatch::updateNodeName(const SoNode* node)
{
    const mirabo::GraphReading graph; // once for all rows
    for (int row = 0; row < topLevelItemCount(); ++row) {
        SoFieldItem* item = fieldItem(row);
        if (!item->getNode() || (node && item->getNode() != node))
            continue;
        item->updateNodeName();
        labelRow(item);
    }
}

void SoFieldWatch::updateNodeNames()
{
    updateNodeName(nullptr);
}

void SoFieldWatch::fieldSelectionChanged()
{
    const mirabo::RowKeeper::Scope announcing(keeper());
    Q_EMIT rowChosen(currentItem());
}

void SoFieldWatch::deleteCurrent()
{
    QTreeWidgetItem* row = currentItem();
    if (!row)
        return;
    removeFieldItem(row);
    if (keeper().isOpen())
        keeper().keep(row);
    else
        delete row;
}

void SoFieldWatch::setFieldWatchState(SoMiraboState* state)
{
    m_state = state;
    SoMiraboStateManager::registerState(SoFieldWatchState::kName, state);
    connect(this, &SoMiraboList::focused, state,
            [] { SoMiraboStateManager::setCurrentState(SoFieldWatchState::kName); });
}

void SoFieldWatch::showContextMenu(const QPoint& position)
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, viewport()->mapToGlobal(position));
    if (m_state) {
        m_state->contextMenu(&event);
        return;
    }
    if (!itemAt(position))
        return;
    mirabo::Modal<QMenu> menu(this);
    connect(menu->addAction(tr("&Delete")), &QAction::triggered, this,
            &SoFieldWatch::deleteCurrent);
    menu.run(event.globalPos());
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
    // The window cannot be smaller: it has to fit on the screen with what is above and below.
    setMinimumHeight(std::min(mirabo::readFieldWatchHeight(), screen()->size().height() / 2));
}

void SoFieldWatch::saveColumnWidths()
{
    const std::vector<int> before = std::exchange(m_widths, storedWidths());
    for (std::size_t i = 0; i < m_widths.size(); ++i) {
        const int column = static_cast<int>(i);
        // Keeps a width that another process may have written, unless it was changed here.
        const bool isKnown = i < before.size() && before[i] == m_widths[i];
        if (!isKnown || !mirabo::hasListColumnWidth(mirabo::kFieldWatchGroup, column))
            mirabo::writeListColumnWidth(mirabo::kFieldWatchGroup, column, m_widths[i]);
    }
}

void SoFieldWatch::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Delete)
        deleteCurrent();
    SoMiraboList::keyReleaseEvent(event);
}
