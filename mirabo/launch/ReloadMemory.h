#pragma once

#include "mirabo/tree/RememberedRows.h"

#include <QString>

#include <vector>

class SoMiraboEdition;
class SoMiraboTreeView;
class SoNode;

namespace mirabo {

/// Restores the state of the panels when a scene has been read anew: open branches, current row,
/// tabs and watched fields, found again by the places of their nodes.
class ReloadMemory {
public:
    ReloadMemory(const SoMiraboTreeView& tree, const SoMiraboEdition& edition);

    /// To be called when the panels show the new scene.
    void restore(SoMiraboTreeView& tree, SoMiraboEdition& edition) const;

private:
    struct Watch {
        BookmarkPath node;
        QString field;
    };
    void restoreTabs(const SoMiraboTreeView& tree, SoMiraboEdition& edition) const;
    void restoreWatches(const SoMiraboTreeView& tree, SoMiraboEdition& edition) const;

    RememberedRows m_rows;
    std::vector<BookmarkPath> m_tabs; ///< of the nodes shown; empty: none
    int m_currentTab = 0;
    std::vector<Watch> m_watches;
};

} // namespace mirabo
