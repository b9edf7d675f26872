#include "mirabo/tree/SoMiraboTreeView.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/DropGuide.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/OpenBranches.h"
#include "mirabo/tree/RowList.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/TreeContextMenu.h"
#include "mirabo/tree/TreeDelegate.h"
#include "mirabo/tree/TreeIgnoreCommands.h"
#include "mirabo/tree/TreePatcher.h"
#include "mirabo/tree/TreeRows.h"
#include "mirabo/tree/TreeStyle.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/nodes/SoGroup.h>

#include <QApplication>
#include <QHeaderView>
#include <QMetaMethod>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <optional>
#include <utility>

using mirabo::asItem;

namespace {

constexpr int kRowHeight = 27; ///< in pixels; taller fonts make rows taller

/// Widths in pixels; what the contents need comes on top.
constexpr int kColumnWidths[SoTreeViewItem::kColumnCount] = {200, 120, 60, 44, 24};

/// Widths that scrolling keeps in sight: of a row from its icon on, and of the branches before it.
constexpr int kTextRoom = 160;
constexpr int kLeadIn = 80;

/// The types of signal arguments, so that they can be queued and recorded.
void registerArgumentTypes()
{
    qRegisterMetaType<SoNode*>("SoNode*");
    qRegisterMetaType<SoTreeViewItem*>("SoTreeViewItem*");
    qRegisterMetaType<const SoPath*>("const SoPath*");
    qRegisterMetaType<mirabo::TreeEditCommand*>("mirabo::TreeEditCommand*");
}

} // namespace

SoMiraboTreeView::PatchScope::PatchScope(SoMiraboTreeView& view) : m_view(view)
{
    // The view scrolls to a new current row and opens what is above it, also to one that it chose
    // itself since the old one goes.
    if (m_view.m_patchDepth++ == 0)
        m_view.setAutoScroll(false);
}

SoMiraboTreeView::PatchScope::~PatchScope()
{
    if (--m_view.m_patchDepth > 0)
        return;
    m_view.setAutoScroll(true);
    if (m_view.m_currentMoved)
        m_view.m_topology->requestUpdate();
}

SoMiraboTreeView::SoMiraboTreeView(QWidget* parent)
    : QTreeWidget(parent),
      m_keeper(*this, [](QTreeWidgetItem* row) { mirabo::destroyRows(asItem(row)); })
{
    registerArgumentTypes();
    m_context.readEnvironment();
    m_context.keeper = &m_keeper;
    m_patcher = std::make_unique<mirabo::TreePatcher>(*this);
    m_openBranches = std::make_unique<mirabo::OpenBranches>(*this);
    m_topology = std::make_unique<SoGraphTopologyManager>(this);
    m_menu = std::make_unique<TreeContextMenu>(this);
    m_context.news.setReceiver(this);
    m_dropGuide = std::make_unique<mirabo::DropGuide>(this);

    setAccessibleName("Scene tree");
    setItemDelegate(new mirabo::TreeDelegate(this));
    applyLook();
    setUpColumns();
    setSelectionMode(SingleSelection);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setDragDropMode(DropOnly); // drags are started by hand
    setContextMenuPolicy(Qt::CustomContextMenu);
    initPreferences();

    connect(this, &QTreeWidget::currentItemChanged, this, &SoMiraboTreeView::selectChange);
    connect(this, &QTreeWidget::itemClicked, this, &SoMiraboTreeView::onItemClicked);
    connect(this, &QWidget::customContextMenuRequested, this,
            &SoMiraboTreeView::onCustomContextMenu);
    connect(this, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) {
        if (item->childCount() == 0)
            item->setExpanded(false); // by a key: what comes below it later has not been opened
        resizeAllColumns();
    });
    connect(this, &QTreeWidget::itemCollapsed, this, &SoMiraboTreeView::resizeAllColumns);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
        m_scrolled = true;
        m_topology->requestUpdate();
    });
    connect(m_dropGuide.get(), &mirabo::DropGuide::hintChanged, this,
            &SoMiraboTreeView::statusHint);
    connect(m_topology.get(), &SoGraphTopologyManager::structureChanged, this,
            &SoMiraboTreeView::outsideStructureChange);
    connect(m_topology.get(), &SoGraphTopologyManager::contentReplaced, this,
            &SoMiraboTreeView::overviewRefreshRequested);
}

SoMiraboTreeView::~SoMiraboTreeView()
{
    blockSignals(true);
    // Sensors and listeners of ours must be gone, whoever edits: wait for him.
    const SoReadLock graph;
    m_context.news.setReceiver(nullptr);
    m_topology->attach(nullptr);
    clearRows();
}

