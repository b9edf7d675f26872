#include "mirabo/tree/RowWalker.h"

#include "mirabo/tree/TreeRows.h"

#include <algorithm>

namespace mirabo {

namespace {

/// Rows are spread over memory: so many siblings ahead are fetched.
constexpr int kAhead = 8;

} // namespace

RowPlace RowWalker::place() const
{
    RowPlace place;
    place.reserve(m_levels.size());
    for (const Level& level : m_levels)
        place.push_back(level.row);
    return place;
}

void RowWalker::enter(QTreeWidgetItem* parent, int row)
{
    m_levels.push_back({parent, row});
    m_row = rowBelow(parent, row, m_root);
}

void RowWalker::toFirst()
{
    m_levels.clear();
    m_row = nullptr;
    if (m_root->childCount() > 0)
        enter(m_root, 0);
}

/// To the last of all rows below.
void RowWalker::descend()
{
    while (m_row->rowCount() > 0)
        enter(m_row, m_row->rowCount() - 1);
}

void RowWalker::toLast()
{
    m_levels.clear();
    m_row = nullptr;
    if (m_root->childCount() == 0)
        return;
    enter(m_root, m_root->childCount() - 1);
    descend();
}

void RowWalker::toRow(SoTreeViewItem* row)
{
    m_levels.clear();
    m_row = row;
    while (row) {
        SoTreeViewItem* above = row->parentItem();
        if (above)
            m_levels.push_back({above, above->indexOfRow(row)});
        else
            m_levels.push_back({m_root, m_root->indexOfChild(row)});
        row = above;
    }
    std::reverse(m_levels.begin(), m_levels.end());
}

void RowWalker::toPlace(const RowPlace& place)
{
    m_levels.clear();
    m_row = nullptr;
    QTreeWidgetItem* parent = m_root;
    for (const int row : place) {
        const int last = rowCountBelow(parent, m_root) - 1;
        if (last < 0)
            return;
        enter(parent, std::min(row, last));
        if (row > last) {
            descend();
            return;
        }
        parent = m_row;
    }
}

void RowWalker::toNext()
{
    if (!m_row)
        return;
    if (m_row->rowCount() > 0) {
        enter(m_row, 0);
        return;
    }
    while (!m_levels.empty()) {
        Level& level = m_levels.back();
        const int count = rowCountBelow(level.parent, m_root);
        if (++level.row < count) {
            if (level.row + kAhead < count)
                __builtin_prefetch(rowBelow(level.parent, level.row + kAhead, m_root));
            m_row = rowBelow(level.parent, level.row, m_root);
            return;
        }
        m_levels.pop_back();
    }
    m_row = nullptr;
}

void RowWalker::toPrevious()
{
    if (!m_row)
        return;
    Level& level = m_levels.back();
    if (level.row > 0) {
        if (level.row > kAhead)
            __builtin_prefetch(rowBelow(level.parent, level.row - kAhead, m_root));
        m_row = rowBelow(level.parent, --level.row, m_root);
        descend();
        return;
    }
    m_levels.pop_back();
    m_row =
        m_levels.empty() ? nullptr : rowBelow(m_levels.back().parent, m_levels.back().row, m_root);
}

} // namespace mirabo
