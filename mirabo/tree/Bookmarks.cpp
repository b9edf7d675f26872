#include "mirabo/tree/Bookmarks.h"

#include "mirabo/tree/RowWalker.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/core/SoNode.h>

#include <algorithm>
#include <utility>

namespace mirabo {

namespace {

RowPlace placeOf(const SoTreeViewItem* row)
{
    RowPlace place;
    for (; row; row = row->parentItem())
        place.push_back(row->rowInParent());
    std::reverse(place.begin(), place.end());
    return place;
}

bool isIn(const SoMiraboTreeView& tree, const SoTreeViewItem* row)
{
    while (row->parentItem())
        row = row->parentItem();
    return row->treeWidget() == &tree;
}

} // namespace

void Bookmarks::add(SoTreeViewItem* row)
{
    m_rows[row] = {row->getParentNode(), BookmarkPath::of(row)};
}

void Bookmarks::rowDies(SoTreeViewItem* row, const SoNode* node, bool isLast)
{
    const auto at = m_rows.find(row);
    if (at == m_rows.end())
        return;
    if (m_lost.size() == kMaxLost)
        m_lost.erase(m_lost.begin());
    m_lost.push_back({node, at->second.parent, isLast, std::move(at->second.path)});
    m_rows.erase(at);
}

/// The bookmarked row next to `start`, which is not it, or the outermost one on the other side.
SoTreeViewItem* Bookmarks::closest(SoMiraboTreeView& tree, const SoTreeViewItem* start,
                                   bool backward) const
{
    const RowPlace from = start ? placeOf(start) : RowPlace();
    std::pair<RowPlace, SoTreeViewItem*> next, around;
    for (const auto& mark : m_rows) {
        SoTreeViewItem* row = mark.first;
        if (row == start || !isIn(tree, row))
            continue;
        RowPlace place = placeOf(row);
        const bool isBeyond = start && (backward ? place < from : place > from);
        auto& best = isBeyond ? next : around;
        if (!best.second || (backward ? place > best.first : place < best.first))
            best = {std::move(place), row};
    }
    return next.second ? next.second : around.second;
}

SoTreeViewItem* Bookmarks::walkOn(SoMiraboTreeView& tree, SoTreeViewItem* start,
                                  bool backward) const
{
    if (m_rows.empty())
        return nullptr;
    SoTreeViewItem* const itself = start && start->isBookmarked() ? start : nullptr;
    if (m_rows.size() <= kFew) {
        SoTreeViewItem* other = closest(tree, start, backward);
        return other ? other : itself;
    }
    RowWalker walker(tree.invisibleRootItem());
    if (start)
        walker.toRow(start);
    for (int pass = 0; pass < 2; ++pass) {
        if (!start || pass == 1)
            backward ? walker.toLast() : walker.toFirst();
        else
            walker.step(backward);
        for (; walker.row(); walker.step(backward))
            if (walker.row()->isBookmarked() || walker.row() == start)
                return walker.row()->isBookmarked() ? walker.row() : nullptr;
    }
    return nullptr;
}

SoTreeViewItem* Bookmarks::walk(SoMiraboTreeView& tree, SoTreeViewItem* start, bool backward) const
{
    return start && start->isBookmarked() ? start : walkOn(tree, start, backward);
}

void Bookmarks::clear()
{
    m_lost.clear();
    for (const auto& mark : std::exchange(m_rows, {}))
        mark.first->setBookmarked(false);
}

SoTreeViewItem* Bookmarks::findRow(const SoMiraboTreeView& tree, const Lost& lost)
{
    if (!lost.node)
        return lost.path.find(tree);
    SoTreeViewItem* found = nullptr;
    for (SoTreeViewItem* row : tree.itemsOf(lost.node)) {
        // The address may be that of another node by now.
        if (row->isBookmarked() || !lost.path.endsAt(row))
            continue;
        if (row->getParentNode() == lost.parent)
            return row;
        if (lost.isLast)
            found = row;
    }
    return found;
}

bool Bookmarks::findLost(const SoMiraboTreeView& tree)
{
    const std::size_t before = m_lost.size();
    for (Lost& lost : std::exchange(m_lost, {})) {
        SoTreeViewItem* row = findRow(tree, lost);
        if (row)
            row->setBookmarked(true);
        else
            m_lost.push_back(std::move(lost));
    }
    return m_lost.size() < before;
}

std::vector<BookmarkPath> Bookmarks::paths(std::size_t limit, bool mayLook)
{
    std::vector<std::pair<RowPlace, SoTreeViewItem*>> placed;
    for (const auto& mark : m_rows)
        placed.emplace_back(placeOf(mark.first), mark.first);
    std::sort(placed.begin(), placed.end());
    std::vector<BookmarkPath> paths;
    const auto add = [&paths, limit](const BookmarkPath& path) {
        if (!path.isEmpty() && paths.size() < limit)
            paths.push_back(path);
    };
    placed.resize(std::min(placed.size(), limit));
    for (const auto& [place, row] : placed) {
        Mark& mark = m_rows[row];
        if (mayLook)
            mark = {row->getParentNode(), BookmarkPath::of(row)};
        add(mark.path);
    }
    // Those of rows that died while the scene was shown are not told: another row may stand there
    // next time.
    for (const Lost& lost : m_lost)
        if (!lost.node)
            add(lost.path);
    return paths;
}

void Bookmarks::addLost(const std::vector<BookmarkPath>& paths)
{
    for (const BookmarkPath& path : paths)
        if (!path.isEmpty() && m_lost.size() < kMaxLost)
            m_lost.push_back({nullptr, nullptr, false, path});
}

} // namespace mirabo
