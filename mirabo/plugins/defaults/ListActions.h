#pragma once

#include <QIcon>
#include <QKeySequence>

#include <span>

class QPainter;

/// Actions on a list, in the order of the tool bar.
enum class ListAction {
    InsertBefore,
    InsertAfter,
    Append,
    Delete,
    MoveUp,
    MoveDown,
    SortAscending,
    SortDescending,
    FillDown,
    Set,
    Add,
    Multiply,
    Copy,
    Paste,
    GoTo,
    SetCount
};

/// Requirement of an action.
enum class ListNeed { Nothing, Values, TwoValues, Selection };

/// Effect of an action on values.
enum class ListUse {
    Read,
    Rearrange, ///< deletes and moves those that there are
    Make
};

struct ListActionEntry {
    ListAction action;
    const char* text;
    const char* toolTip;
    const char* keys; ///< empty for none
    ListNeed need;
    ListUse use;
    bool endsGroup;
    /// Draws it in the unit square.
    void (*draw)(QPainter& painter);
};

std::span<const ListActionEntry> listActions();
