#pragma once

class QMainWindow;

namespace mirabo {

/// Gives the main window the place, size and layout of the last run. At the first run it is shown
/// maximised, with its docks in their first places.
void readWindowSettings(QMainWindow& window);
/// Stores them. They reach the disk with the next sync() of the store.
void writeWindowSettings(const QMainWindow& window);

} // namespace mirabo
