#pragma once

#include <QtGlobal>

class SoMiraboTreeView;

namespace mirabo {

struct TreeContext;

/// Keeps single removals cheap while many branches are open.
///
/// A view remembers each open branch by an index that every removed row walks through. When that
/// has cost enough in one pass of the event loop, the view is made to forget them; they are opened
/// again before the next layout, so nobody sees it.
class OpenBranches {
public:
    /// What removals may cost in one pass before the branches are put aside.
    static constexpr qint64 kPatience = 2000000; ///< nanoseconds

    explicit OpenBranches(SoMiraboTreeView& view) : m_view(view) {}

    /// A removal took so long, without the rows' own end.
    void removalTook(qint64 nanoseconds);
    /// Opens what was put aside.
    void restore();
    /// Another pass begins.
    void forgive() { m_spent = 0; }

private:
    void putAside();

    SoMiraboTreeView& m_view;
    qint64 m_spent = 0;
    bool m_isAside = false;
};

} // namespace mirabo
