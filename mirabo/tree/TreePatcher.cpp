#include "mirabo/tree/TreePatcher.h"

#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/OpenBranches.h"
#include "mirabo/tree/RowList.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeContext.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/nodes/SoGroup.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <unordered_set>

namespace mirabo {

namespace {

/// From here on rows are not taken one by one but all at once, and those that stay are put back.
constexpr int kBulkRows = 32;

PlacedNode placeOf(const SoTreeViewItem* item)
{
    return {item->getSourceField(), item->getNode()};
}

/// Where the entries of a child list have their rows, of which some stand for disabled nodes.
class EntryRows {
public:
    /// Item null: those at the top level.
    EntryRows(const SoMiraboTreeView& view, SoTreeViewItem* item)
        : m_list(view, item), m_item(item), m_rows(item ? childRowCount(item) : m_list.count())
    {
        if (item && item->hasDisabledChildren())
            findGreyRows(view.context());
    }
    /// Number of rows for entries.
    int count() const { return m_rows - static_cast<int>(m_grey.size()); }
    /// New rows go in front of that; for count() behind all.
    int rowOf(int entry) const
    {
        int row = entry;
        for (const Grey& grey : m_grey)
            if (grey.row <= row)
                ++row;
        return row;
    }
    const SoNode* nodeAt(int entry) const { return m_list.at(rowOf(entry))->getNode(); }
    /// Whether the row of `entry` stands for `other` of the list; true beyond both ends.
    bool agree(int entry, const ShownChildren& children, int other) const
    {
        const bool isEntry = other >= 0 && other < children.count();
        if (entry < 0 || entry >= count())
            return !isEntry;
        return isEntry && nodeAt(entry) == children[other];
    }
    /// Rows from `row` on have moved.
    void moved(int row, int by)
    {
        for (Grey& grey : m_grey)
            if (grey.row >= row)
                keepRow(grey.item, grey.row += by);
    }

private:
    struct Grey {
        int row;
        SoTreeViewItem* item;
    };

    void findGreyRows(const TreeContext& context)
    {
        std::unordered_set<const SoNode*> seen;
        for (const DisabledPlaces::Place& place : context.disabled.below(m_item->getNode())) {
            if (!seen.insert(place.node).second)
                continue;
            for (SoTreeViewItem* item : context.index.itemsOf(place.node))
                if (item->isDisabledNode() && item->parentItem() == m_item)
                    m_grey.push_back({rowOfItem(item), item});
        }
        std::sort(m_grey.begin(), m_grey.end(),
                  [](const Grey& a, const Grey& b) { return a.row < b.row; });
    }
    /// Rows that the filter shows know their number among those only.
    void keepRow(SoTreeViewItem* item, int row) const
    {
        if (!m_item->hasHiddenRows())
            item->setLastKnownRow(row);
    }
    int rowOfItem(SoTreeViewItem* item) const
    {
        if (m_item->hasHiddenRows())
            return m_item->indexOfRow(item);
        if (m_item->rowAt(item->lastKnownRow()) != item)
            item->setLastKnownRow(m_item->indexOfRow(item));
        return item->lastKnownRow();
    }

