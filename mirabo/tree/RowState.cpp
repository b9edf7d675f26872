#include "mirabo/tree/RowState.h"

#include "mirabo/tree/OpenBranches.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeBuilder.h"
#include "mirabo/tree/TreeRows.h"

#include <algorithm>

namespace mirabo {

RowPath pathOf(const SoTreeViewItem* row)
{
    RowPath path;
    for (const SoTreeViewItem* above = row->parentItem(); above; above = row->parentItem()) {
        path.push_back(above->indexOfRow(row));
        row = above;
    }
    path.push_back(row->rowInParent());
    std::reverse(path.begin(), path.end());
    return path;
}

SoTreeViewItem* rowAt(const SoMiraboTreeView& view, const RowPath& path)
{
    SoTreeViewItem* row = path.empty() ? nullptr : asItem(view.topLevelItem(path.front()));
    for (std::size_t level = 1; row && level < path.size(); ++level)
        row = row->rowAt(path[level]);
    return row;
}

std::optional<RowPath> currentPath(const SoMiraboTreeView& view)
{
    const SoTreeViewItem* current = asItem(view.currentItem());
    return current ? std::optional(pathOf(current)) : std::nullopt;
}

GreyRows::GreyRows(const SoTreeViewItem* parent, const SoNode* without)
{
    for (int row = 0; parent->hasDisabledChildren() && row < parent->rowCount(); ++row) {
        const SoTreeViewItem* item = parent->rowAt(row);
        if (item->isDisabledNode() && item->getNode() != without)
            m_rows.push_back(
                {row, item->getNode(), item->context().disabled.claim(item->getNode())});
    }
}

bool GreyRows::isInPlace(const SoTreeViewItem* parent) const
{
    if (m_rows.empty())
        return !parent->hasDisabledChildren();
    return GreyRows(parent).m_rows == m_rows;
}

void GreyRows::restore(SoMiraboTreeView& view, SoTreeViewItem* parent) const
{
    if (isInPlace(parent))
        return;
    view.rowsAboutToChange();
    QTreeWidgetItem* current = view.currentItem();
    std::vector<SoTreeViewItem*> present;
    for (int row = parent->rowCount(); row-- > 0;)
        if (parent->rowAt(row)->isDisabledNode())
            present.push_back(parent->takeRow(row));
    bool any = false;
    for (const Row& place : m_rows) {
        const auto found = std::find_if(present.begin(), present.end(), [&](const auto* item) {
            return item->getNode() == place.node;
        });
        SoTreeViewItem* item = nullptr;
        if (found != present.end()) {
            item = *found;
            present.erase(found);
        } else if (const auto saved = view.context().disabled.find(place.node)) {
            item = new SoTreeViewItem(saved->node.get(), nullptr, parent, view.context());
            item->setDisabledNode(true);
        }
        if (!item)
            continue;
        parent->insertRow(std::min(place.row, parent->rowCount()), item);
        any = true;
    }
    if (view.currentItem() != current
        && std::find(present.begin(), present.end(), current) == present.end())
        view.setCurrentItem(current);
    for (SoTreeViewItem* surplus : present)
        destroyRows(surplus);
    parent->setHasDisabledChildren(any);
    parent->childrenChanged();
    view.openBranches().rowsChanged(parent);
}

BranchState::BranchState(const SoMiraboTreeView& view, const SoTreeViewItem* top)
{
    struct Visit {
        const SoTreeViewItem* item;
        std::int32_t at;
    };
    const DisabledPlaces& disabled = view.context().disabled;
    const bool anyDisabled = !disabled.isEmpty();
    const auto mayHaveGreyRows = [&](const SoTreeViewItem* item) {
        return anyDisabled && !disabled.below(item->getNode()).empty();
    };
    const auto note = [&](const SoTreeViewItem* item, std::int32_t parent, int row) {
        std::int32_t grey = -1;
        if (item->hasDisabledChildren() || mayHaveGreyRows(item)) {
            grey = static_cast<std::int32_t>(m_grey.size());
            m_grey.emplace_back(item);
        }
        m_rows.push_back({parent, row, grey, view.isOpen(item), item->isBookmarked()});
        return static_cast<std::int32_t>(m_rows.size() - 1);
    };
    std::vector<Visit> open{{top, note(top, -1, 0)}};
    while (!open.empty()) {
        const Visit visit = open.back();
        open.pop_back();
        for (int row = 0, rows = visit.item->rowCount(); row < rows; ++row) {
            const SoTreeViewItem* child = visit.item->rowAt(row);
            if (child->rowCount() > 0)
                open.push_back({child, note(child, visit.at, row)});
            else if (child->isBookmarked() || view.isOpen(child) || mayHaveGreyRows(child))
                note(child, visit.at, row); // what was below may come back
        }
    }
    keepWhatTells();
}

/// Parents stand before what is below them.
void BranchState::keepWhatTells()
{
    std::vector<bool> tells(m_rows.size());
    for (std::size_t i = m_rows.size(); i-- > 0;) {
        tells[i] = tells[i] || m_rows[i].open || m_rows[i].bookmarked || m_rows[i].grey >= 0;
        if (tells[i] && m_rows[i].parent >= 0)
            tells[static_cast<std::size_t>(m_rows[i].parent)] = true;
    }
    std::vector<std::int32_t> moved(m_rows.size());
    std::int32_t kept = 0;
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (!tells[i])
            continue;
        Row row = m_rows[i];
        if (row.parent >= 0)
            row.parent = moved[static_cast<std::size_t>(row.parent)];
        moved[i] = kept;
        m_rows[static_cast<std::size_t>(kept++)] = row;
    }
    m_rows.resize(static_cast<std::size_t>(kept));
    m_rows.shrink_to_fit();
}

