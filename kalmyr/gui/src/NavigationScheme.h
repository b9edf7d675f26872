#pragma once

#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/gui/SoGuiViewer.h>

/// The effect of a key. Amounts of turns are in radians, of moves in windows, of zooms a factor.
struct NavigationCommand {
    enum Kind { NONE, HOME, VIEW_ALL, CHOSEN, SEEK, SIDE, OTHER_CAMERA, TURN, PAN, ZOOM };
    Kind kind = NONE;
    SoGuiViewer::Side side = SoGuiViewer::FRONT;
    float right = 0; ///< of the camera; of ZOOM the factor
    float up = 0;
};

/// The effect of a drag of the pointer.
enum class NavigationDrag { NONE, TURN, PAN, ZOOM };

/// Returns the command of a key that was pressed with these modifiers; NONE for others.
NavigationCommand commandOf(SoGuiViewer::Scheme scheme, const SoKeyboardEvent& event);

/// Returns the effect of a drag with these buttons down.
NavigationDrag dragOf(SoGuiViewer::Scheme scheme, bool left, bool middle, const SoEvent& event);
