#include "mirabo/overview/SoMiraboList.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/extender/private/Later.h"
#include "mirabo/overview/FieldDelegate.h"
#include "mirabo/overview/KitParts.h"
#include "mirabo/overview/RowEditor.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoHeaderView.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>

#include <QPointer>

#include <algorithm>
#include <iterator>
#include <utility>

using mirabo::PartKind;

namespace {

/// Values that move faster than the eye are not painted for every frame of the host.
constexpr qint64 kRepaintMs = 16;

constexpr int kRowHeight = 24; ///< in pixels; taller fonts make rows taller

constexpr char kStyleSheet[] = R"(
QTreeView { show-decoration-selected: 0; }
QTreeView::item { border: 0px; border-top-color: transparent; border-bottom-color: transparent; }
QTreeView::item:hover {
    background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #e7effd, stop: 1 #cbdaf1);
    color: black;
}
QTreeView::item:selected:active, QTreeView::branch:selected:active {
    background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #6ea1f1, stop: 1 #567dbc);
    color: white;
}
QTreeView::item:selected:!active, QTreeView::branch:selected:!active, QTreeView::branch:hover {
    background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #6b9be8, stop: 1 #577fbf);
    color: white;
}
QTreeView::branch:has-siblings:adjoins-item { border: 0px; }
QTreeView::branch:!has-children:!has-siblings { border: 0px; }
QTreeView::branch:closed:has-children { border: 0px; }
QTreeView::branch:open:has-children { border: 0px; }
)";

} // namespace

SoMiraboList::SoMiraboList(QWidget* parent)
    : QTreeWidget(parent),
      m_keeper(*this, [](QTreeWidgetItem* row) { delete row; }),
      m_rowEditor(new mirabo::RowEditor(this))
{
    setEditTriggers(NoEditTriggers); // the row editor has its own
    connect(m_rowEditor, &mirabo::RowEditor::message, this, &SoMiraboList::message);
    setStyles(mirabo::defaultFieldStyles());
    auto* header = new SoHeaderView(this);
    setHeader(header);
    connect(header, &SoHeaderView::rightClicked, this, &SoMiraboList::headerRightClicked);
    setStyleSheet(kStyleSheet);
    setUpColumns();

    setSelectionMode(SingleSelection);
    setDragDropMode(DragOnly); // a row dropped on the window is watched
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    header->setSectionsMovable(false);
    header->setMinimumSectionSize(0); // a column of width 0 counts as hidden
    header->setStretchLastSection(false);
    header->setTextElideMode(Qt::ElideRight);
    header->setSortIndicator(-1, Qt::AscendingOrder); // the order of the field data, until asked
    setSortingEnabled(true);
    setItemDelegate(new FieldDelegate(this));
    setAccessibleName("Fields");
    applyNaturalWidths();
    connect(this, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* row, QTreeWidgetItem* previous) {
                const mirabo::RowKeeper::Scope announcing(m_keeper);
                Q_EMIT currentRowChanged(row, previous);
            });
    connect(header, &QHeaderView::sectionResized, this,
            [this](int column, int, int width) { widthChosen(column, width); });
}

SoMiraboList::~SoMiraboList()
{
    m_nodes.clear();
    selectionModel()->blockSignals(true); // whoever listens is being destroyed as well
    clear();                              // while this still is the list that the rows know
}

SoNode* SoMiraboList::twinOf(const SoNode* node)
{
    SoRef<SoNode>& twin = m_referenceNodes[node->getTypeId().getIndex()];
    if (!twin)
        twin = SoNode::create(node->getTypeId());
    return twin.get();
}

void SoMiraboList::clearRows()
{
    m_keeper.rowsAboutToChange();
    m_nodes.clear(); // once for all rows
    if (!m_keeper.isOpen()) {
        clear();
        return;
    }
    selectionModel()->clear();
    while (topLevelItemCount() > 0)
        m_keeper.keep(takeRow(0));
}

SoFieldItem* SoMiraboList::takeRow(int row)
{
    auto* taken = static_cast<SoFieldItem*>(takeTopLevelItem(row));
    taken->leaveList();
    return taken;
}

void SoMiraboList::setNode(SoNode* node)
{
    const mirabo::GraphReading graph;
    clearRows();
    if (!node || !graph)
        return;
    setUpdatesEnabled(false);
    setSortingEnabled(false); // once at the end, not with every row
    addTopLevelItems(makeRows(node));
    for (int row = 0; row < topLevelItemCount(); ++row)
        if (fieldItem(row)->isPart() && !m_showCatalogParts)
            fieldItem(row)->setHidden(true);
    setSortingEnabled(true);
    setUpdatesEnabled(true);
}

