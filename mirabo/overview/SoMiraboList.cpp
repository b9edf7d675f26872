#include "mirabo/overview/SoMiraboList.h"

#include "mirabo/overview/FieldDelegate.h"
#include "mirabo/overview/KitParts.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoHeaderView.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QTimer>

#include <algorithm>
#include <array>

using mirabo::PartKind;

namespace {

/// Menu texts in the order of the columns from 1 on.
constexpr std::array kColumnTexts{"Ignore",     "Connected",  "Node Type",   "Node Name",
                                  "Field Type", "Field Name", "Field Value", "Node NetName"};
constexpr int kFirstListedColumn = 1;
constexpr int kReopenedIgnoreWidth = 20;
constexpr int kHeaderMargin = 10;
constexpr int kHintMargin = 12;
constexpr int kIconColumnWidth = 20;
constexpr int kCellMargin = 16;

/// What a column usually holds; a row's icons have fixed columns.
constexpr std::pair<SoMiraboList::Column, const char*> kSamples[] = {
    {SoMiraboList::NodeType, "PerspectiveCamera"},
    {SoMiraboList::NodeName, "Node name of usual length"},
    {SoMiraboList::FieldTypeColumn, "MFUniformShader"},
    {SoMiraboList::FieldName, "scaleOrientation M"},
    {SoMiraboList::FieldValue, "0.123456 0.123456 0.123456"},
};

constexpr char kStyleSheet[] = R"(
QTreeView { show-decoration-selected: 0; }
QTreeView::item { border: 0px; border-top-color: transparent; border-bottom-color: transparent; height: 24px; }
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

bool SoMiraboList::isNetNameMode()
{
    return SoPreferences::getBool("KMRU_LAUNCH_MIRABO", false)
           || SoPreferences::getBool("ART_LAUNCH_MIRABO", false);
}

SoMiraboList::SoMiraboList(QWidget* parent) : QTreeWidget(parent)
{
    setStyles(mirabo::defaultFieldStyles());
    auto* header = new SoHeaderView(this);
    setHeader(header);
    connect(header, &SoHeaderView::rightClicked, this, &SoMiraboList::headerRightClicked);
    setStyleSheet(kStyleSheet);
    setUpColumns();

    setSelectionMode(SingleSelection);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    header->setSectionsMovable(false);
    header->setMinimumSectionSize(0); // a column of width 0 counts as hidden
    header->setStretchLastSection(false);
    header->setSortIndicator(-1, Qt::AscendingOrder); // the order of the field data, until asked
    setSortingEnabled(true);
    setItemDelegate(new FieldDelegate(this));
    setAccessibleName("Fields");
    applyNaturalWidths();
    connect(header, &QHeaderView::sectionResized, this, [this](int column) {
        if (m_filling)
            return;
        if (column == FieldValue)
            m_valueFills = false; // somebody wants this width
        fillWidth();
    });
}

SoMiraboList::~SoMiraboList()
{
    m_nodes.clear();
    selectionModel()->blockSignals(true); // whoever listens is being destroyed as well
    clear();                              // while this still is the list that the rows know
}

void SoMiraboList::setUpColumns()
{
    QStringList labels{"",          "",           "",           "Node Type",
                       "Node Name", "Field Type", "Field Name", "Field Value"};
    if (isNetNameMode())
        labels << "Node NetName";
    setColumnCount(labels.size());
    setHeaderLabels(labels);
    setColumnHidden(Hidden, true);
    headerItem()->setIcon(Ignored, QIcon(":/Mirabo_icons/Icons/ignore.png"));
    headerItem()->setToolTip(Ignored, "This field is ignored");
    headerItem()->setIcon(Connected, QIcon(":/Mirabo_icons/Icons/connection.png"));
    headerItem()->setToolTip(Connected, "This field is connected");
}

void SoMiraboList::applyNaturalWidths()
{
    m_filling = true;
    const QFontMetrics metrics = fontMetrics();
    for (const Column column : {Ignored, Connected})
        QTreeWidget::setColumnWidth(column, kIconColumnWidth);
    for (const auto& [column, sample] : kSamples)
        QTreeWidget::setColumnWidth(column, metrics.horizontalAdvance(sample) + kCellMargin);
    m_filling = false;
}

void SoMiraboList::restoreColumnWidths(const QString& group)
{
    for (int i = 0; i + 1 < columnCount(); ++i) {
        const int width = mirabo::readListColumnWidth(group, i);
        if (width == -1)
            continue;
        header()->setSectionResizeMode(i + 1, QHeaderView::Interactive);
        setColumnWidth(i + 1, width);
    }
}

void SoMiraboList::fillWidth()
{
    if (!m_valueFills || m_filling || columnWidth(FieldValue) == 0)
        return;
    m_filling = true;
    int others = 0;
    for (int column = 1; column < columnCount(); ++column)
        if (column != FieldValue)
            others += columnWidth(column);
    const int least = fontMetrics().horizontalAdvance(kSamples[4].second) / 2;
    QTreeWidget::setColumnWidth(FieldValue, std::max(least, viewport()->width() - others));
    m_filling = false;
}

SoNode* SoMiraboList::twinOf(const SoNode* node)
{
    SoRef<SoNode>& twin = m_referenceNodes[node->getTypeId().getIndex()];
    if (!twin)
        twin = SoNode::create(node->getTypeId());
    return twin.get();
}

void SoMiraboList::setNode(SoNode* node)
{
    m_nodes.clear(); // once for all rows
    clear();
    if (!node)
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
    SoNode* twin = twinOf(node);
    const SoFieldData* data = node->getFieldData();
    // A node with fields of its own (an unknown node) has no twin to compare with.
    if (twin && twin->getFieldData() != data)
        twin = nullptr;
    QList<QTreeWidgetItem*> rows;
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const auto type = data->getField(node, i)->getFieldType();
        const PartKind part = mirabo::partKind(node, data->getFieldName(i));
        const bool listed = part == PartKind::None
                                ? type != SoField::EVENT_IN && type != SoField::INTERNAL
                                : part == PartKind::Public;
        if (listed) // the list owns the row
            rows << new SoFieldItem(this, node, twin, i, part == PartKind::Public);
    }
    return rows;
}

