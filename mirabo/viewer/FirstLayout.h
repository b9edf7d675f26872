#pragma once

#include <QList>
#include <QObject>

class QDockWidget;
class QMainWindow;

namespace mirabo {

/// Gives the docks of a window that was never stored their places, for the size that the window
/// gets when it is shown: a window manager, or whoever opens it, may settle that size only then.
/// Around a viewer in the middle the tree stands left and the lists below; without one, beside a
/// host, the tree has a third, and overview and watch stand above each other.
/// Owned by the window; ends itself when the window gets another size later on.
class FirstLayout final : public QObject {
    Q_OBJECT

public:
    explicit FirstLayout(QMainWindow* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void applyLater();
    void apply();
    void applyAroundViewer(QDockWidget* tree, QDockWidget* overview, QDockWidget* watch);
    void applyBesideHost(QDockWidget* tree, QDockWidget* overview, QDockWidget* watch);
    void placeWatch(QDockWidget* overview, QDockWidget* watch, bool beside);
    void placeViews(QDockWidget* watch, int width);

    QMainWindow* m_window;       // Not owned; owns us.
    QList<QDockWidget*> m_moved; ///< views that stood on the right; compared only
    bool m_pending = false;
    double m_shownAt = -1; ///< in seconds; negative before
};

} // namespace mirabo
