#pragma once

#include "mirabo/preferences/TextStyle.h"
#include "mirabo/tree/Bookmarks.h"
#include "mirabo/tree/DisabledPlaces.h"
#include "mirabo/tree/HiddenRows.h"
#include "mirabo/tree/NodeIndex.h"
#include "mirabo/tree/NodeNews.h"
#include "mirabo/tree/RowFilter.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <unordered_set>

class SoTreeViewItem;

namespace mirabo {

class RowKeeper;

/// Data that the rows of one tree share. Outlives all of them.
struct TreeContext {
    NodeIndex index;

    /// Looks of the texts in the rows.
    struct Styles {
        TextStyle type;
        TextStyle fieldNode; ///< types of nodes that are reached by fields; not shown: as others
        TextStyle name;
        TextStyle count;
    };
    Styles styles;
    int rowHeight = 0;            ///< in pixels
    bool realKitCounter = false;  ///< kits: the toolkit's reference count
    bool realVrmlCounter = false; ///< VRML97 nodes: the toolkit's reference count
    bool showAll = false;         ///< numbering counts rows that are not shown, too

    bool embeddedLaunch = false;       ///< every child list that is open to all is shown
    bool showInternalChildren = false; ///< the children that are a node's own business, too
    bool autoHighlight = true;

    /// Rows that somebody remembers; set to null when the row goes.
    SoTreeViewItem* pressed = nullptr;
    SoTreeViewItem* toShow = nullptr;
    SoTreeViewItem* menuRow = nullptr;   ///< the one that the open context menu is about
    SoTreeViewItem* chosen = nullptr;    ///< the one that is being announced
    SoTreeViewItem* addTarget = nullptr; ///< where the next node is added
    std::array<SoTreeViewItem**, 5> remembered()
    {
        return {&pressed, &toShow, &menuRow, &chosen, &addTarget};
    }

    /// Counts what may give parts of kits other names; never 0.
    std::uint32_t changes = 1;

    RowFilter filter;
    /// By parent; only those that the filter hides rows of.
    std::unordered_map<const SoTreeViewItem*, std::unique_ptr<HiddenRows>> hidden;

    /// Open branches that the view was made to forget for a while, or that the filter hides.
    std::unordered_set<SoTreeViewItem*> putAside;

    /// Takes over the rows that go while the current row is being announced.
    RowKeeper* keeper = nullptr; // Not owned; the view's.

    Bookmarks bookmarks;

    /// Nodes that are out of the graph but still have rows, or may get them back.
    DisabledPlaces disabled;

    NodeNews news;
    /// Rows whose node died before they were compared with the graph.
    std::unordered_set<SoTreeViewItem*> dead;
    /// Shown nodes with changes that notification did not report, and the stamp of the first.
    std::unordered_map<const SoNode*, std::uint64_t> unheard;
    std::atomic<bool> anyUnheard{false}; ///< for other threads: there are some
    /// Another thread has changed the graph, and the rows have not been compared with it yet: some
    /// of them may stand for nodes that only that thread knows.
    std::atomic<bool> changedElsewhere{false};

    /// The launch flags and preferences above, read now.
    void readEnvironment();
};

} // namespace mirabo
