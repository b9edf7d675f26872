#include "mirabo/tree/SoMiraboTreeView.h"

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/OpenBranches.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeContextMenu.h"
#include "mirabo/tree/TreeIgnoreCommands.h"
#include "mirabo/tree/TreePatcher.h"
#include "mirabo/tree/TreeStyle.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>

#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QMetaMethod>
#include <QScopedValueRollback>
#include <QScopeGuard>

#include <algorithm>
#include <utility>

namespace {

/// Widths in pixels; what the contents need comes on top.
constexpr int kColumnWidths[SoTreeViewItem::kColumnCount] = {200, 120, 60, 44, 24};

SoTreeViewItem* asItem(QTreeWidgetItem* item)
{
    return static_cast<SoTreeViewItem*>(item);
}

/// Index of a row's node in its parent's child list; -1 for the node of a field.
int graphIndexOf(const SoTreeViewItem* item, const mirabo::TreeContext& context)
{
    if (item->isDirectlyFromField())
        return -1;
    const mirabo::ShownChildren children = mirabo::shownChildren(item->getParentNode(), context);
    int row = item->childIndexValue();
    if (row < 0 || row >= children.count() || children[row] != item->getNode())
        for (row = 0; row < children.count() && children[row] != item->getNode();)
            ++row;
    return row + children.first;
}

/// Rows of all levels from the top to an item: sorts like the rows do from top to bottom.
std::vector<int> placeOf(const SoTreeViewItem* item)
{
    std::vector<int> place;
    for (; item; item = item->parentItem())
        place.push_back(item->childIndexValue());
    std::reverse(place.begin(), place.end());
    return place;
}

/// The types of signal arguments, so that they can be queued and recorded.
void registerArgumentTypes()
{
    qRegisterMetaType<SoNode*>("SoNode*");
    qRegisterMetaType<SoTreeViewItem*>("SoTreeViewItem*");
    qRegisterMetaType<const SoPath*>("const SoPath*");
    qRegisterMetaType<MrbCommand*>("MrbCommand*");
}

} // namespace

SoMiraboTreeView::PatchScope::PatchScope(SoMiraboTreeView& view) : m_view(view)
{
    ++m_view.m_patchDepth;
}

SoMiraboTreeView::PatchScope::~PatchScope()
{
    if (--m_view.m_patchDepth == 0 && m_view.m_currentMoved)
        m_view.m_topology->requestUpdate();
}

SoMiraboTreeView::SoMiraboTreeView(QWidget* parent) : QTreeWidget(parent)
{
    registerArgumentTypes();
    m_context.readEnvironment();
    m_patcher = std::make_unique<mirabo::TreePatcher>(*this);
    m_openBranches = std::make_unique<mirabo::OpenBranches>(*this);
    m_topology = std::make_unique<SoGraphTopologyManager>(this);
    m_menu = std::make_unique<TreeContextMenu>(this);

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
    connect(this, &QTreeWidget::itemExpanded, this, &SoMiraboTreeView::resizeAllColumns);
    connect(this, &QTreeWidget::itemCollapsed, this, &SoMiraboTreeView::resizeAllColumns);
    connect(m_topology.get(), &SoGraphTopologyManager::structureChanged, this,
            &SoMiraboTreeView::outsideStructureChange);
    connect(m_topology.get(), &SoGraphTopologyManager::contentReplaced, this,
            &SoMiraboTreeView::overviewRefreshRequested);
}

SoMiraboTreeView::~SoMiraboTreeView()
{
    blockSignals(true);
    m_topology->attach(nullptr);
    clearRows();
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
    m_context.itemFont = styles["Node Type"].font;
    m_context.fieldNodeFont = styles["Node From Field"].font;
    m_context.highlightFieldNodes = styles["Node From Field"].show;
    m_context.realKitCounter = mirabo::readRealNodekitsCounter();
    m_context.realVrmlCounter = mirabo::readRealVrmlCounter();
    setColumnHidden(SoTreeViewItem::Name, !styles["Node/Part Name"].show);
    setColumnHidden(SoTreeViewItem::ReferenceCount, !styles["Reference Count"].show);
}

void SoMiraboTreeView::setPreferences()
{
    initPreferences();
    scheduleDelayedItemsLayout();
    viewport()->update();
    resizeAllColumns();
}

SoTreeViewItem* SoMiraboTreeView::rootItem() const
{
    return asItem(topLevelItem(0));
}

void SoMiraboTreeView::rowsAboutToChange()
{
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
    return m_context.putAside.count(const_cast<SoTreeViewItem*>(item)) > 0 || item->isExpanded();
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
    m_context.index.beginDiscard();
    while (topLevelItemCount() > 0)
        mirabo::destroyRows(asItem(takeTopLevelItem(0)));
    m_context.index.endDiscard();
    m_context.disabled.clear();
    m_markedNode = nullptr;
}

