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
    m_row = asItem(parent->child(row));
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
    while (m_row->childCount() > 0)
        enter(m_row, m_row->childCount() - 1);
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
    for (QTreeWidgetItem* at = row; at;) {
        QTreeWidgetItem* above = at->parent();
        QTreeWidgetItem* parent = above ? above : m_root;
        m_levels.push_back({parent, parent->indexOfChild(at)});
        at = above;
    }
    std::reverse(m_levels.begin(), m_levels.end());
}

void RowWalker::toPlace(const RowPlace& place)
{
    m_levels.clear();
    m_row = nullptr;
    QTreeWidgetItem* parent = m_root;
    for (const int row : place) {
        const int last = parent->childCount() - 1;
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
    if (m_row->childCount() > 0) {
        enter(m_row, 0);
        return;
    }
    while (!m_levels.empty()) {
        Level& level = m_levels.back();
        const int count = level.parent->childCount();
        if (++level.row < count) {
            if (level.row + kAhead < count)
                __builtin_prefetch(level.parent->child(level.row + kAhead));
            m_row = asItem(level.parent->child(level.row));
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
            __builtin_prefetch(level.parent->child(level.row - kAhead));
        m_row = asItem(level.parent->child(--level.row));
        descend();
        return;
    }
    m_levels.pop_back();
    m_row = m_levels.empty() ? nullptr : asItem(m_levels.back().parent->child(m_levels.back().row));
}

} // namespace mirabo
