#pragma once

#include "mirabo/tree/BookmarkPath.h"

#include <cstddef>
#include <unordered_map>
#include <vector>

class SoMiraboTreeView;
class SoNode;
class SoTreeViewItem;

namespace mirabo {

/// The bookmarked rows of one tree, and the bookmarks whose rows went.
///
/// A row that goes leaves its bookmark behind, for the row that its node gets when it comes back.
class Bookmarks {
public:
    /// So many bookmarks without a row are kept.
    static constexpr std::size_t kMaxLost = 500;
    /// Up to so many are looked through one by one; among more the next row is never far.
    static constexpr std::size_t kFew = 1000;

    /// For the rows, whose flag says the same.
    void add(SoTreeViewItem* row);
    void remove(SoTreeViewItem* row) { m_rows.erase(row); }
    /// The row is being destroyed and not in the index any more; `isLast`: nor is another one of
    /// its node.
    void rowDies(SoTreeViewItem* row, const SoNode* node, bool isLast);

    std::size_t count() const { return m_rows.size(); }
    bool hasLost() const { return !m_lost.empty(); }

    /// The first bookmarked row from `start` on, itself included, in that direction and around the
    /// end of the tree; null when there is none. Start null: from the top, or the bottom.
    SoTreeViewItem* walk(SoMiraboTreeView& tree, SoTreeViewItem* start, bool backward) const;
    /// The same, `start` being examined last.
    SoTreeViewItem* walkOn(SoMiraboTreeView& tree, SoTreeViewItem* start, bool backward) const;

    /// Takes all bookmarks away, those without a row included.
    void clear();
    /// Finds rows for bookmarks that have none. True when there were some.
    bool findLost(const SoMiraboTreeView& tree);

    /// Where the bookmarks are, from top to bottom, and those of another run that have no row yet;
    /// at most `limit`.
    /// `mayLook`: the graph may be looked at, else they are where they were when they were set, or
    /// looked at last.
    std::vector<BookmarkPath> paths(std::size_t limit, bool mayLook);
    /// Bookmarks to be found by findLost().
    void addLost(const std::vector<BookmarkPath>& paths);

private:
    struct Mark {
        const SoNode* parent = nullptr; ///< only compared
        BookmarkPath path;              ///< when it was made, or told last
    };
    struct Lost {
        const SoNode* node = nullptr;   ///< only compared; null: of another run
        const SoNode* parent = nullptr; ///< only compared
        bool isLast = false;            ///< the tree showed the node nowhere else
        BookmarkPath path;
    };

    SoTreeViewItem* closest(SoMiraboTreeView& tree, const SoTreeViewItem* start,
                            bool backward) const;
    static SoTreeViewItem* findRow(const SoMiraboTreeView& tree, const Lost& lost);

    std::unordered_map<SoTreeViewItem*, Mark> m_rows;
    std::vector<Lost> m_lost; ///< oldest first
};

} // namespace mirabo