void SoMiraboTreeView::setSceneGraph(SoNode* root)
{
    {
        const PatchScope scope(*this);
        clearRows();
        m_topology->follow(root);
        m_root = root;
        mirabo::setVrmlScene(root && mirabo::traitsOf(root->getTypeId()).isVrmlParent);
        if (root) {
            m_context.showAll = true;
            createItem(root, nullptr);
            m_context.showAll = false;
            expandItem(rootItem());
        }
        Q_EMIT rootChanged(root);
        // A receiver may have shown another scene meanwhile.
        if (m_root != root)
            return;
        if (root)
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
    if (!parentItem) {
        insertTopLevelItem(index < 0 ? topLevelItemCount() : std::min(index, topLevelItemCount()),
                           item);
        return item;
    }
    const int count = parentItem->childCount();
    const int row = index < 0 ? count : std::min(index, count);
    parentItem->insertChild(row, item);
    parentItem->childrenChanged(row);
    return item;
}

void SoMiraboTreeView::populate(SoTreeViewItem* item)
{
    const PatchScope scope(*this);
    rowsAboutToChange();
    for (QTreeWidgetItem* child : item->takeChildren())
        mirabo::destroyRows(asItem(child));
    item->childrenChanged();
    m_patcher->sync(item);
}

void SoMiraboTreeView::selectChange(QTreeWidgetItem* item, QTreeWidgetItem*)
{
    if (m_patchDepth > 0) {
        m_currentMoved = true;
        return;
    }
    m_pressChose = true;
    choose(asItem(item));
}

void SoMiraboTreeView::choose(SoTreeViewItem* item)
{
    if (item && !isInGraph(item)) {
        // Called by the selection, which does not bear that rows go: they go in the next pass.
        m_currentMoved = true;
        m_topology->requestUpdate();
        return;
    }
    requestHighlight(item);
    announceReferences();
    Q_EMIT ignoreEnableChanged(canIgnoreOrEnable());
    if (item)
        Q_EMIT itemChosen(item, m_shiftPressed);
}

void SoMiraboTreeView::onItemClicked(QTreeWidgetItem* item, int)
{
    // A click on the row that was current already: it may ask for a tab of its own.
    if (!m_pressChose)
        Q_EMIT itemChosen(asItem(item), QApplication::keyboardModifiers() & Qt::ShiftModifier);
    m_pressChose = true;
}

void SoMiraboTreeView::requestHighlight(SoTreeViewItem* item)
{
    if (!m_context.autoHighlight)
        return;
    m_topology->setHighlighting(true);
    const auto over = qScopeGuard([this] { m_topology->setHighlighting(false); });
    if (!item || item->isDisabledNode() || (item->isFromField() && !item->isNamedPart())) {
        Q_EMIT highlightRequested(nullptr);
        return;
    }
    std::vector<const SoTreeViewItem*> chain;
    for (const SoTreeViewItem* at = item; at; at = at->parentItem())
        chain.push_back(at);
    const SoRef<SoPath> path(new SoPath(chain.back()->getNode()));
    for (auto at = chain.rbegin() + 1; at != chain.rend(); ++at)
        path->append((*at)->getNode(), graphIndexOf(*at, m_context));
    Q_EMIT highlightRequested(path.get());
}

void SoMiraboTreeView::showItem(SoTreeViewItem* item)
{
    if (!item || !item->isFresh())
        return;
    scrollToItem(item); // opens its ancestors
    setCurrentItem(item);
}

bool SoMiraboTreeView::isUserBusy() const
{
    return QApplication::mouseButtons() != Qt::NoButton || QApplication::activePopupWidget()
           || QApplication::activeModalWidget() || state() == EditingState
           || qobject_cast<QLineEdit*>(QApplication::focusWidget());
}

/// At most one row a pass, for the last change, and none under the user's hands.
void SoMiraboTreeView::showWhatChanged()
{
    SoTreeViewItem* changed = m_topology->takeChangedItem();
    SoTreeViewItem* item = std::exchange(m_context.toShow, nullptr);
    if (changed)
        item = changed;
    if (!item || item == currentItem() || isUserBusy())
        return;
    m_currentMoved = false;
    showItem(item);
}

/// Disabled nodes whose last grey row went with what was around it.
void SoMiraboTreeView::forgetDisabledNodes()
{
    std::vector<mirabo::SavedLinks> gone; // nodes may die, and that may come back to us
    for (auto at = m_context.disabled.begin(); at != m_context.disabled.end();) {
        const std::vector<SoTreeViewItem*> items = itemsOf(at->first);
        const bool isKept = std::any_of(items.begin(), items.end(),
                                        [](const auto* item) { return item->isDisabledNode(); });
        if (isKept) {
            ++at;
            continue;
        }
        gone.push_back(std::move(at->second));
        at = m_context.disabled.erase(at);
    }
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
    }
    if (std::exchange(m_fitPending, false))
        fitColumns();
    if (m_menu->isVisible() && !m_context.menuRow)
        m_menu->close();
    if (!std::exchange(m_lookPending, false))
        return;
    for (SoTreeViewItem* marked : itemsOf(m_markedNode))
        marked->updateReferenceMark(true);
    viewport()->update();
}