bool SoMiraboTreeView::hasLivingRoot() const
{
    const SoTreeViewItem* item = rootItem();
    return !m_topology->hasWatchedDied() && (!item || !item->isDead());
}

void SoMiraboTreeView::nodeDied(const SoNode* node)
{
    if (node == m_markedNode)
        m_markedNode = nullptr;
    std::erase(m_renamed, node);
    m_topology->nodeDied(node);
    if (m_context.unheard.erase(node) > 0)
        m_context.anyUnheard = !m_context.unheard.empty();
    const std::vector<SoTreeViewItem*> rows = m_context.index.take(node);
    if (rows.empty())
        return;
    for (SoTreeViewItem* row : rows)
        row->nodeDied();
    graphChanged();
    m_topology->requestUpdate();
}

void SoMiraboTreeView::nodeRenamed(const SoNode* node)
{
    if (!m_context.index.contains(node))
        return;
    m_renamed.push_back(node);
    graphChanged();
    m_topology->requestUpdate();
}

void SoMiraboTreeView::tellNames()
{
    for (const SoNode* node : std::exchange(m_renamed, {}))
        if (m_context.index.contains(node))
            Q_EMIT nodeNameChanged(const_cast<SoNode*>(node));
}

void SoMiraboTreeView::nodeChangedUnheard(const SoNode* node, std::uint64_t since)
{
    if (!m_context.index.contains(node) && node != m_topology->getContainer())
        return;
    m_context.unheard.emplace(node, since);
    m_context.anyUnheard = true;
}

void SoMiraboTreeView::newsWaiting()
{
    QMetaObject::invokeMethod(
        m_topology.get(), [this] { m_topology->requestUpdate(); }, Qt::QueuedConnection);
}

void SoMiraboTreeView::setUpColumns()
{
    setColumnCount(SoTreeViewItem::kColumnCount);
    setHeaderLabels({"Type", "Name", "Ref. Count", QString(), QString()});
    setUniformRowHeights(true);
    setSortingEnabled(false);
    header()->setStretchLastSection(true);
    header()->setMinimumSectionSize(16);
    header()->setResizeContentsPrecision(0); // what is in view; a scene has millions of rows
    for (int column = 0; column < SoTreeViewItem::kColumnCount; ++column)
        setColumnWidth(column, kColumnWidths[column]);
    header()->moveSection(SoTreeViewItem::Bookmark, 0);
}

void SoMiraboTreeView::applyLook()
{
    const QString sheet = mirabo::treeStyleSheet(QApplication::palette(this));
    if (sheet != styleSheet())
        setStyleSheet(sheet);
}

void SoMiraboTreeView::initPreferences()
{
    mirabo::StyleTable styles = mirabo::defaultTreeStyles();
    mirabo::readStyles(mirabo::kTreeGroup, styles);
    m_context.styles = {styles["Node Type"], styles["Node From Field"], styles["Node/Part Name"],
                        styles["Reference Count"]};
    m_context.rowHeight = mirabo::rowHeightFor(styles, kRowHeight);
    m_context.realKitCounter = mirabo::readRealNodekitsCounter();
    m_context.realVrmlCounter = mirabo::readRealVrmlCounter();
    setColumnHidden(SoTreeViewItem::Name, !styles["Node/Part Name"].show);
    setColumnHidden(SoTreeViewItem::ReferenceCount, !styles["Reference Count"].show);
}

void SoMiraboTreeView::setPreferences()
{
    const int height = m_context.rowHeight;
    initPreferences();
    if (m_context.rowHeight != height)
        takeRowHeight();
    viewport()->update();
    resizeAllColumns();
}

/// The view asks for the height that all rows share when its first row changes. A layout would walk
/// all open rows.
void SoMiraboTreeView::takeRowHeight()
{
    for (int row = 0; row < topLevelItemCount(); ++row)
        if (!isRowHidden(row, QModelIndex())) {
            const QModelIndex first = model()->index(row, SoTreeViewItem::Type);
            dataChanged(first, first, {Qt::SizeHintRole});
            return;
        }
}

SoTreeViewItem* SoMiraboTreeView::rootItem() const
{
    for (int row = 0, rows = topLevelItemCount(); row < rows; ++row)
        if (SoTreeViewItem* item = asItem(topLevelItem(row)); item->wasMadeFor(m_root))
            return item;
    return asItem(topLevelItem(0));
}

void SoMiraboTreeView::setContainer(SoGroup* container)
{
    m_topology->setContainer(container);
}

SoGroup* SoMiraboTreeView::getContainer() const
{
    return m_topology->getContainer();
}

