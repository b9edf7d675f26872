#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/ChildRules.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/nodes/SoGroup.h>

#include <QApplication>
#include <QLineEdit>
#include <QScopeGuard>

#include <algorithm>
#include <utility>

// The current row: who chooses it and who hears of it, and the ways from occurrence to occurrence.

using mirabo::asItem;

namespace {

/// Index of a row's node in its parent's child list; -1 for the node of a field that is no part of
/// a kit.
int graphIndexOf(const SoTreeViewItem* item, const mirabo::TreeContext& context)
{
    const SoNode* parent = item->getParentNode();
    if (!parent)
        return -1;
    if (item->isDirectlyFromField()) {
        // The parts of a kit hang on its fields, and stand among its children as well.
        const SoChildList* parts = item->isNamedPart() ? parent->getInternalChildren() : nullptr;
        return parts ? parts->find(item->getNode()) : -1;
    }
    const mirabo::ShownChildren children = mirabo::shownChildren(item->getParentNode(), context);
    int row = item->parentItem()->hasHiddenRows() ? item->rowInParent() : item->childIndexValue();
    if (row < 0 || row >= children.count() || children[row] != item->getNode())
        for (row = 0; row < children.count() && children[row] != item->getNode();)
            ++row;
    return row + children.first;
}

/// The row below `parent` that a step of a path leads to; null when the node has none there.
SoTreeViewItem* childRow(const SoTreeViewItem* parent, const SoNode* node, int index)
{
    SoTreeViewItem* first = nullptr;
    for (int row = 0; row < parent->rowCount(); ++row) {
        SoTreeViewItem* child = parent->rowAt(row);
        if (child->getNode() != node || child->isDisabledNode())
            continue;
        if (child->isDirectlyFromField() || child->childIndexValue() == index)
            return child;
        if (!first)
            first = child;
    }
    return first;
}

/// A top-level row that a path passes, and where.
struct Entrance {
    SoTreeViewItem* row = nullptr;
    int at = -1;
};

/// Behind the container it is known which of them; else the root's comes before others.
Entrance entranceOf(const SoPath& path, const SoMiraboTreeView& view)
{
    const SoNode* container = view.getContainer();
    Entrance any;
    for (int i = 0; i < path.getLength(); ++i) {
        const SoNode* node = path.getNode(i);
        if (container && i > 0 && path.getNode(i - 1) == container) {
            SoTreeViewItem* row = asItem(view.topLevelItem(path.getIndex(i)));
            if (row && row->getNode() == node)
                return {row, i};
        }
        if (any.row && any.row == view.rootItem())
            continue;
        for (SoTreeViewItem* row : view.itemsOf(node))
            if (row->parentItem() == nullptr && (!any.row || row == view.rootItem()))
                any = {row, i};
    }
    return any;
}

/// The row of a path's last node that has one; null when the path passes no top-level row.
SoTreeViewItem* rowOf(const SoPath& path, const SoMiraboTreeView& view)
{
    auto [row, at] = entranceOf(path, view);
    for (int i = at + 1; row && i < path.getLength(); ++i) // a kit's own groups have no rows
        if (SoTreeViewItem* child = childRow(row, path.getNode(i), path.getIndex(i)))
            row = child;
    return row;
}

/// Rows of all levels from the top to an item: sorts like the rows do from top to bottom.
std::vector<int> placeOf(const SoTreeViewItem* item)
{
    std::vector<int> place;
    for (; item; item = item->parentItem())
        place.push_back(item->rowInParent());
    std::reverse(place.begin(), place.end());
    return place;
}

} // namespace

void SoMiraboTreeView::selectChange(QTreeWidgetItem* item, QTreeWidgetItem*)
{
    if (m_patchDepth > 0) {
        m_currentMoved = true;
        return;
    }
    m_pressChose = true;
    m_userChose = true;
    m_topology->requestUpdate(); // with the next pass that is over
    m_context.toShow = nullptr;
    const mirabo::RowKeeper::Scope announcing(m_keeper);
    choose(asItem(item));
}

/// The panels hear of the current row in the next pass.
void SoMiraboTreeView::putOffCurrent()
{
    m_currentMoved = true;
    m_topology->requestUpdate();
}