QList<QTreeWidgetItem*> SoMiraboList::makeRows(SoNode* node)
{
    const SoFieldData* data = node->getFieldData();
    QList<QTreeWidgetItem*> rows;
    for (int i = 0; data && i < data->getNumFields(); ++i)
        if (SoFieldItem* row = makeRow(node, i)) // the list owns it
            rows << row;
    return rows;
}

SoFieldItem* SoMiraboList::makeRow(SoNode* node, int index)
{
    const SoFieldData* data = node->getFieldData();
    const auto type = data->getField(node, index)->getFieldType();
    const PartKind part = mirabo::partKind(node, data->getFieldName(index));
    const bool listed = part == PartKind::None
                            ? type != SoField::EVENT_IN && type != SoField::INTERNAL
                            : part == PartKind::Public;
    if (!listed)
        return nullptr;
    SoNode* twin = twinOf(node);
    // A node with fields of its own (an unknown node) has no twin to compare with.
    if (twin && twin->getFieldData() != data)
        twin = nullptr;
    return new SoFieldItem(this, node, twin, index, part == PartKind::Public);
}

SoFieldItem* SoMiraboList::fieldItem(int row) const
{
    return static_cast<SoFieldItem*>(topLevelItem(row));
}

SoFieldItem* SoMiraboList::currentFieldItem() const
{
    return static_cast<SoFieldItem*>(currentItem());
}

bool SoMiraboList::showsPlace(int row) const
{
    const SoFieldItem::Look look(*fieldItem(row));
    const SoNode* node = look.node();
    return !node || node->getName().isEmpty();
}

void SoMiraboList::lookAfter(SoFieldItem* item)
{
    SoNode* node = item->getNode();
    if (!node)
        return;
    std::unique_ptr<NodeRows>& entry = m_nodes[node];
    if (entry && !entry->follower.isFollowing()) {
        entry.reset(); // of a node that died in the same place
        mirabo::callLater(this, 0, [this] { takeDeaths(); });
    }
    if (!entry) {
        entry = std::make_unique<NodeRows>(this);
        // The node besides its fields: it tells with the next change what it did not tell before.
        entry->follower.follow(node, {.touched = [this] { noteChange(); },
                                      .dying =
                                          [rows = entry.get()] {
                                              const std::scoped_lock lock(rows->mutex);
                                              for (SoFieldItem* row : rows->rows)
                                                  row->forgetField(true);
                                          },
                                      .died = [this] { takeDeaths(); }});
    }
    const std::scoped_lock lock(entry->mutex);
    entry->rows.push_back(item);
}

SoRef<const SoRefCounter> SoMiraboList::hold(const SoNode* node) const
{
    const auto at = m_nodes.find(node);
    return at == m_nodes.end() ? SoRef<const SoRefCounter>() : at->second->follower.hold();
}

void SoMiraboList::forgetRow(SoFieldItem* item)
{
    // A dead row has no node any more.
    auto at = item->getNode() ? m_nodes.find(item->getNode()) : m_nodes.begin();
    const auto end = item->getNode() && at != m_nodes.end() ? std::next(at) : m_nodes.end();
    while (at != end) {
        bool isEmpty = false;
        {
            const std::scoped_lock lock(at->second->mutex);
            std::erase(at->second->rows, item);
            isEmpty = at->second->rows.empty();
        }
        at = isEmpty ? m_nodes.erase(at) : std::next(at);
    }
}

void SoMiraboList::takeDeaths()
{
    std::vector<const SoField*> fields;
    for (int row = 0; row < topLevelItemCount(); ++row)
        if (fieldItem(row)->isDeathNews())
            fields.push_back(fieldItem(row)->showDeath());
    std::erase_if(m_nodes, [](const auto& entry) { return !entry.second->follower.isFollowing(); });
    const QPointer<SoMiraboList> self(this);
    for (const SoField* field : fields)
        if (self)
            Q_EMIT fieldDied(field);
}

void SoMiraboList::updateFieldValue(SoFieldItem* item)
{
    item->updateValue();
}

void SoMiraboList::updateField(SoField* field)
{
    for (int row = 0; row < topLevelItemCount(); ++row) {
        SoFieldItem* item = fieldItem(row);
        if (field && item->getField() != field)
            continue;
        item->updateEnabled();
        rowChanged(item);
        if (field)
            return;
    }
}

void SoMiraboList::updateNodeName(const SoNode* node)
{
    const auto at = m_nodes.find(node);
    if (at == m_nodes.end())
        return;
    for (SoFieldItem* row : at->second->rows)
        row->updateNodeName();
}