std::vector<SoNode*> SoMiraboTreeView::topNodes() const
{
    if (!m_root)
        return {};
    const SoGroup* container = getContainer();
    if (!container)
        return {m_root};
    std::vector<SoNode*> nodes = container->getChildren()->getNodes();
    if (container->findChild(m_root) < 0) // nobody has told yet
        nodes.insert(nodes.begin(), m_root);
    return nodes;
}

void SoMiraboTreeView::rowsAboutToChange()
{
    m_keeper.rowsAboutToChange();
    // With a layout pending the view does nothing of its own for each row.
    scheduleDelayedItemsLayout();
    graphChanged();
}

void SoMiraboTreeView::closeAll()
{
    const QScopedValueRollback<bool> closing(m_closing, true);
    collapseAll();
}

void SoMiraboTreeView::doItemsLayout()
{
    if (m_closing)
        return;
    m_openBranches->restore();
    QTreeWidget::doItemsLayout();
}

bool SoMiraboTreeView::isOpen(const SoTreeViewItem* item) const
{
    return m_context.putAside.count(const_cast<SoTreeViewItem*>(item)) > 0
           || (item->childCount() > 0 && item->isExpanded());
}

void SoMiraboTreeView::graphChanged()
{
    m_lookPending = true;
    if (++m_context.changes == 0)
        m_context.changes = 1;
}

void SoMiraboTreeView::clearRows()
{
    m_openBranches->restore();
    m_keeper.rowsAboutToChange();
    m_context.bookmarks.clear();
    m_context.index.beginDiscard();
    while (topLevelItemCount() > 0)
        mirabo::destroyRows(asItem(takeTopLevelItem(0)));
    m_context.index.endDiscard();
    m_context.disabled.clear();
    m_context.unheard.clear();
    m_context.anyUnheard = false;
    m_markedNode = nullptr;
}

/// False when the graph cannot be looked at now.
bool SoMiraboTreeView::replaceRows(SoNode* root)
{
    // Without a root there must be no listener of ours afterwards, whoever edits: wait for him.
    std::optional<SoReadLock> whole;
    if (!root)
        whole.emplace();
    const mirabo::GraphReading graph;
    if (!graph)
        return false;
    Q_EMIT rootAboutToChange();
    clearRows();
    m_topology->follow(root);
    m_root = root;
    mirabo::setVrmlSceneBy(root);
    if (!root)
        return true;
    m_context.showAll = true;
    m_patcher->syncTops();
    m_context.showAll = false;
    expandItem(rootItem());
    return true;
}

void SoMiraboTreeView::setSceneGraph(SoNode* root)
{
    if (m_topology->isPatching()) {
        m_topology->setRootLater(root);
        return;
    }
    m_topology->forgetLaterRoot();
    {
        const PatchScope scope(*this);
        if (!replaceRows(root)) {
            m_topology->setRootLater(root);
            return;
        }
        Q_EMIT rootChanged(root);
        // A receiver may have shown another scene meanwhile.
        if (m_root != root)
            return;
        if (root && rootItem()->isInSight())
            setCurrentItem(rootItem());
    }
    resizeAllColumns();
    if (m_patchDepth > 0)
        return;
    m_currentMoved = false;
    choose(rootItem());
}

SoTreeViewItem* SoMiraboTreeView::createItem(SoNode* node, SoTreeViewItem* parentItem,
                                             SoField* sourceField, int index)
{
    if (!node)
        return nullptr;
    mirabo::TreeBuilder builder(m_context);
    SoTreeViewItem* item = builder.build(node, sourceField, parentItem);
    rowsAboutToChange();
    const mirabo::RowList rows(*this, parentItem);
    const int row = index < 0 ? rows.count() : std::min(index, rows.count());
    rows.insert(row, item);
    if (parentItem)
        parentItem->childrenChanged(row);
    return item;
}

void SoMiraboTreeView::populate(SoTreeViewItem* item)
{
    const PatchScope scope(*this);
    rowsAboutToChange();
    for (QTreeWidgetItem* child : item->takeRows())
        mirabo::destroyRows(asItem(child));
    item->setHasDisabledChildren(false);
    item->childrenChanged();
    m_patcher->sync(item);
    mirabo::addGreyRows(item, m_context);
    m_openBranches->rowsChanged(item);
}

/// Disabled nodes whose last grey row went with what was around it and that no command can undo.
void SoMiraboTreeView::forgetDisabledNodes()
{
    m_context.disabled.forget([this](const SoNode* node) {
        const std::vector<SoTreeViewItem*> items = itemsOf(node);
        return std::any_of(items.begin(), items.end(),
                           [](const auto* item) { return item->isDisabledNode(); });
    });
}

