#pragma once

#include <array>
#include <cstddef>

namespace mirabo {

/// All requests: the actions of the main window, in their fixed order, and behind them
/// those that only menus of panels and keys make.
enum class ActionId {
    New,
    Open,
    Reload,
    Close,
    Save,
    SaveAs,
    Print,
    Export,
    Quit,
    Undo,
    Redo,
    Cut,
    Copy,
    Paste,
    Delete,
    Find,
    FindNext,
    FindPrevious,
    ToggleBookmark,
    NextBookmark,
    PreviousBookmark,
    ClearBookmarks,
    ToggleFilters,
    Appearance,
    Callback,
    Camera,
    Group,
    Light,
    Manipulator,
    Nodekit,
    Property,
    Selection,
    Separator,
    Shape,
    Switch,
    Topology,
    Transform,
    CustomFilter,
    Explore,
    ExploreAll,
    Filter,
    Insert,
    InsertClipboard,
    IgnoreEnable,
    ShowAllReferences,
    HideAllReferences,
    NextReference,
    PreviousReference,
    OpenViewer,
    Preferences,
    Contents,
    About,
    Count, ///< of the window's actions

    FindAgain = Count, ///< with the options of the find dialog as they are
    AddNode,
    DeleteNode,
    SaveBranch, ///< the current row of the tree and all below it
    CopyPath,   ///< of the current row
    ClassHelp,  ///< on the class of its node
    RequestCount
};

inline constexpr std::size_t kActionCount = static_cast<std::size_t>(ActionId::Count);
inline constexpr std::size_t kRequestCount = static_cast<std::size_t>(ActionId::RequestCount);

/// How an action is made.
struct ActionSpec {
    enum Check { NotCheckable, Unchecked, Checked };

    const char* text;
    const char* icon;     ///< file name below the icon prefix; null: none
    const char* shortcut; ///< portable text; null: none
    Check check = NotCheckable;
};

/// One row an action. Two actions share a shortcut where the table says so (intended: Ctrl+N of
/// "New" and "Find...", F2 and Shift+F2 of bookmarks and references).
const std::array<ActionSpec, kActionCount>& actionTable();

/// Bits of the category actions in the order of the table; all set.
inline constexpr int kAllCategories = 16383;

} // namespace mirabo