SoFieldItem* SoMiraboList::findFieldItem(const SoField* field) const
{
    for (int row = 0; row < topLevelItemCount(); ++row)
        if (fieldItem(row)->getField() == field)
            return fieldItem(row);
    return nullptr;
}

SoFieldItem* SoMiraboList::firstEnabledItem() const
{
    for (int row = 0; row < topLevelItemCount(); ++row)
        if (!fieldItem(row)->isDisabled())
            return fieldItem(row);
    return nullptr;
}

void SoMiraboList::removeFieldItem(QTreeWidgetItem* item)
{
    const int row = indexOfTopLevelItem(item);
    if (row < 0)
        return;
    m_keeper.rowsAboutToChange();
    takeRow(row);
}

void SoMiraboList::rowChanged(SoFieldItem* item)
{
    item->invalidate();
    item->updateEnabled();
    if (m_showChangedOnly && item->isHidden() && isWanted(item))
        item->setHidden(false);
    repaintLater();
}

void SoMiraboList::noteChange()
{
    if (m_inView && !m_changeNoted.exchange(true))
        QMetaObject::invokeMethod(this, &SoMiraboList::takeChanges, Qt::QueuedConnection);
}

void SoMiraboList::takeChanges()
{
    const mirabo::GraphReading graph;
    if (!graph) {
        mirabo::callLater(this, mirabo::GraphReading::kRetryMilliseconds,
                          [this] { takeChanges(); });
        return;
    }
    m_changeNoted = false;
    for (int row = 0; row < topLevelItemCount(); ++row)
        rowChanged(fieldItem(row));
}

void SoMiraboList::repaintLater()
{
    if (m_repaintPending || !m_inView)
        return;
    m_repaintPending = true;
    const double since = 1000 * (SbTime::monotonic().getValue() - m_lastRepaint);
    const auto delay = static_cast<int>(std::clamp<double>(kRepaintMs - since, 0, kRepaintMs));
    mirabo::callLater(this, delay, [this] { repaintRows(); });
}

void SoMiraboList::repaintRows()
{
    m_repaintPending = false;
    m_lastRepaint = SbTime::monotonic().getValue();
    const mirabo::GraphReading graph;
    if (!graph) {
        repaintLater();
        return;
    }
    for (QModelIndex at = indexAt(QPoint(0, 0)); at.isValid(); at = indexBelow(at)) {
        const QRect cell = visualRect(at.siblingAtColumn(FieldValue));
        if (cell.top() > viewport()->height())
            break;
        const int change = fieldItem(at.row())->takeChange();
        if (change & SoFieldItem::Value)
            viewport()->update(cell);
        if (!(change & SoFieldItem::Flags))
            continue;
        for (const Column column : {Ignored, Connected})
            viewport()->update(visualRect(at.siblingAtColumn(column)));
    }
}

void SoMiraboList::setInView(bool on)
{
    if (m_inView.exchange(on) != on)
        mirabo::whenReadable(this, [this] { followFields(); });
}

void SoMiraboList::followFields()
{
    for (int row = 0; row < topLevelItemCount(); ++row) {
        SoFieldItem* item = fieldItem(row);
        item->setLive(m_inView);
        item->updateEnabled();
    }
}

bool SoMiraboList::isWanted(const SoFieldItem* item) const
{
    return (m_showCatalogParts || !item->isPart())
           && (!m_showChangedOnly || !item->isFieldDefault());
}

void SoMiraboList::setShowCatalogParts(bool on)
{
    m_showCatalogParts = on;
    const mirabo::GraphReading graph; // once for all rows
    for (int row = 0; row < topLevelItemCount(); ++row)
        if (SoFieldItem* item = fieldItem(row); item->isPart())
            item->setHidden(!isWanted(item));
}

void SoMiraboList::showChangedValues(bool on)
{
    m_showChangedOnly = on;
    const mirabo::GraphReading graph; // once for all rows
    for (int row = 0; row < topLevelItemCount(); ++row)
        if (SoFieldItem* item = fieldItem(row); item->isHidden() == isWanted(item))
            item->setHidden(!isWanted(item));
}

void SoMiraboList::setStyles(const mirabo::StyleTable& styles)
{
    m_defaultColor = styles["Default Value"].color;
    m_defaultFont = styles["Default Value"].font;
    m_changedColor = styles["Changed Value"].color;
    m_changedFont = styles["Changed Value"].font;
    const int height = mirabo::rowHeightFor(styles, kRowHeight);
    if (std::exchange(m_rowHeight, height) != height)
        scheduleDelayedItemsLayout();
    if (isVisible())
        viewport()->update();
}