SoFieldItem* SoMiraboList::fieldItem(int row) const
{
    return static_cast<SoFieldItem*>(topLevelItem(row));
}

SoFieldItem* SoMiraboList::currentFieldItem() const
{
    return static_cast<SoFieldItem*>(currentItem());
}

void SoMiraboList::chooseRow(QTreeWidgetItem* item)
{
    // The view's own way refuses disabled rows.
    const QModelIndex index = indexFromItem(item);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect
                                                 | QItemSelectionModel::Rows);
    viewport()->update();
    scrollToItem(item);
}

void SoMiraboList::lookAfter(SoFieldItem* item)
{
    SoNode* node = item->getNode();
    if (!node)
        return;
    NodeRows& entry = m_nodes[node];
    if (!entry.guard)
        entry.guard = std::make_unique<mirabo::NodeGuard>(node, [this, node] { nodeDied(node); });
    entry.rows.push_back(item);
}

void SoMiraboList::forgetRow(SoFieldItem* item)
{
    const auto at = m_nodes.find(item->getNode());
    if (at == m_nodes.end())
        return;
    std::erase(at->second.rows, item);
    if (at->second.rows.empty())
        m_nodes.erase(at);
}

void SoMiraboList::nodeDied(const SoNode* node)
{
    const auto entry = m_nodes.extract(node);
    std::vector<const SoField*> fields;
    for (SoFieldItem* row : entry.mapped().rows) {
        fields.push_back(row->getField());
        row->fieldGone(true);
    }
    for (const SoField* field : fields)
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
    for (SoFieldItem* row : at->second.rows)
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
    auto* taken = static_cast<SoFieldItem*>(takeTopLevelItem(row));
    forgetRow(taken);
    taken->leaveList();
}

