#pragma once

#include <cstdint>
#include <optional>
#include <vector>

class SoMiraboTreeView;
class SoNode;
class SoTreeViewItem;

/// What the user has made of rows, to be given to the rows that take their place later.
namespace mirabo {

/// Where a row stands: its number among its siblings, level by level, from below the root on. Means
/// the same row whenever the graph is the same.
using RowPath = std::vector<int>;

RowPath pathOf(const SoTreeViewItem* row);
/// Null when there is no such row.
SoTreeViewItem* rowAt(const SoMiraboTreeView& view, const RowPath& path);
/// The same for the current row; no path: there is none.
std::optional<RowPath> currentPath(const SoMiraboTreeView& view);

/// Which rows of a branch are open, and which have bookmarks.
class BranchState {
public:
    BranchState() = default;
    BranchState(const SoMiraboTreeView& view, const SoTreeViewItem* top);

    /// Nothing is open and nothing is marked.
    bool isPlain() const { return m_rows.empty(); }
    /// Opens and marks what the old rows had; rows that are not there are left out.
    void apply(SoMiraboTreeView& view, SoTreeViewItem* top) const;

private:
    struct Row {
        std::int32_t parent; ///< in this list; -1 for the top
        std::int32_t row;
        bool open;
        bool bookmarked;
    };
    std::vector<Row> m_rows; ///< only those with something to tell at or below them
};

/// What a command finds when it comes back to one of its two states of the graph: the row that was
/// current when it left it, and the branches that went with it.
class TreeState {
public:
    TreeState() = default;
    /// Notes down the current row. The branches are added before the graph changes.
    explicit TreeState(const SoMiraboTreeView& view);
    void addBranch(const SoMiraboTreeView& view, const SoTreeViewItem* top);
    /// Notes down where the rows of disabled nodes stand among those of a list that is edited: the
    /// graph does not tell.
    void addGreyRows(const SoTreeViewItem* parent, const SoNode* without = nullptr);

    bool isKnown() const { return m_isKnown; }
    void restore(SoMiraboTreeView& view) const;
    /// Only the rows of disabled nodes.
    void restoreGreyRows(SoMiraboTreeView& view) const;

private:
    struct Branch {
        RowPath path;
        BranchState state;
    };
    struct GreyRow {
        int row;
        const SoNode* node; ///< only compared
    };
    struct GreyRows {
        RowPath parent;
        std::vector<GreyRow> rows;
    };
    static void restoreGreyRows(SoMiraboTreeView& view, const GreyRows& grey);

    bool m_isKnown = false;
    std::optional<RowPath> m_current;
    std::vector<Branch> m_branches;
    std::vector<GreyRows> m_grey; ///< upper ones first
};

} // namespace mirabo
