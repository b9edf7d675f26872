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
        {"&New", "filenew.png", "Ctrl+N", kNo, true},
        {"&Open...", "fileopen", "Ctrl+O", kNo, true},
        {"&Reload", "reload.png", "Ctrl+R", kNo, true},
        {"&Close", "fileclose.png", nullptr, kNo, true},
        {"&Save", "filesave.png", "Ctrl+S"},
        {"Save &As...", "filesaveas.png", nullptr},
        {"&Print...", "fileprint.png", "Ctrl+P"},
        {"&Export", "filequickprint.png", "Ctrl+E"},
        {"&Quit", "exit.png", "Ctrl+Q", kNo, true},
        {"&Undo", "undo.png", "Ctrl+Z", kNo, true},
        {"&Redo", "redo.png", "Ctrl+Y", kNo, true},
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
        {"Show &All References", nullptr, "F4", kNo, true},
        {"&Hide All References", nullptr, "Ctrl+F4", kNo, true},
        {"Ne&xt", nullptr, "F2", kNo, true},
        {"Pre&vious", nullptr, "Shift+F2", kNo, true},
        {"&Open Viewer", nullptr, nullptr},
        {"&Preferences...", "configure.png", nullptr},
        {"&Contents", "help.png", "Shift+F1", kNo, true},
        {"&About Mirabo", "info.png", nullptr, kNo, true},
    }};
    return kTable;
}

} // namespace mirabo
