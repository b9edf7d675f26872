#include "mirabo/tree/DisabledNodes.h"

#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/NodeSlot.h"
#include "mirabo/tree/OpenBranches.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeBuilder.h"
#include "mirabo/tree/TreePatcher.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodes/SoGroup.h>

#include <algorithm>
#include <map>
#include <unordered_set>

namespace mirabo {

namespace {

/// Indices in child lists by the nodes that hold them, in rising order.
using Places = std::map<SoNode*, std::vector<int>>;

bool holds(const SavedLinks* only, const SoNode* parent, int index)
{
    return !only
           || std::any_of(only->links.begin(), only->links.end(), [=](const ParentLink& link) {
                  return link.parent == parent && link.index == index;
              });
}

/// Whether a node stands at a place, in a group that perhaps is nowhere shown.
bool isAt(const ParentLink& place, const SoNode* node)
{
    const SoChildList* children = place.parent->getChildren();
    return children && place.index < children->getLength() && (*children)[place.index] == node;
}

SavedLinks linksOf(const std::vector<SoTreeViewItem*>& rows, SoNode* node, const SavedLinks* only)
{
    SavedLinks saved{node, {}};
    std::unordered_set<const SoNode*> seen;
    for (const SoTreeViewItem* row : rows) {
        SoNode* parent = row->getParentNode();
        if (!seen.insert(parent).second)
            continue;
        const std::vector<SoNode*>& children = parent->getChildren()->getNodes();
        for (std::size_t i = 0; i < children.size(); ++i)
            if (children[i] == node && holds(only, parent, static_cast<int>(i)))
                saved.links.push_back({parent, static_cast<int>(i)});
    }
    // The node also came back to groups that have no row from which it could be taken: that were
    // deleted or disabled meanwhile, or in which it counts as a part of a kit.
    for (const ParentLink& place : only ? only->links : std::vector<ParentLink>())
        if (seen.count(place.parent.get()) == 0 && isAt(place, node))
            saved.links.push_back(place);
    return saved;
}

bool isBelow(const QTreeWidgetItem* item, const QTreeWidgetItem* above)
{
    while (item && item != above)
        item = item->parent();
    return item;
}

void grey(SoMiraboTreeView& view, SoTreeViewItem* row)
{
    row->setFresh(false);
    if (isBelow(view.currentItem(), row))
        view.setCurrentItem(row);
    view.rowsAboutToChange();
    // Nobody would tell of changes below: nothing is shown there.
    for (QTreeWidgetItem* child : row->takeRows())
        destroyRows(static_cast<SoTreeViewItem*>(child));
    row->setDisabledNode(true);
    row->parentItem()->setHasDisabledChildren(true);
}

/// Where the node would have to stand in the child list for its grey rows to be in place.
std::vector<int> placesIn(const SoTreeViewItem* parent, const SoNode* node)
{
    std::vector<int> places;
    int index = 0;
    for (int i = 0; i < parent->rowCount(); ++i) {
        const SoTreeViewItem* row = parent->rowAt(i);
        if (row->isDirectlyFromField())
            break;
        const bool isPlace = row->isDisabledNode() && row->getNode() == node;
        if (isPlace)
            places.push_back(index);
        if (isPlace || !row->isDisabledNode())
            ++index;
    }
    return places;
}

void dropRow(SoMiraboTreeView& view, SoTreeViewItem* row)
{
    SoTreeViewItem* parent = row->parentItem();
    view.rowsAboutToChange();
    destroyRows(parent->takeRow(parent->indexOfRow(row)));
    parent->childrenChanged();
    view.openBranches().rowsChanged(parent);
    bool others = false;
    for (int i = 0; i < parent->rowCount() && !others; ++i)
        others = parent->rowAt(i)->isDisabledNode();
    parent->setHasDisabledChildren(others);
}

SavedLinks putBack(const Places& places, SoNode* node)
{
    SavedLinks put{node, {}};
    for (const auto& [parent, indices] : places) {
        if (parent->isAtOrBelow(node))
            continue;
        auto* group = static_cast<SoGroup*>(parent);
        for (const int index : indices) {
            const int at = std::min(index, group->getNumChildren());
            if (group->insertChild(node, at))
                put.links.push_back({parent, at});
        }
    }
    return put;
}

} // namespace

bool mayDisable(const SoTreeViewItem* item)
{
    const SoTreeViewItem* parent = item->parentItem();
    return parent && !parent->isDead() && !item->isDead() && !item->isDirectlyFromField()
           && !item->isNamedPart() && traitsOf(parent->getNodeType()).isGroup;
}

std::shared_ptr<const SavedLinks> disableNode(SoMiraboTreeView& view, SoNode* node,
                                              const SavedLinks* only)
{
    const SoWriteLock lock;
    if (!lock)
        return nullptr;
    view.topologyManager().tryToBringUpToDate();
    std::vector<SoTreeViewItem*> rows = view.itemsOf(node);
    std::erase_if(rows, [only](const SoTreeViewItem* row) {
        return row->isDisabledNode() || !mayDisable(row)
               || (only && !holds(only, row->getParentNode(), NodeSlot::of(row).index()));
    });
    const auto saved = std::make_shared<const SavedLinks>(linksOf(rows, node, only));
    if (saved->links.empty())
        return nullptr;
    {
        const SoMiraboTreeView::PatchScope scope(view);
        for (SoTreeViewItem* row : rows)
            grey(view, row);
    }
    view.context().disabled.add(saved);
    for (auto link = saved->links.rbegin(); link != saved->links.rend(); ++link)
        static_cast<SoGroup*>(link->parent.get())->removeChild(link->index);
    for (SoTreeViewItem* row : view.itemsOf(node))
        row->setFresh(true);
    view.showLater(nullptr); // the row itself stays the current one
    view.topologyManager().forgetLastChange();
    return saved;
}

bool enableNode(SoMiraboTreeView& view, const SavedLinks& saved, SavedLinks* put)
{
    const SoWriteLock lock;
    if (!lock)
        return false;
    view.topologyManager().tryToBringUpToDate();
    const SavedLinks kept = saved; // the caller's may be the one that is erased
    SoNode* node = kept.node.get();
    Places places;
    for (const ParentLink& link : kept.links)
        places[link.parent.get()].push_back(link.index);
    SoNode* chosenBelow = nullptr;
    // Grey rows of one group may stand in different places: the last occurrence tells.
    std::vector<SoTreeViewItem*> rows = view.occurrencesOf(node);
    std::erase_if(rows, [](const SoTreeViewItem* row) { return !row->isDisabledNode(); });
    for (const SoTreeViewItem* row : rows) {
        places[row->getParentNode()] = placesIn(row->parentItem(), node);
        if (row == view.currentItem())
            chosenBelow = row->getParentNode();
    }
    const SoMiraboTreeView::PatchScope scope(view);
    for (SoTreeViewItem* row : rows)
        dropRow(view, row);
    view.context().disabled.remove(node);
    SavedLinks done = putBack(places, node);
    if (put)
        *put = std::move(done);
    if (!chosenBelow)
        return true;
    for (SoTreeViewItem* row : view.itemsOf(node))
        if (row->getParentNode() == chosenBelow) {
            view.setCurrentItem(row);
            break;
        }
    return true;
}

void restoreDisabled(SoMiraboTreeView& view, const DisabledPlaces& places)
{
    if (places.isEmpty())
        return;
    const SoMiraboTreeView::PatchScope scope(view);
    view.rowsAboutToChange();
    view.context().disabled = places;
    for (const SoNode* parent : places.parents())
        for (SoTreeViewItem* row : view.itemsOf(parent))
            if (!row->isDisabledNode() && !row->hasDisabledChildren()) {
                addGreyRows(row, view.context());
                view.openBranches().rowsChanged(row);
            }
}

void addGreyRows(SoTreeViewItem* item, TreeContext& context)
{
    const std::vector<DisabledPlaces::Place> places = context.disabled.below(item->getNode());
    if (places.empty())
        return;
    int rows = childRowCount(item);
    for (const DisabledPlaces::Place& place : places) {
        auto* row = new SoTreeViewItem(place.node, nullptr, item, context);
        item->insertRow(std::min(place.index, rows++), row);
        row->setDisabledNode(true);
    }
    item->setHasDisabledChildren(true);
    item->childrenChanged();
}

} // namespace mirabo
