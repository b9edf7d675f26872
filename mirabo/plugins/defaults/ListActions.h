#pragma once

#include <QIcon>
#include <QKeySequence>

#include <span>

class QPainter;

/// What can be done with a list, in the order of the tool bar.
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

struct ListActionEntry {
    ListAction action;
    const char* text;
    const char* toolTip;
    const char* keys; ///< empty for none
    bool endsGroup;
    /// Draws it in the unit square.
    void (*draw)(QPainter& painter);
};

std::span<const ListActionEntry> listActions();