void SoMiraboList::rowChanged(SoFieldItem* item)
{
    item->invalidate();
    item->updateEnabled();
    if (m_showChangedOnly && item->isHidden() && isWanted(item))
        item->setHidden(false);
    if (m_repaintPending || !m_inView)
        return;
    m_repaintPending = true;
    QTimer::singleShot(0, this, &SoMiraboList::repaintRows);
}

void SoMiraboList::repaintRows()
{
    m_repaintPending = false;
    for (QModelIndex at = indexAt(QPoint(0, 0)); at.isValid(); at = indexBelow(at)) {
        const QRect cell = visualRect(at.siblingAtColumn(FieldValue));
        if (cell.top() > viewport()->height())
            break;
        if (!fieldItem(at.row())->isStale())
            continue;
        viewport()->update(cell);
        for (const Column column : {Ignored, Connected})
            viewport()->update(visualRect(at.siblingAtColumn(column)));
    }
}

void SoMiraboList::setInView(bool on)
{
    if (m_inView == on)
        return;
    m_inView = on;
    for (int row = 0; row < topLevelItemCount(); ++row) {
        SoFieldItem* item = fieldItem(row);
        item->setLive(on);
        item->updateEnabled();
    }
}

void SoMiraboList::showEvent(QShowEvent* event)
{
    setInView(true);
    QTreeWidget::showEvent(event);
    fillWidth();
}

void SoMiraboList::hideEvent(QHideEvent* event)
{
    setInView(false);
    QTreeWidget::hideEvent(event);
}

void SoMiraboList::resizeEvent(QResizeEvent* event)
{
    QTreeWidget::resizeEvent(event);
    fillWidth();
}

bool SoMiraboList::isWanted(const SoFieldItem* item) const
{
    return (m_showCatalogParts || !item->isPart())
           && (!m_showChangedOnly || !item->isFieldDefault());
}

void SoMiraboList::setShowCatalogParts(bool on)
{
    m_showCatalogParts = on;
    for (int row = 0; row < topLevelItemCount(); ++row)
        if (SoFieldItem* item = fieldItem(row); item->isPart())
            item->setHidden(!isWanted(item));
}

void SoMiraboList::showChangedValues(bool on)
{
    m_showChangedOnly = on;
    for (int row = 0; row < topLevelItemCount(); ++row)
        if (SoFieldItem* item = fieldItem(row); item->isHidden() == isWanted(item))
            item->setHidden(!isWanted(item));
}

void SoMiraboList::setColumnWidth(int column, int width)
{
    const int before = columnWidth(column);
    QTreeWidget::setColumnWidth(column, width);
    if (columnWidth(column) != before)
        Q_EMIT columnWidthChanged(column, columnWidth(column));
}

int SoMiraboList::storedWidth(int column) const
{
    const int width = columnWidth(column);
    return column == FieldValue && m_valueFills && width != 0 ? -1 : width;
}

void SoMiraboList::headerRightClicked(const QPoint& position)
{
    QMenu menu;
    const int last = isNetNameMode() ? NodeNetName : FieldValue;
    for (int column = kFirstListedColumn; column <= last; ++column) {
        QAction* action = menu.addAction(kColumnTexts[static_cast<std::size_t>(column - 1)]);
        action->setCheckable(true);
        action->setChecked(columnWidth(column) != 0);
    }
    connect(&menu, &QMenu::triggered, this, &SoMiraboList::toggleHeaderColumnVisibility);
    menu.exec(position);
}