void BranchState::apply(SoMiraboTreeView& view, SoTreeViewItem* top) const
{
    view.rowsAboutToChange(); // an open branch is then only noted down
    if (m_rows.empty() || !m_rows.front().open)
        view.openBranches().close(top); // a root is shown open
    std::vector<SoTreeViewItem*> items;
    items.reserve(m_rows.size());
    for (const Row& row : m_rows) {
        SoTreeViewItem* item = top;
        if (row.parent >= 0) {
            const SoTreeViewItem* above = items[static_cast<std::size_t>(row.parent)];
            item = above ? above->rowAt(row.row) : nullptr;
        }
        items.push_back(item);
        if (!item)
            continue;
        if (row.grey >= 0) // first, for the rows below go by their numbers
            m_grey[static_cast<std::size_t>(row.grey)].restore(view, item);
        if (row.open)
            view.openBranches().open(item);
        if (row.bookmarked)
            item->setBookmarked(true);
    }
}

TreeState::TreeState(const SoMiraboTreeView& view) : m_isKnown(true), m_current(currentPath(view))
{
}

void TreeState::addBranch(const SoMiraboTreeView& view, const SoTreeViewItem* top)
{
    BranchState state(view, top);
    if (!state.isPlain() || !top->parentItem())
        m_branches.push_back({pathOf(top), std::move(state)});
}

void TreeState::addGreyRows(const SoTreeViewItem* parent, const SoNode* without)
{
    if (!parent->hasDisabledChildren())
        return;
    List list{pathOf(parent), GreyRows(parent, without)};
    const auto isAbove = [](const List& a, const List& b) {
        return a.parent.size() < b.parent.size();
    };
    const auto at = std::upper_bound(m_lists.begin(), m_lists.end(), list, isAbove);
    m_lists.insert(at, std::move(list));
}

void TreeState::restoreGreyRows(SoMiraboTreeView& view) const
{
    for (const List& list : m_lists)
        if (SoTreeViewItem* parent = rowAt(view, list.parent))
            list.rows.restore(view, parent);
}

void TreeState::restore(SoMiraboTreeView& view) const
{
    restoreGreyRows(view);
    for (const Branch& branch : m_branches)
        if (SoTreeViewItem* top = rowAt(view, branch.path))
            branch.state.apply(view, top);
    if (SoTreeViewItem* current = m_current ? rowAt(view, *m_current) : nullptr)
        view.makeCurrent(current);
}

} // namespace mirabo
