#include "mirabo/tree/TreePatcher.h"

#include "mirabo/tree/OpenBranches.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeContext.h"

#include <kalmyr/core/SoNode.h>

#include <QElapsedTimer>

#include <algorithm>
#include <unordered_map>

namespace mirabo {

namespace {

/// From here on rows are not taken one by one but all at once, and those that stay are put back.
constexpr int kBulkRows = 32;

PlacedNode placeOf(const SoTreeViewItem* item)
{
    return {item->getSourceField(), item->getNode()};
}

/// Whether row `row` stands for entry `entry`; true beyond both ends.
bool agrees(const SoTreeViewItem* item, int row, int rows, const ShownChildren& children, int entry)
{
    if (row < 0 || row >= rows)
        return entry < 0 || entry >= children.count();
    return entry >= 0 && entry < children.count()
           && item->childItem(row)->getNode() == children[entry];
}

/// What the user has opened and chosen below a row, while its rows are taken out and put back.
class ViewState {
public:
    ViewState(SoMiraboTreeView& view, SoTreeViewItem* top)
        : m_view(view), m_current(view.currentItem())
    {
        std::vector<SoTreeViewItem*> open{top};
        while (!open.empty()) {
            SoTreeViewItem* item = open.back();
            open.pop_back();
            for (int i = 0; i < item->childCount(); ++i) {
                SoTreeViewItem* child = item->childItem(i);
                if (child == m_current)
                    m_holdsCurrent = true;
                if (child->childCount() == 0)
                    continue;
                if (m_view.isOpen(child))
                    m_expanded.push_back(child);
                open.push_back(child);
            }
        }
    }
    /// A row is going away with everything below it.
    void forget(const SoTreeViewItem* gone)
    {
        const auto isBelow = [gone](const QTreeWidgetItem* item) {
            while (item && item != gone)
                item = item->parent();
            return item != nullptr;
        };
        std::erase_if(m_expanded, isBelow);
        if (m_holdsCurrent && isBelow(m_current))
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
    SoMiraboTreeView& m_view;
    QTreeWidgetItem* m_current;
    bool m_holdsCurrent = false;
    std::vector<SoTreeViewItem*> m_expanded;
};

} // namespace

int childRowCount(const SoTreeViewItem* item)
{
    int low = 0;
    for (int high = item->childCount(); low < high;) {
        const int middle = low + (high - low) / 2;
        if (item->childItem(middle)->isDirectlyFromField())
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

void TreePatcher::insertRows(SoTreeViewItem* item, int row, const PlacedNode* first, int count)
{
    if (count == 0)
        return;
    m_view.rowsAboutToChange();
    QList<QTreeWidgetItem*> rows;
    rows.reserve(count);
    for (int i = 0; i < count; ++i)
        rows.append(m_builder.build(first[i].node, first[i].field, item));
    item->insertChildren(row, rows);
    item->childrenChanged(row);
}

void TreePatcher::insertRow(SoTreeViewItem* item, int row, const PlacedNode& place)
{
    m_view.rowsAboutToChange();
    item->insertChild(row, m_builder.build(place.node, place.field, item));
    item->childrenChanged(row);
}

void TreePatcher::removeRow(SoTreeViewItem* item, int row)
{
    m_view.rowsAboutToChange();
    QElapsedTimer timer;
    timer.start();
    auto* taken = static_cast<SoTreeViewItem*>(item->takeChild(row));
    m_view.openBranches().removalTook(timer.nsecsElapsed());
    destroyRows(taken);
    item->childrenChanged(row);
}

void TreePatcher::removeRows(SoTreeViewItem* item, int row, int count)
{
    if (count == item->childCount() && count > 0) {
        m_view.rowsAboutToChange();
        for (QTreeWidgetItem* taken : item->takeChildren())
            destroyRows(static_cast<SoTreeViewItem*>(taken));
        item->childrenChanged();
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
    ViewState state(m_view, item);
    std::unordered_multimap<const SoNode*, SoTreeViewItem*> old;
    for (int row = end; row-- > begin;) // an inserted duplicate is found first
        old.emplace(item->childItem(row)->getNode(), item->childItem(row));
    QList<QTreeWidgetItem*> rows;
    rows.reserve(item->childCount() - (end - begin) + count);
    for (int row = 0; row < begin; ++row)
        rows.append(item->child(row));
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
    for (int row = end; row < item->childCount(); ++row)
        rows.append(item->child(row));
    for (const auto& gone : old)
        state.forget(gone.second);

    item->takeChildren();
    for (const auto& gone : old)
        destroyRows(gone.second);
    for (const auto& [row, place] : missing)
        rows[row] = m_builder.build(place.node, place.field, item);
    item->insertChildren(0, rows);
    item->childrenChanged();
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
    while (begin < end && first < last && placeOf(item->childItem(begin)) == at(first))
        ++begin, ++first;
    while (begin < end && first < last && placeOf(item->childItem(end - 1)) == at(last - 1))
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
        const SoTreeViewItem* child = item->childItem(row);
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
        if (!item->childItem(row)->isDisabledNode()) {
            before = item->child(row++);
            continue;
        }
        m_view.rowsAboutToChange();
        aside.push_back({item->takeChild(row), before});
    }
    item->setHasDisabledChildren(false);
    syncChildren(item);
    std::unordered_map<const QTreeWidgetItem*, int> rows;
    for (int row = 0; row < childRowCount(item); ++row)
        rows.emplace(item->child(row), row);
    // From behind, so that the rows found stay right; what lost its place goes to the front.
    for (auto at = aside.rbegin(); at != aside.rend(); ++at) {
        const auto found = rows.find(at->before);
        item->insertChild(found == rows.end() ? 0 : found->second + 1, at->row);
        if (at->row == current)
            m_view.setCurrentItem(at->row);
    }
    item->setHasDisabledChildren(!aside.empty());
    item->childrenChanged();
    return true;
}

bool TreePatcher::childInserted(SoTreeViewItem* item, const SoNode* child, int index)
{
    if (item->hasDisabledChildren())
        return syncAroundDisabled(item);
    const ShownChildren children = shownChildren(item->getNode(), m_context);
    const int row = index - children.first;
    const int rows = childRowCount(item);
    const bool asExpected = children.count() == rows + 1 && row >= 0 && row <= rows
                            && children[row] == child
                            && agrees(item, row - 1, rows, children, row - 1)
                            && agrees(item, row, rows, children, row + 1);
    if (!asExpected)
        return syncChildren(item);
    insertRow(item, row, {nullptr, children[row]});
    return true;
}

bool TreePatcher::childRemoved(SoTreeViewItem* item, const SoNode* child, int index)
{
    if (item->hasDisabledChildren())
        return syncAroundDisabled(item);
    const ShownChildren children = shownChildren(item->getNode(), m_context);
    const int row = index - children.first;
    const int rows = childRowCount(item);
    const bool asExpected = children.count() == rows - 1 && row >= 0 && row < rows
                            && item->childItem(row)->getNode() == child
                            && agrees(item, row - 1, rows, children, row - 1)
                            && agrees(item, row + 1, rows, children, row);
    if (!asExpected)
        return syncChildren(item);
    removeRow(item, row);
    return true;
}

bool TreePatcher::childReplaced(SoTreeViewItem* item, const SoNode* child, int index)
{
    if (item->hasDisabledChildren())
        return syncAroundDisabled(item);
    const ShownChildren children = shownChildren(item->getNode(), m_context);
    const int row = index - children.first;
    const int rows = childRowCount(item);
    const bool asExpected = children.count() == rows && row >= 0 && row < rows
                            && children[row] == child && item->childItem(row)->getNode() != child
                            && agrees(item, row - 1, rows, children, row - 1)
                            && agrees(item, row + 1, rows, children, row + 1);
    if (!asExpected)
        return syncChildren(item);
    removeRow(item, row);
    insertRow(item, row, {nullptr, children[row]});
    return true;
}

bool TreePatcher::syncChildren(SoTreeViewItem* item)
{
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
    std::vector<PlacedNode> wanted;
    FieldNodes().collect(item->getNode(), wanted);
    return syncRows(item, childRowCount(item), item->childCount(), wanted);
}

bool TreePatcher::sync(SoTreeViewItem* item)
{
    const bool children = syncChildren(item);
    return syncFields(item) || children;
}

bool TreePatcher::syncTree()
{
    bool changed = false;
    std::vector<SoTreeViewItem*> open;
    for (int i = 0; i < m_view.topLevelItemCount(); ++i)
        open.push_back(static_cast<SoTreeViewItem*>(m_view.topLevelItem(i)));
    while (!open.empty()) {
        SoTreeViewItem* item = open.back();
        open.pop_back();
        if (item->isDisabledNode())
            continue;
        changed = sync(item) || changed;
        for (int i = 0; i < item->childCount(); ++i)
            open.push_back(item->childItem(i));
    }
    return changed;
}

} // namespace mirabo
