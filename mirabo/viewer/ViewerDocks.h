#pragma once

class QDockWidget;
class QMainWindow;

namespace mirabo {

/// The docks of the panels, in the places that they have without a stored layout. The window owns
/// them; their object names are the keys of stored layouts.
struct ViewerDocks {
    explicit ViewerDocks(QMainWindow* window);

    /// Makes the dock of the program's own viewer, which fills the middle of the window.
    static QDockWidget* addViewerDock(QMainWindow* window);

    QDockWidget* tree;
    QDockWidget* overview;
    QDockWidget* watch;
};

} // namespace mirabo
