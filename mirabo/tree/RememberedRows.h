#pragma once

#include "mirabo/tree/BookmarkPath.h"

#include <vector>

namespace mirabo {

/// The open branches, the current row and the scroll position of a tree, for the rows of the same
/// scene when it has been read anew, perhaps with changes. Rows are found again as bookmarks are.
class RememberedRows {
public:
    explicit RememberedRows(const SoMiraboTreeView& tree);

    /// Opens the branches that are found, and closes the root if it was closed. The current row
    /// is chosen as if the user had; without it, the closest row above it that is found.
    void restore(SoMiraboTreeView& tree) const;

private:
    /// An open row below another one that is open.
    struct OpenRow {
        int parent; ///< number in the list; -1 for a top-level row
        BookmarkPath::Step step;
    };
    void openBranches(SoMiraboTreeView& tree) const;

    std::vector<OpenRow> m_open; ///< upper ones first
    bool m_isRootClosed = false;
    BookmarkPath m_current;
    BookmarkPath m_top; ///< the uppermost row in view
};

} // namespace mirabo