void SoMiraboTreeView::choose(SoTreeViewItem* item)
{
    // Receivers may let the row go, and other threads its node.
    SoRef<SoNode> node;
    SoRef<SoNode> kit;
    if (item) {
        const mirabo::GraphReading graph;
        if (!graph || !isInGraph(item)) {
            putOffCurrent(); // the selection, which calls this, does not bear that rows go
            return;
        }
        node = item->getNode();
        kit = item->getPartKit();
    }
    m_context.chosen = item;
    requestHighlight(item);
    announceReferences();
    Q_EMIT ignoreEnableChanged(canIgnoreOrEnable());
    if (m_context.chosen)
        Q_EMIT itemChosen(std::exchange(m_context.chosen, nullptr), m_shiftPressed);
    const mirabo::GraphReading graph;
    node.reset();
    kit.reset();
}

void SoMiraboTreeView::onItemClicked(QTreeWidgetItem* item, int)
{
    // A click on the row that was current already: it may ask for a tab of its own.
    if (!m_pressChose) {
        m_context.chosen = asItem(item);
        if (isInGraph(m_context.chosen))
            requestHighlight(m_context.chosen); // something else may be outlined
        if (m_context.chosen)
            Q_EMIT itemChosen(std::exchange(m_context.chosen, nullptr),
                              QApplication::keyboardModifiers() & Qt::ShiftModifier);
    }
    m_pressChose = true;
}

void SoMiraboTreeView::requestHighlight(SoTreeViewItem* item)
{
    if (!m_context.autoHighlight)
        return;
    const mirabo::GraphReading graph; // paths are of no use without it
    if (!graph)
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
    if (!outlinesChanges())
        goToItem(item);
    else if (item && item->isFresh() && isInGraph(item))
        requestHighlight(item);
}

void SoMiraboTreeView::goToItem(SoTreeViewItem* item)
{
    if (!item || !item->isFresh())
        return;
    reveal(item);
    scrollToItem(item); // opens its ancestors
    setCurrentItem(item);
    m_textPending = true;
    resizeAllColumns();
}

void SoMiraboTreeView::makeCurrent(SoTreeViewItem* item)
{
    {
        const PatchScope scope(*this);
        setCurrentItem(item);
    }
    m_scrollPending = true;
    resizeAllColumns();
}

void SoMiraboTreeView::scrollToCurrent()
{
    const SoTreeViewItem* current = asItem(currentItem());
    const SoTreeViewItem* above = current ? current->parentItem() : nullptr;
    while (above && above->isExpanded())
        above = above->parentItem();
    if (current && !above)
        scrollToItem(current);
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
    // Where the current row went another one has to be current, whatever the mode.
    const bool outlines = !item && outlinesChanges();
    if (changed && !m_userChose && (!item || !outlinesChanges()))
        item = changed;
    if (!item || !item->isInSight() || item == currentItem() || isUserBusy())
        return;
    if (outlines) {
        showItem(item);
        return;
    }
    m_currentMoved = false;
    goToItem(item);
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
        goToItem(occurrencesOf(node).front());
    return true;
}

SoTreeViewItem* SoMiraboTreeView::rowOfPath(const SoPath& path) const
{
    const mirabo::GraphReading graph;
    return graph ? rowOf(path, *this) : nullptr;
}

bool SoMiraboTreeView::revealPath(const SoPath& path)
{
    SoTreeViewItem* row = rowOfPath(path);
    if (!row)
        return false;
    goToItem(row);
    SoTreeViewItem* outlined = asItem(currentItem()); // a listener may have chosen another one
    if (outlined != row || !row->isFromField())
        return true;
    while (outlined && outlined->isFromField())
        outlined = outlined->parentItem();
    requestHighlight(outlined);
    return true;
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
    if (m_markedNode)
        tellPlace(occurrencesOf(m_markedNode), item);
}

/// Which of the places of a node a row is: the marks of the others may be out of view.
void SoMiraboTreeView::tellPlace(const std::vector<SoTreeViewItem*>& places, SoTreeViewItem* item)
{
    const auto at = std::find(places.begin(), places.end(), item);
    if (at == places.end())
        return;
    const int number = static_cast<int>(at - places.begin()) + 1;
    const int count = static_cast<int>(places.size());
    Q_EMIT statusHint(count == 1
                          ? tr("The only place of %1")
                                .arg(item->data(SoTreeViewItem::Type, Qt::DisplayRole).toString())
                          : tr("Place %1 of %2 of %3; \"Next\" goes on in the menu of the tree")
                                .arg(number)
                                .arg(count)
                                .arg(item->data(SoTreeViewItem::Type, Qt::DisplayRole).toString()));
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
    goToItem(items[static_cast<std::size_t>(next)]);
    tellPlace(occurrencesOf(node), asItem(currentItem())); // a listener may have changed the tree
}
