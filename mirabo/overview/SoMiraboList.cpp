#include "mirabo/overview/SoMiraboList.h"

#include "mirabo/overview/FieldValueDelegate.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoHeaderView.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QTimer>

#include <array>

namespace {

/// Menu texts in the order of the columns from 1 on.
constexpr std::array kColumnTexts{"Ignore",     "Connected",  "Node Type",   "Node Name",
                                  "Field Type", "Field Name", "Field Value", "Node NetName"};
constexpr int kFirstListedColumn = 1;
constexpr int kReopenedIgnoreWidth = 20;
constexpr int kHeaderMargin = 10;

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

    const bool netNames = isNetNameMode();
    QStringList labels{"",          "",           "",           "Node Type",
                       "Node Name", "Field Type", "Field Name", "Field Value"};
    if (netNames)
        labels << "Node NetName";
    setColumnCount(labels.size());
    setHeaderLabels(labels);
    setColumnHidden(Hidden, true);
    headerItem()->setIcon(Ignored, QIcon(":/Mirabo_icons/Icons/ignore.png"));
    headerItem()->setToolTip(Ignored, "This field is ignored");
    headerItem()->setIcon(Connected, QIcon(":/Mirabo_icons/Icons/connection.png"));
    headerItem()->setToolTip(Connected, "This field is connected");

    setSelectionMode(SingleSelection);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    header->setSectionsMovable(false);
    header->setMinimumSectionSize(0); // a column of width 0 counts as hidden
    header->setStretchLastSection(true);
    header->setSortIndicator(-1, Qt::AscendingOrder); // the order of the field data, until asked
    setSortingEnabled(true);
    setItemDelegateForColumn(FieldValue, new FieldValueDelegate(this));
    setAccessibleName("Fields");
}

SoMiraboList::~SoMiraboList()
{
    clear(); // the rows' sensors and default fields go before the twins
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
    clear();
    if (!node)
        return;
    setUpdatesEnabled(false);
    setSortingEnabled(false); // once at the end, not with every row
    fill(node);
    setSortingEnabled(true);
    setUpdatesEnabled(true);
}

void SoMiraboList::fill(SoNode* node)
{
    const SoNode* twin = twinOf(node);
    const SoFieldData* data = node->getFieldData();
    const SoFieldData* twinData = twin ? twin->getFieldData() : nullptr;
    // A node with fields of its own (an unknown node) has no twin to compare with.
    if (data != twinData)
        twin = nullptr;
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const auto type = data->getField(node, i)->getFieldType();
        if (type == SoField::EVENT_IN || type == SoField::INTERNAL)
            continue;
        new SoFieldItem(this, node, twin, i, false); // the list owns it
    }
}

SoFieldItem* SoMiraboList::fieldItem(int row) const
{
    return static_cast<SoFieldItem*>(topLevelItem(row));
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
        item->invalidate();
        rowChanged(item);
        if (field)
            return;
    }
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
    for (int row = 0; row < topLevelItemCount(); ++row) {
        SoFieldItem* item = fieldItem(row);
        item->data(FieldValue, Qt::DisplayRole); // brings the enabled state up to date
        if (!item->isDisabled())
            return item;
    }
    return nullptr;
}

void SoMiraboList::removeFieldItem(QTreeWidgetItem* item)
{
    const int row = indexOfTopLevelItem(item);
    if (row >= 0)
        takeTopLevelItem(row);
}

void SoMiraboList::rowChanged(SoFieldItem*)
{
    if (m_repaintPending || !isVisible())
        return;
    m_repaintPending = true;
    QTimer::singleShot(0, this, &SoMiraboList::repaintRows);
}

void SoMiraboList::repaintRows()
{
    m_repaintPending = false;
    viewport()->update();
}

void SoMiraboList::setShowCatalogParts(bool on)
{
    m_showCatalogParts = on;
    for (int row = 0; row < topLevelItemCount(); ++row) {
        SoFieldItem* item = fieldItem(row);
        if (!item->isPart())
            continue;
        item->setHidden(!on || (m_showChangedOnly && item->isFieldDefault()));
    }
}

void SoMiraboList::showChangedValues(bool on)
{
    m_showChangedOnly = on;
    for (int row = 0; row < topLevelItemCount(); ++row) {
        SoFieldItem* item = fieldItem(row);
        if (!item->isFieldDefault())
            continue;
        item->setHidden(on || (item->isPart() && !m_showCatalogParts));
    }
}

void SoMiraboList::setColumnWidth(int column, int width)
{
    const int before = columnWidth(column);
    QTreeWidget::setColumnWidth(column, width);
    if (columnWidth(column) != before)
        Q_EMIT columnWidthChanged(column, columnWidth(column));
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
    int column = 0;
    for (std::size_t i = 0; i < kColumnTexts.size(); ++i)
        if (text == kColumnTexts[i])
            column = static_cast<int>(i) + 1;
    if (column == 0)
        return;
    const int last = isNetNameMode() ? NodeNetName : FieldValue;
    if (columnWidth(column) == 0 && column >= Connected) {
        if (column > last || column >= columnCount())
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

void SoMiraboList::paintEvent(QPaintEvent* event)
{
    QTreeWidget::paintEvent(event);
    if (topLevelItemCount() > 0 || m_emptyHint.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect().adjusted(12, 12, -12, -12),
                     Qt::AlignCenter | Qt::TextWordWrap, m_emptyHint);
}

void SoMiraboList::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy) && currentItem()) {
        QGuiApplication::clipboard()->setText(currentItem()->text(FieldName) + ' '
                                              + currentItem()->text(FieldValue));
        event->accept();
        return;
    }
    QTreeWidget::keyPressEvent(event);
}
