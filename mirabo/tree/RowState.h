#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class SoMiraboTreeView;
class SoNode;
class SoTreeViewItem;

/// State of rows that is given to the rows that take their place later.
namespace mirabo {

/// Where a row stands: its number among its siblings, level by level, from the top-level row on.
/// Means the same row whenever the graph is the same.
using RowPath = std::vector<int>;

RowPath pathOf(const SoTreeViewItem* row);
/// Null when there is no such row.
SoTreeViewItem* rowAt(const SoMiraboTreeView& view, const RowPath& path);
/// The same for the current row; no path: there is none.
std::optional<RowPath> currentPath(const SoMiraboTreeView& view);

/// Where the rows of disabled nodes stand among their siblings: the graph does not tell.
class GreyRows {
public:
    GreyRows() = default;
    /// `without`: a node whose rows do not count.
    explicit GreyRows(const SoTreeViewItem* parent, const SoNode* without = nullptr);

    /// Gives the row those of them whose nodes are still disabled, and no others.
    void restore(SoMiraboTreeView& view, SoTreeViewItem* parent) const;

private:
    struct Row {
        int row;
        const SoNode* node;                ///< only compared
        std::shared_ptr<const void> claim; ///< its last grey row may go and come back

        bool operator==(const Row& other) const { return row == other.row && node == other.node; }
    };
    bool isInPlace(const SoTreeViewItem* parent) const;

    std::vector<Row> m_rows;
};

/// Open rows, bookmarks and disabled nodes of a branch.
class BranchState {
public:
    BranchState() = default;
    BranchState(const SoMiraboTreeView& view, const SoTreeViewItem* top);

    /// Nothing is open, marked or disabled.
    bool isPlain() const { return m_rows.empty(); }
    /// Opens and marks what the old rows had, given new rows; those that are not there are left
    /// out.
    void apply(SoMiraboTreeView& view, SoTreeViewItem* top) const;

private:
    struct Row {
        std::int32_t parent; ///< in this list; -1 for the top
        std::int32_t row;
        std::int32_t grey; ///< in the list below; -1: no disabled nodes stand below it
        bool open;
        bool bookmarked;
    };
    void keepWhatTells();

    std::vector<Row> m_rows; ///< only those with something to tell at or below them
    std::vector<GreyRows> m_grey;
};

/// State that a command restores with one of its two states of the graph: the row that was
/// current when it left it, and the branches that went with it.
class TreeState {
public:
    TreeState() = default;
    /// Notes down the current row. The branches are added before the graph changes.
    explicit TreeState(const SoMiraboTreeView& view);
    void addBranch(const SoMiraboTreeView& view, const SoTreeViewItem* top);
    /// For the lists that are edited.
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
    struct List {
        RowPath parent;
        GreyRows rows;
    };

    bool m_isKnown = false;
    std::optional<RowPath> m_current;
    std::vector<Branch> m_branches;
    std::vector<List> m_lists; ///< upper ones first
};

} // namespace mirabo