    RowList m_list;
    SoTreeViewItem* m_item;
    int m_rows;
    std::vector<Grey> m_grey; ///< by row
};

/// Rows of the nodes that one field holds; they stand together.
struct FieldRows {
    int begin = 0;
    int count = 0;
};

/// The first row behind those of the same field as `row`.
int endOfField(const SoTreeViewItem* item, int row)
{
    const SoField* field = item->rowAt(row)->getSourceField();
    int low = row + 1;
    for (int high = item->rowCount(); low < high;) {
        // Rows of other fields differ from here on, so that halves decide.
        const int middle = low + (high - low) / 2;
        if (item->rowAt(middle)->getSourceField() == field)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

FieldRows rowsOf(const SoTreeViewItem* item, const SoField* field)
{
    int row = childRowCount(item);
    while (row < item->rowCount() && item->rowAt(row)->getSourceField() != field)
        row = endOfField(item, row);
    return {row, row < item->rowCount() ? endOfField(item, row) - row : 0};
}

/// The values of a field that have rows: all of them, if there are so many, or else those that are
/// not null, in `copy`. `index` counts among them then.
const std::vector<SoNode*>& valuesWithRows(const SoMNodeField* field, int rows, int& index,
                                           std::vector<SoNode*>& copy)
{
    const std::vector<SoNode*>& values = field->getValues();
    if (static_cast<int>(values.size()) == rows)
        return values;
    const auto isNull = [](const SoNode* node) { return !node; };
    const auto before = std::clamp(index, 0, static_cast<int>(values.size()));
    index -= static_cast<int>(std::count_if(values.begin(), values.begin() + before, isNull));
    std::remove_copy_if(values.begin(), values.end(), std::back_inserter(copy), isNull);
    return copy;
}

/// Whether a row stands for an entry of a field's list; true beyond both ends.
bool agrees(const SoTreeViewItem* item, const FieldRows& rows, int row,
            const std::vector<SoNode*>& nodes, int entry)
{
    const bool isEntry = entry >= 0 && entry < static_cast<int>(nodes.size());
    if (row < 0 || row >= rows.count)
        return !isEntry;
    return isEntry
           && item->rowAt(rows.begin + row)->getNode() == nodes[static_cast<std::size_t>(entry)];
}

/// Keeps what the user has opened and chosen in some rows of a list, and below them, while they are
/// taken out and put back.
class ViewState {
public:
    ViewState(SoMiraboTreeView& view, const RowList& list, int begin, int end)
        : m_view(view), m_current(view.currentItem())
    {
        std::vector<SoTreeViewItem*> open;
        for (int row = begin; row < end; ++row)
            look(list.at(row), open);
        while (!open.empty()) {
            const SoTreeViewItem* item = open.back();
            open.pop_back();
            for (int i = 0; i < item->rowCount(); ++i)
                look(item->rowAt(i), open);
        }
    }
    /// A row is going away with everything below it.
    void forget(const SoTreeViewItem* gone)
    {
        const auto isBelow = [gone](const SoTreeViewItem* item) {
            while (item && item != gone)
                item = item->parentItem();
            return item != nullptr;
        };
        std::erase_if(m_expanded, isBelow);
        if (m_holdsCurrent && isBelow(asItem(m_current)))
            m_holdsCurrent = false;
    }
    void restore()
    {
        for (SoTreeViewItem* item : m_expanded)
            item->setExpanded(true);
        if (m_holdsCurrent)
            m_view.setCurrentItem(m_current);
    }

private:
    void look(SoTreeViewItem* item, std::vector<SoTreeViewItem*>& open)
    {
        if (item == m_current)
            m_holdsCurrent = true;
        if (item->rowCount() == 0)
            return;
        if (m_view.isOpen(item))
            m_expanded.push_back(item);
        open.push_back(item);
    }

    SoMiraboTreeView& m_view;
    QTreeWidgetItem* m_current;
    bool m_holdsCurrent = false;
    std::vector<SoTreeViewItem*> m_expanded;
};

} // namespace

int childRowCount(const SoTreeViewItem* item)
{
    int low = 0;
    for (int high = item->rowCount(); low < high;) {
        const int middle = low + (high - low) / 2;
        if (item->rowAt(middle)->isDirectlyFromField())
            high = middle;
        else
            low = middle + 1;
    }
    return low;
}

TreePatcher::TreePatcher(SoMiraboTreeView& view)
    : m_view(view), m_context(view.context()), m_builder(view.context())
{
}

RowList TreePatcher::rowsBelow(SoTreeViewItem* item) const
{
    return RowList(m_view, item);
}

/// Rows from `row` on have come, gone or moved.
void TreePatcher::rowsChanged(SoTreeViewItem* item, int row)
{
    if (!item)
        return; // top-level rows count themselves
    item->childrenChanged(row);
    m_view.openBranches().rowsChanged(item);
}

void TreePatcher::insertRows(SoTreeViewItem* item, int row, const PlacedNode* first, int count)
{
    if (count == 0)
        return;
    m_view.rowsAboutToChange();
    QList<QTreeWidgetItem*> rows;
    rows.reserve(count);
    for (int i = 0; i < count; ++i)
        rows.append(m_builder.build(first[i].node, first[i].field, item));
    rowsBelow(item).insert(row, rows);
    rowsChanged(item, row);
}

void TreePatcher::insertRow(SoTreeViewItem* item, int row, const PlacedNode& place)
{
    m_view.rowsAboutToChange();
    rowsBelow(item).insert(row, m_builder.build(place.node, place.field, item));
    rowsChanged(item, row);
}

void TreePatcher::removeRow(SoTreeViewItem* item, int row)
{
    m_view.rowsAboutToChange();
    const SbTime start = SbTime::monotonic();
    auto* taken = rowsBelow(item).take(row);
    const SbTime end = SbTime::monotonic();
    destroyRows(taken);
    rowsChanged(item, row); // first: it may have been the last one of an open branch
    m_view.openBranches().removalTook(static_cast<qint64>((end - start).getValue() * 1e9));
}

void TreePatcher::removeRows(SoTreeViewItem* item, int row, int count)
{
    const RowList list = rowsBelow(item);
    if (count == list.count() && count > 0) {
        m_view.rowsAboutToChange();
        for (QTreeWidgetItem* taken : list.takeAll())
            destroyRows(static_cast<SoTreeViewItem*>(taken));
        rowsChanged(item);
        return;
    }
    if (count > kBulkRows) {
        rearrange(item, row, row + count, nullptr, 0);
        return;
    }
    for (int i = 0; i < count; ++i)
        removeRow(item, row);
}

/// Replaces the rows [begin, end) by rows for `count` places, keeping those that are wanted.
void TreePatcher::rearrange(SoTreeViewItem* item, int begin, int end, const PlacedNode* first,
                            int count)
{
    m_view.rowsAboutToChange();
    const RowList list = rowsBelow(item);
    // Nearly all rows of the tree stand below the first top-level one: it stays.
    const int from = item ? 0 : begin;
    const int to = item ? list.count() : end;
    ViewState state(m_view, list, from, to);
    std::unordered_multimap<const SoNode*, SoTreeViewItem*> old;
    for (int row = end; row-- > begin;) // an inserted duplicate is found first
        old.emplace(list.at(row)->getNode(), list.at(row));
    QList<QTreeWidgetItem*> rows;
    rows.reserve(to - from - (end - begin) + count);
    for (int row = from; row < begin; ++row)
        rows.append(list.at(row));
    std::vector<std::pair<int, PlacedNode>> missing;
    for (int i = 0; i < count; ++i) {
        auto [at, last] = old.equal_range(first[i].node);
        while (at != last && at->second->getSourceField() != first[i].field)
            ++at;
        if (at == last)
            missing.emplace_back(rows.size(), first[i]);
        rows.append(at == last ? nullptr : at->second);
        if (at != last)
            old.erase(at);
    }
    for (int row = end; row < to; ++row)
        rows.append(list.at(row));
    for (const auto& gone : old)
        state.forget(gone.second);

    if (item)
        list.takeAll();
    for (int row = from; !item && row < to; ++row)
        list.take(from);
    for (const auto& gone : old)
        destroyRows(gone.second);
    for (const auto& [row, place] : missing)
        rows[row] = m_builder.build(place.node, place.field, item);
    list.insert(from, rows);
    rowsChanged(item);
    state.restore();
}

bool TreePatcher::syncRows(SoTreeViewItem* item, int begin, int end,
                           const std::vector<PlacedNode>& wanted)
{
    int first = 0;
    int last = static_cast<int>(wanted.size());
    const auto at = [&wanted](int i) -> const PlacedNode& {
        return wanted[static_cast<std::size_t>(i)];
    };
    const RowList list = rowsBelow(item);
    while (begin < end && first < last && placeOf(list.at(begin)) == at(first))
        ++begin, ++first;
    while (begin < end && first < last && placeOf(list.at(end - 1)) == at(last - 1))
        --end, --last;
    if (begin == end && first == last)
        return false;
    const PlacedNode* places = wanted.data() + first;
    if (begin == end) {
        insertRows(item, begin, places, last - first);
    } else if (first == last) {
        removeRows(item, begin, end - begin);
    } else if (end - begin == 1 && last - first == 1) {
        removeRow(item, begin);
        insertRow(item, begin, *places);
    } else {
        rearrange(item, begin, end, places, last - first);
    }
    return true;
}

/// Whether the rows that are not disabled are those of the children.
bool TreePatcher::isInLine(const SoTreeViewItem* item) const
{
    const ShownChildren children = shownChildren(item->getNode(), m_context);
    int entry = 0;
    for (int row = 0, rows = childRowCount(item); row < rows; ++row) {
        const SoTreeViewItem* child = item->rowAt(row);
        if (child->isDisabledNode())
            continue;
        if (entry >= children.count() || children[entry] != child->getNode())
            return false;
        ++entry;
    }
    return entry == children.count();
}

/// Takes the rows of disabled nodes aside and puts them back behind the rows that they followed.
bool TreePatcher::syncAroundDisabled(SoTreeViewItem* item)
{
    if (isInLine(item))
        return false;
    struct Aside {
        QTreeWidgetItem* row;
        QTreeWidgetItem* before; ///< only compared
    };
    const QTreeWidgetItem* current = m_view.currentItem();
    std::vector<Aside> aside;
    QTreeWidgetItem* before = nullptr;
    for (int row = 0; row < childRowCount(item);) {
        if (!item->rowAt(row)->isDisabledNode()) {
            before = item->rowAt(row++);
            continue;
        }
        m_view.rowsAboutToChange();
        aside.push_back({item->takeRow(row), before});
    }
    item->setHasDisabledChildren(false);
    syncChildren(item);
    std::unordered_map<const QTreeWidgetItem*, int> rows;
    for (int row = 0; row < childRowCount(item); ++row)
        rows.emplace(item->rowAt(row), row);
    // From behind, so that the rows found stay right; what lost its place goes to the front.
    for (auto at = aside.rbegin(); at != aside.rend(); ++at) {
        const auto found = rows.find(at->before);
        item->insertRow(found == rows.end() ? 0 : found->second + 1, at->row);
        if (at->row == current)
            m_view.setCurrentItem(at->row);
    }
    item->setHasDisabledChildren(!aside.empty());
    rowsChanged(item);
    return true;
}

ShownChildren TreePatcher::childrenOf(const SoTreeViewItem* item) const
{
    if (item)
        return shownChildren(item->getNode(), m_context);
    const SoGroup* container = m_view.getContainer();
    return container ? ShownChildren{&container->getChildren()->getNodes(), 0} : ShownChildren{};
}

bool TreePatcher::childInserted(SoTreeViewItem* item, const SoNode* child, int index)
{
    EntryRows rows(m_view, item);
    const ShownChildren children = childrenOf(item);
    const int entry = index - children.first;
    const bool asExpected = children.count() == rows.count() + 1 && entry >= 0
                            && entry <= rows.count() && children[entry] == child
                            && rows.agree(entry - 1, children, entry - 1)
                            && rows.agree(entry, children, entry + 1);
    if (!asExpected)
        return syncChildren(item);
    const int row = rows.rowOf(entry);
    insertRow(item, row, {nullptr, children[entry]});
    rows.moved(row, 1);
    return true;
}

bool TreePatcher::childRemoved(SoTreeViewItem* item, const SoNode* child, int index)
{
    EntryRows rows(m_view, item);
    const ShownChildren children = childrenOf(item);
    const int entry = index - children.first;
    const bool asExpected = children.count() == rows.count() - 1 && entry >= 0
                            && entry < rows.count() && rows.nodeAt(entry) == child
                            && rows.agree(entry - 1, children, entry - 1)
                            && rows.agree(entry + 1, children, entry);
    if (!asExpected)
        return syncChildren(item);
    const int row = rows.rowOf(entry);
    removeRow(item, row);
    rows.moved(row, -1);
    return true;
}

bool TreePatcher::childReplaced(SoTreeViewItem* item, const SoNode* child, int index)
{
    const EntryRows rows(m_view, item);
    const ShownChildren children = childrenOf(item);
    const int entry = index - children.first;
    const bool asExpected = children.count() == rows.count() && entry >= 0 && entry < rows.count()
                            && children[entry] == child && rows.nodeAt(entry) != child
                            && rows.agree(entry - 1, children, entry - 1)
                            && rows.agree(entry + 1, children, entry + 1);
    if (!asExpected)
        return syncChildren(item);
    const int row = rows.rowOf(entry);
    removeRow(item, row);
    insertRow(item, row, {nullptr, children[entry]});
    return true;
}

// A field of a kit may end what is shown of those behind it.

bool TreePatcher::fieldNodeInserted(SoTreeViewItem* item, SoMNodeField* field, int index)
{
    const FieldRows rows = rowsOf(item, field);
    std::vector<SoNode*> copy;
    const std::vector<SoNode*>& nodes = valuesWithRows(field, rows.count + 1, index, copy);
    const bool asExpected =
        rows.count > 0 && !traitsOf(item->getNodeType()).isKit && index >= 0 && index <= rows.count
        && static_cast<int>(nodes.size()) == rows.count + 1
        && nodes[static_cast<std::size_t>(index)] && agrees(item, rows, index - 1, nodes, index - 1)
        && agrees(item, rows, index, nodes, index + 1);
    if (!asExpected)
        return syncFields(item);
    insertRow(item, rows.begin + index, {field, nodes[static_cast<std::size_t>(index)]});
    return true;
}

bool TreePatcher::fieldNodeRemoved(SoTreeViewItem* item, SoMNodeField* field, const SoNode* child,
                                   int index)
{
    const FieldRows rows = rowsOf(item, field);
    std::vector<SoNode*> copy;
    const std::vector<SoNode*>& nodes = valuesWithRows(field, rows.count - 1, index, copy);
    const bool asExpected = !traitsOf(item->getNodeType()).isKit && index >= 0 && index < rows.count
                            && static_cast<int>(nodes.size()) == rows.count - 1
                            && item->rowAt(rows.begin + index)->getNode() == child
                            && agrees(item, rows, index - 1, nodes, index - 1)
                            && agrees(item, rows, index + 1, nodes, index);
    if (!asExpected)
        return syncFields(item);
    removeRow(item, rows.begin + index);
    return true;
}

bool TreePatcher::fieldNodeReplaced(SoTreeViewItem* item, SoMNodeField* field, int index)
{
    const FieldRows rows = rowsOf(item, field);
    const std::vector<SoNode*>& nodes = field->getValues();
    const auto at = static_cast<std::size_t>(index);
    const bool asExpected = !traitsOf(item->getNodeType()).isKit && index >= 0 && index < rows.count
                            && static_cast<int>(nodes.size()) == rows.count && nodes[at]
                            && agrees(item, rows, index - 1, nodes, index - 1)
                            && agrees(item, rows, index + 1, nodes, index + 1);
    if (!asExpected)
        return syncFields(item);
    if (item->rowAt(rows.begin + index)->getNode() == nodes[at])
        return false;
    removeRow(item, rows.begin + index);
    insertRow(item, rows.begin + index, {field, nodes[at]});
    return true;
}

bool TreePatcher::syncChildren(SoTreeViewItem* item)
{
    if (!item)
        return syncTops();
    if (item->hasDisabledChildren())
        return syncAroundDisabled(item);
    const ShownChildren children = shownChildren(item->getNode(), m_context);
    std::vector<PlacedNode> wanted(static_cast<std::size_t>(children.count()));
    for (int i = 0; i < children.count(); ++i)
        wanted[static_cast<std::size_t>(i)].node = children[i];
    return syncRows(item, 0, childRowCount(item), wanted);
}

bool TreePatcher::syncFields(SoTreeViewItem* item)
{
    if (!item)
        return false; // nodes in fields of the container are not shown
    std::vector<PlacedNode> wanted;
    FieldNodes().collect(item->getNode(), wanted);
    return syncRows(item, childRowCount(item), item->rowCount(), wanted);
}

bool TreePatcher::sync(SoTreeViewItem* item)
{
    const bool children = syncChildren(item);
    return syncFields(item) || children;
}

bool TreePatcher::syncSince(SoTreeViewItem* item, std::uint64_t since)
{
    struct Visit {
        SoTreeViewItem* item;
        std::uint64_t since;
    };
    bool changed = false;
    std::vector<Visit> open{{item, since}};
    while (!open.empty()) {
        Visit visit = open.back();
        open.pop_back();
        if (visit.item->isDisabledNode() || visit.item->isDead())
            continue;
        const auto unheard = m_context.unheard.find(visit.item->getNode());
        if (unheard != m_context.unheard.end())
            visit.since = std::min(visit.since, unheard->second);
        changed = sync(visit.item) || changed;
        for (int i = 0; i < visit.item->rowCount(); ++i) {
            SoTreeViewItem* child = visit.item->rowAt(i);
            const SoNode* node = child->getNode();
            if (node && (node->getChangeId() >= visit.since || m_context.unheard.count(node)))
                open.push_back({child, visit.since});
        }
    }
    return changed;
}

bool TreePatcher::syncTops()
{
    std::vector<PlacedNode> wanted;
    for (SoNode* node : m_view.topNodes())
        wanted.push_back({nullptr, node});
    return syncRows(nullptr, 0, m_view.topLevelItemCount(), wanted);
}

bool TreePatcher::syncTopsSince(std::uint64_t since)
{
    bool changed = syncTops();
    const RowList tops = rowsBelow(nullptr);
    for (int i = 0; i < tops.count(); ++i) {
        SoTreeViewItem* top = tops.at(i);
        const SoNode* node = top->getNode();
        if (top == m_view.rootItem()
            || (node && (node->getChangeId() >= since || m_context.unheard.count(node))))
            changed = syncSince(top, since) || changed;
    }
    return changed;
}

} // namespace mirabo
