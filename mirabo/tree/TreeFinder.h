#pragma once

#include "mirabo/tree/RowWalker.h"
#include "mirabo/tree/TextMatcher.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

class SoMiraboTreeView;
class SoNode;
class SoType;

namespace mirabo {

/// A search over all rows of the scene tree, hidden ones and those in closed branches included.
///
/// Visits every row at most once, from the row beside the start to that row again around the end of
/// the tree, but for rows of dead nodes. It can be done in slices: rows may come and go in between,
/// what moved across the place that was reached may be missed. Looks at nodes: needs a
/// GraphReading.
class TreeFinder {
public:
    enum Kind { ByType = 0, ByName = 1, ByAddress = 2, ById = 3 };
    enum Option : unsigned { Backward = 1, CaseSensitive = 2, ExactMatch = 4 };

    struct Query {
        int kind = ByType;
        QString text;
        unsigned options = 0; ///< sum of Option values
    };

    /// Searching: there are more rows, or they cannot be looked at before they have been compared
    /// with the graph, which another thread edited; to be tried again in a later pass.
    enum class State { Searching, Found, NotFound };

    /// Visits the start row last. Null: the first row, or the last one when searching backward.
    TreeFinder(SoMiraboTreeView& tree, const Query& query, SoTreeViewItem* start);
    /// Visits the row at a place first.
    TreeFinder(SoMiraboTreeView& tree, const Query& query, const RowPlace& first);

    /// Goes on for at most so many rows.
    State look(int rows);
    /// The row that the last look() found; valid until rows change.
    SoTreeViewItem* found() const { return m_found; }

private:
    TreeFinder(SoMiraboTreeView& tree, const Query& query);
    bool isBackward() const { return m_query.options & Backward; }
    bool visitsNothing() const;
    void toBeginning();
    bool hasComeAround() const;
    State finish(State state);
    bool matches(const SoTreeViewItem& row);
    bool matchesType(SoType type);
    bool matchesAddress(const SoNode& node);
    bool matchesId(const SoNode& node);

    SoMiraboTreeView& m_tree;
    const Query m_query;
    TextMatcher m_matcher;
    RowWalker m_walker;
    std::vector<std::int8_t> m_types; ///< by index of a type: -1 no, 1 yes, 0 not asked yet
    RowPlace m_next;                  ///< to be visited next
    RowPlace m_stop;                  ///< the first one that was visited
    SoTreeViewItem* m_found = nullptr;
    bool m_wrapped = false;
    State m_state = State::Searching;
};

} // namespace mirabo