void SoMiraboList::toggleHeaderColumnVisibility(QAction* toggledAction)
{
    const QString text = toggledAction->text().remove('&');
    const auto at = std::find(kColumnTexts.begin(), kColumnTexts.end(), text);
    if (at == kColumnTexts.end())
        return;
    const int column = static_cast<int>(at - kColumnTexts.begin()) + kFirstListedColumn;
    if (columnWidth(column) == 0 && column >= Connected) {
        if (column > (isNetNameMode() ? NodeNetName : FieldValue) || column >= columnCount())
            return;
        header()->setSectionResizeMode(column, QHeaderView::Interactive);
        const QString label = headerItem()->text(column);
        setColumnWidth(column, header()->fontMetrics().horizontalAdvance(label) + kHeaderMargin);
    } else {
        setColumnWidth(column, columnWidth(column) != 0 ? 0 : kReopenedIgnoreWidth);
    }
}

void SoMiraboList::setStyles(const mirabo::StyleTable& styles)
{
    m_defaultColor = styles["Default Value"].color;
    m_defaultFont = styles["Default Value"].font;
    m_changedColor = styles["Changed Value"].color;
    m_changedFont = styles["Changed Value"].font;
    if (isVisible())
        viewport()->update();
}

void SoMiraboList::copyCurrentValue()
{
    if (const SoFieldItem* item = currentFieldItem())
        QGuiApplication::clipboard()->setText(item->copiedValue());
}

void SoMiraboList::paintEvent(QPaintEvent* event)
{
    QTreeWidget::paintEvent(event);
    if (topLevelItemCount() > 0 || m_emptyHint.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(
        viewport()->rect().adjusted(kHintMargin, kHintMargin, -kHintMargin, -kHintMargin),
        Qt::AlignCenter | Qt::TextWordWrap, m_emptyHint);
}

void SoMiraboList::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const
{
    // A disabled row can be the current one, but the view never draws it as selected.
    QStyleOptionViewItem shown = option;
    const QModelIndex current = currentIndex();
    if (current.isValid() && current.row() == index.row() && !(index.flags() & Qt::ItemIsEnabled))
        shown.state |= QStyle::State_Selected;
    QTreeWidget::drawRow(painter, shown, index);
}

bool SoMiraboList::event(QEvent* event)
{
    // A row's value comes before the window's own "Copy".
    if (event->type() == QEvent::ShortcutOverride
        && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy) && currentItem()) {
        event->accept();
        return true;
    }
    return QTreeWidget::event(event);
}

bool SoMiraboList::moveByKey(int key)
{
    const int count = topLevelItemCount();
    const int current = currentIndex().row();
    const bool up = key == Qt::Key_Up || key == Qt::Key_End;
    int row = key == Qt::Key_Home ? 0 : key == Qt::Key_End ? count - 1 : current + (up ? -1 : 1);
    while (row >= 0 && row < count && topLevelItem(row)->isHidden())
        row += up ? -1 : 1;
    if (row < 0 || row >= count)
        return false;
    chooseRow(topLevelItem(row));
    return true;
}

void SoMiraboList::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy) && currentItem()) {
        copyCurrentValue();
        event->accept();
        return;
    }
    const int key = event->key();
    const bool moves =
        key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_Home || key == Qt::Key_End;
    if (moves && (event->modifiers() & ~Qt::KeypadModifier) == 0 && moveByKey(key)) {
        event->accept(); // the view's own keys pass over disabled rows
        return;
    }
    QTreeWidget::keyPressEvent(event);
}

void SoMiraboList::mousePressEvent(QMouseEvent* event)
{
    QTreeWidget::mousePressEvent(event);
    QTreeWidgetItem* item = itemAt(event->pos());
    if (item && item->isDisabled())
        chooseRow(item);
}

void SoMiraboList::mouseDoubleClickEvent(QMouseEvent* event)
{
    QTreeWidget::mouseDoubleClickEvent(event);
    QTreeWidgetItem* item = itemAt(event->pos());
    if (item && item->isDisabled() && event->button() == Qt::LeftButton)
        Q_EMIT itemDoubleClicked(item, columnAt(event->pos().x()));
}