void SoMiraboTreeView::catchUp()
{
    m_openBranches->restore();
    forgetDisabledNodes();
    m_topology->fetchInlines();
    showWhatChanged();
    if (std::exchange(m_currentMoved, false)) {
        SoTreeViewItem* current = asItem(currentItem());
        if (!current || verify(current))
            choose(current);
        else
            putOffCurrent(); // the rows have changed, or cannot be looked at
    }
    m_userChose = false;
    tellNames();
    const bool scrolled = std::exchange(m_scrolled, false);
    if (const bool fit = std::exchange(m_fitPending, false); fit || scrolled)
        fitColumns(fit);
    if (std::exchange(m_scrollPending, false))
        scrollToCurrent();
    if (std::exchange(m_textPending, false))
        bringTextIntoSight(currentIndex());
    if (m_menu->isVisible() && !m_context.menuRow)
        m_menu->close();
    if (!std::exchange(m_lookPending, false))
        return;
    for (SoTreeViewItem* marked : itemsOf(m_markedNode))
        marked->updateReferenceMark(true);
    viewport()->update();
}

bool SoMiraboTreeView::canMoveNodes() const
{
    return isSignalConnected(QMetaMethod::fromSignal(&SoMiraboTreeView::stepRequested));
}

bool SoMiraboTreeView::canIgnoreOrEnable() const
{
    const SoTreeViewItem* item = asItem(currentItem());
    return item
           && (item->isDirectlyFromField() || item->isDisabledNode() || mirabo::mayDisable(item));
}

void SoMiraboTreeView::ignoreEnable()
{
    SoTreeViewItem* item = asItem(currentItem());
    if (!item || !canIgnoreOrEnable() || !verify(item))
        return;
    std::unique_ptr<mirabo::TreeEditCommand> command;
    {
        const mirabo::GraphReading graph;
        if (!graph || item->isDead())
            return;
        SoNode* node = item->getNode();
        if (const SoField* field = item->getSourceField())
            command = std::make_unique<SoTreeIgnoreFieldCommand>(this, field);
        else
            command = std::make_unique<SoTreeDisableNodeCommand>(this, node,
                                                                 !m_context.disabled.find(node));
    }
    if (isSignalConnected(QMetaMethod::fromSignal(&SoMiraboTreeView::commandReady)))
        Q_EMIT commandReady(command.release());
}

void SoMiraboTreeView::resizeAllColumns()
{
    m_fitPending = true;
    m_topology->requestUpdate();
}

/// Looks at the rows in view only. While the user scrolls, columns do not jump back and forth: they
/// only grow.
void SoMiraboTreeView::fitColumns(bool mayShrink)
{
    for (int column = 0; column < SoTreeViewItem::kColumnCount; ++column) {
        const int width = std::max(
            {sizeHintForColumn(column), header()->sectionSizeHint(column), kColumnWidths[column]});
        if (mayShrink || width > columnWidth(column))
            setColumnWidth(column, width);
    }
}

/// Deep rows begin far to the right, while the base goes to where their column begins.
void SoMiraboTreeView::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    const int x = horizontalScrollBar()->value();
    QTreeWidget::scrollTo(index, hint);
    horizontalScrollBar()->setValue(x);
    bringTextIntoSight(index);
}

// A new current row would make a layout of all rows, inside the edit, only to find out what is to
// be painted again: everything is, later.

QRect SoMiraboTreeView::visualRect(const QModelIndex& index) const
{
    return m_patchDepth > 0 ? QRect() : QTreeWidget::visualRect(index);
}

QRegion SoMiraboTreeView::visualRegionForSelection(const QItemSelection& selection) const
{
    return m_patchDepth > 0 ? QRegion() : QTreeWidget::visualRegionForSelection(selection);
}

void SoMiraboTreeView::bringTextIntoSight(const QModelIndex& index)
{
    updateGeometries(); // the scroll bar learns of new widths too late
    const QRect text = visualRect(index.siblingAtColumn(SoTreeViewItem::Type));
    if (text.isEmpty())
        return;
    const int column = SoTreeViewItem::Type;
    const int left =
        header()->sectionPosition(column) + text.left() - columnViewportPosition(column);
    QScrollBar* bar = horizontalScrollBar();
    if (left < bar->value() || left + kTextRoom > bar->value() + viewport()->width())
        bar->setValue(left - kLeadIn);
}

void SoMiraboTreeView::nodeTextChanged(const SoNode*)
{
    viewport()->update();
}

void SoMiraboTreeView::setContextMenuExtension(std::function<QList<QMenu*>(SoType)> extension)
{
    m_menu->setExtension(std::move(extension));
}
