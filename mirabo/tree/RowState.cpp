#include "mirabo/tree/RowState.h"

#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <algorithm>

namespace mirabo {

RowPath pathOf(const SoTreeViewItem* row)
{
    RowPath path;
    for (const SoTreeViewItem* above = row->parentItem(); above; above = row->parentItem()) {
        path.push_back(above->indexOfChild(const_cast<SoTreeViewItem*>(row)));
        row = above;
    }
    std::reverse(path.begin(), path.end());
    return path;
}

SoTreeViewItem* rowAt(const SoMiraboTreeView& view, const RowPath& path)
{
    SoTreeViewItem* row = view.rootItem();
    for (auto at = path.begin(); row && at != path.end(); ++at)
        row = row->childItem(*at);
    return row;
}

std::optional<RowPath> currentPath(const SoMiraboTreeView& view)
{
    const SoTreeViewItem* current = asItem(view.currentItem());
    return current ? std::optional(pathOf(current)) : std::nullopt;
}

BranchState::BranchState(const SoMiraboTreeView& view, const SoTreeViewItem* top)
{
    struct Visit {
        const SoTreeViewItem* item;
        std::int32_t at;
    };
    const auto note = [&](const SoTreeViewItem* item, std::int32_t parent, int row) {
        m_rows.push_back(
            {parent, row, item->childCount() > 0 && view.isOpen(item), item->isBookmarked()});
        return static_cast<std::int32_t>(m_rows.size() - 1);
    };
    std::vector<Visit> open{{top, note(top, -1, 0)}};
    while (!open.empty()) {
        const Visit visit = open.back();
        open.pop_back();
        for (int row = 0, rows = visit.item->childCount(); row < rows; ++row) {
            const SoTreeViewItem* child = visit.item->childItem(row);
            if (child->childCount() > 0)
                open.push_back({child, note(child, visit.at, row)});
            else if (child->isBookmarked())
                note(child, visit.at, row);
        }
    }
    // Parents stand before what is below them.
    std::vector<bool> wanted(m_rows.size());
    for (std::size_t i = m_rows.size(); i-- > 0;) {
        wanted[i] = wanted[i] || m_rows[i].open || m_rows[i].bookmarked;
        if (wanted[i] && m_rows[i].parent >= 0)
            wanted[static_cast<std::size_t>(m_rows[i].parent)] = true;
    }
    std::vector<std::int32_t> moved(m_rows.size());
    std::int32_t kept = 0;
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (!wanted[i])
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
    if (m_rows.empty())
        return;
    view.rowsAboutToChange(); // an open branch is then only noted down
    std::vector<SoTreeViewItem*> items;
    items.reserve(m_rows.size());
    for (const Row& row : m_rows) {
        SoTreeViewItem* item = top;
        if (row.parent >= 0) {
            const SoTreeViewItem* above = items[static_cast<std::size_t>(row.parent)];
            item = above ? above->childItem(row.row) : nullptr;
        }
        items.push_back(item);
        if (!item)
            continue;
        if (row.open)
            item->setExpanded(true);
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
    if (!state.isPlain())
        m_branches.push_back({pathOf(top), std::move(state)});
}

void TreeState::addGreyRows(const SoTreeViewItem* parent, const SoNode* without)
{
    if (!parent->hasDisabledChildren())
        return;
    GreyRows grey{pathOf(parent), {}};
    for (int row = 0; row < parent->childCount(); ++row)
        if (parent->childItem(row)->isDisabledNode()
            && parent->childItem(row)->getNode() != without)
            grey.rows.push_back({row, parent->childItem(row)->getNode()});
    const auto before = [](const GreyRows& a, const GreyRows& b) {
        return a.parent.size() < b.parent.size();
    };
    m_grey.insert(std::upper_bound(m_grey.begin(), m_grey.end(), grey, before), std::move(grey));
}

void TreeState::restoreGreyRows(SoMiraboTreeView& view, const GreyRows& grey)
{
    SoTreeViewItem* parent = rowAt(view, grey.parent);
    if (!parent)
        return;
    std::vector<SoTreeViewItem*> present;
    bool isInPlace = true;
    std::size_t at = 0;
    for (int row = 0; row < parent->childCount(); ++row) {
        SoTreeViewItem* item = parent->childItem(row);
        if (!item->isDisabledNode())
            continue;
        present.push_back(item);
        isInPlace = isInPlace && at < grey.rows.size() && grey.rows[at].row == row
                    && grey.rows[at].node == item->getNode();
        ++at;
    }
    if (isInPlace || present.size() != grey.rows.size())
        return;
    view.rowsAboutToChange();
    QTreeWidgetItem* current = view.currentItem();
    for (SoTreeViewItem* item : present)
        parent->takeChild(parent->indexOfChild(item));
    for (const GreyRow& place : grey.rows) {
        const auto found = std::find_if(present.begin(), present.end(), [&](const auto* item) {
            return item && item->getNode() == place.node;
        });
        if (found == present.end())
            continue;
        parent->insertChild(std::min(place.row, parent->childCount()), *found);
        *found = nullptr;
    }
    for (SoTreeViewItem* left : present)
        if (left)
            parent->insertChild(0, left);
    parent->childrenChanged();
    if (view.currentItem() != current)
        view.setCurrentItem(current);
}

void TreeState::restoreGreyRows(SoMiraboTreeView& view) const
{
    for (const GreyRows& grey : m_grey)
        restoreGreyRows(view, grey);
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
