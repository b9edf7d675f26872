#pragma once

#include <QRect>
#include <QVector>

class QMainWindow;

namespace mirabo {

/// The rectangle itself where the user can see the upper edge of such a window and take it with the
/// mouse, else a place on the nearest screen; never larger than all screens together.
QRect placeOnScreens(QRect window, const QVector<QRect>& screens);

/// Gives the main window the place, size and layout of the last run. At the first run, and when the
/// layout cannot be read, it is shown maximised, with its docks in their first places.
void readWindowSettings(QMainWindow& window);
/// Stores them, all together.
void writeWindowSettings(const QMainWindow& window);

} // namespace mirabo
