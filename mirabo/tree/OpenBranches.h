#pragma once

#include <QtGlobal>

class SoMiraboTreeView;
class SoTreeViewItem;

namespace mirabo {

struct TreeContext;

/// Knows which branches are open where the view does not.
///
/// A row that loses its last row below, or is hidden by the filter, is open no longer for the view;
/// here it stays so, and is opened again when rows come back.
///
/// Keeps single removals cheap while many branches are open: a view remembers each of them by an
/// index that every removed row walks through. When that has cost enough in one pass of the event
/// loop, the view is made to forget them; they are opened again before the next layout, so nobody
/// sees it.
class OpenBranches {
public:
    /// Time for removals in one pass before the branches are put aside.
    static constexpr qint64 kPatience = 2000000; ///< nanoseconds

    explicit OpenBranches(SoMiraboTreeView& view) : m_view(view) {}

    /// Opens a row, at once or as soon as the view has it and something below it.
    void open(SoTreeViewItem* item);
    void close(SoTreeViewItem* item);
    /// Rows below the item have come or gone.
    void rowsChanged(SoTreeViewItem* item);

    /// A removal took so long, without the rows' own end.
    void removalTook(qint64 nanoseconds);
    /// The view forgets all of them until restore().
    void putAside();
    /// Some that were put aside may be in the view again.
    void came() { m_isAside = true; }
    /// Opens what was put aside, as far as it is in the view.
    void restore();
    /// Another pass begins.
    void forgive() { m_spent = 0; }

private:
    void keep(SoTreeViewItem* item);

    SoMiraboTreeView& m_view;
    qint64 m_spent = 0;
    bool m_isAside = false;
};

} // namespace mirabo
