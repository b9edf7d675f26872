#pragma once

#include <QRect>
#include <QVector>

class QMainWindow;

namespace mirabo {

/// The rectangle itself where the user can see the upper edge of such a window and take it with the
/// mouse, else a place on the nearest screen; never larger than all screens together.
QRect placeOnScreens(QRect window, const QVector<QRect>& screens);

/// A place on the screen for a window that leaves most of the host's window in view, in the corner
/// away from it; an invalid host stands top left.
QRect placeBesideHost(const QRect& host, const QRect& screen);

/// Gives the main window the place, size and layout of the last run in a program of this name, else
/// of the last run in any program. At the first run, and when the layout cannot be read, it is shown
/// maximised, with its docks in their first places; without a viewer in its middle its normal size
/// then leaves the host in view.
void readWindowSettings(QMainWindow& window);
/// Stores them, for this program and for any, all together.
void writeWindowSettings(const QMainWindow& window);

} // namespace mirabo