bool SoMiraboTreeView::canAddNodes() const
{
    return isSignalConnected(QMetaMethod::fromSignal(&SoMiraboTreeView::addNodeRequested));
}

bool SoMiraboTreeView::canSaveSubGraphs() const
{
    return isSignalConnected(QMetaMethod::fromSignal(&SoMiraboTreeView::saveSubGraphRequested));
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
    if (item->isDirectlyFromField())
        Q_EMIT commandReady(new SoTreeIgnoreFieldCommand(item->getSourceField()));
    else
        Q_EMIT commandReady(
            new SoTreeDisableNodeCommand(this, item->getNode(), !item->isDisabledNode()));
}

void SoMiraboTreeView::resizeAllColumns()
{
    m_fitPending = true;
    m_topology->requestUpdate();
}

void SoMiraboTreeView::fitColumns()
{
    for (int column = 0; column < SoTreeViewItem::kColumnCount; ++column) {
        resizeColumnToContents(column);
        if (columnWidth(column) < kColumnWidths[column])
            setColumnWidth(column, kColumnWidths[column]);
    }
}

SoNode* SoMiraboTreeView::getCurrentNode() const
{
    const SoTreeViewItem* item = asItem(currentItem());
    return item ? item->getNode() : nullptr;
}

SoNode* SoMiraboTreeView::getCurrentKit() const
{
    const SoTreeViewItem* item = asItem(currentItem());
    return item ? item->getPartKit() : nullptr;
}

std::vector<SoTreeViewItem*> SoMiraboTreeView::occurrencesOf(const SoNode* node) const
{
    std::vector<std::pair<std::vector<int>, SoTreeViewItem*>> placed;
    for (SoTreeViewItem* item : itemsOf(node))
        placed.emplace_back(placeOf(item), item);
    std::sort(placed.begin(), placed.end());
    std::vector<SoTreeViewItem*> items;
    for (const auto& entry : placed)
        items.push_back(entry.second);
    return items;
}

bool SoMiraboTreeView::revealNode(const SoNode* node)
{
    if (!m_context.index.contains(node))
        return false;
    if (getCurrentNode() != node)
        showItem(occurrencesOf(node).front());
    return true;
}

void SoMiraboTreeView::nodeTextChanged(const SoNode*)
{
    viewport()->update();
}

void SoMiraboTreeView::showReferences(SoTreeViewItem* item)
{
    for (SoTreeViewItem* marked : itemsOf(m_markedNode))
        marked->updateReferenceMark(false);
    m_markedNode = item ? item->getNode() : nullptr;
    for (SoTreeViewItem* shared : itemsOf(m_markedNode))
        shared->updateReferenceMark(true);
    viewport()->update();
    announceReferences();
}

void SoMiraboTreeView::showReferencesOfCurrent()
{
    showReferences(asItem(currentItem()));
}

void SoMiraboTreeView::hideReferences()
{
    showReferences(nullptr);
}

void SoMiraboTreeView::announceReferences()
{
    const bool shared = itemsOf(getCurrentNode()).size() > 1;
    Q_EMIT currentReferencesChanged(shared, hasMarkedReferences());
}

/// From occurrence to occurrence of the marked node, else of the current one, around the end.
void SoMiraboTreeView::stepReference(int direction)
{
    const SoNode* node = m_context.index.contains(m_markedNode) ? m_markedNode : getCurrentNode();
    const std::vector<SoTreeViewItem*> items = occurrencesOf(node);
    if (items.empty())
        return;
    const auto at = std::find(items.begin(), items.end(), currentItem());
    const auto count = static_cast<std::ptrdiff_t>(items.size());
    std::ptrdiff_t next = direction > 0 ? 0 : count - 1;
    if (at != items.end())
        next = (at - items.begin() + direction + count) % count;
    showItem(items[static_cast<std::size_t>(next)]);
}

void SoMiraboTreeView::setContextMenuExtension(std::function<QList<QMenu*>(SoType)> extension)
{
    m_menu->setExtension(std::move(extension));
}
