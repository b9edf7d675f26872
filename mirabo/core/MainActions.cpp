#include "mirabo/core/MainActions.h"

namespace mirabo {

namespace {

constexpr auto kNo = ActionSpec::NotCheckable;
constexpr auto kOff = ActionSpec::Unchecked;
constexpr auto kOn = ActionSpec::Checked;

} // namespace

const std::array<ActionSpec, kActionCount>& actionTable()
{
    static constexpr std::array<ActionSpec, kActionCount> kTable{{
        {"&New", "filenew.png", "Ctrl+N"},
        {"&Open...", "fileopen", "Ctrl+O"},
        {"&Reload", "reload.png", "Ctrl+R"},
        {"&Close", "fileclose.png", nullptr},
        {"&Save", "filesave.png", "Ctrl+S"},
        {"Save &As...", "filesaveas.png", nullptr},
        {"&Print...", "fileprint.png", "Ctrl+P"},
        {"&Export", "filequickprint.png", "Ctrl+E"},
        {"&Quit", "exit.png", "Ctrl+Q"},
        {"&Undo", "undo.png", "Ctrl+Z"},
        {"&Redo", "redo.png", "Ctrl+Y"},
        {"Cu&t", "editcut.png", "Ctrl+X"},
        {"&Copy", "editcopy.png", "Ctrl+C"},
        {"&Paste", "editpaste.png", "Ctrl+V"},
        {"&Delete", "editdelete.png", nullptr},
        {"&Find...", "find.png", "Ctrl+N"},
        {"Find &Next", "findnext.png", "F3"},
        {"Find Pre&vious", "findprevious.png", "Shift+F3"},
        {"Toggle Bookmark", "bookmark.png", "Ctrl+F2"},
        {"Next Bookmark", "bookmarknext.png", "F2"},
        {"Previous Bookmark", "bookmarkprevious.png", "Shift+F2"},
        {"Clear All Bookmarks", "bookmarkclear.png", "Alt+F2"},
        {"Toggle Filters", "filter.png", nullptr, kOn},
        {"Appearance", "appearance.png", nullptr, kOn},
        {"Callback", "callback.png", nullptr, kOn},
        {"Camera", "camera.png", nullptr, kOn},
        {"Group", "group.png", nullptr, kOn},
        {"Light", "light.png", nullptr, kOn},
        {"Manipulator", "manipulator.png", nullptr, kOn},
        {"Nodekit", "nodekit.png", nullptr, kOn},
        {"Property", "property.png", nullptr, kOn},
        {"Selection", "selection.png", nullptr, kOn},
        {"Separator", "separator.png", nullptr, kOn},
        {"Shape", "shape.png", nullptr, kOn},
        {"Switch", "switch.png", nullptr, kOn},
        {"Topology", "topology.png", nullptr, kOn},
        {"Transform", "transform.png", nullptr, kOn},
        {"Custom...", "filtercustom.png", nullptr, kOff},
        {"&Explore", nullptr, nullptr},
        {"Explore &all", nullptr, nullptr},
        {"&Filter...", nullptr, nullptr},
        {"&Insert...", nullptr, nullptr},
        {"Insert &clipboard", nullptr, nullptr},
        {"&Set Ignored/Enable", nullptr, nullptr},
        {"Show &All References", nullptr, "F4"},
        {"&Hide All References", nullptr, "Ctrl+F4"},
        {"Ne&xt", nullptr, "F2"},
        {"Pre&vious", nullptr, "Shift+F2"},
        {"&Open Viewer", nullptr, nullptr},
        {"&Preferences...", "configure.png", nullptr},
        {"&Contents", "help.png", "Shift+F1"},
        {"&About Mirabo", "info.png", nullptr},
    }};
    return kTable;
}

} // namespace mirabo
