#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>

class QAction;
class QDockWidget;
class QMainWindow;

namespace mirabo {

/// The keyboard's way through the panes of a window, its docks and the one in its middle: F6 goes
/// to the next, Shift+F6 to the one before, to the control in it that had the focus last. A line
/// along its upper edge marks the pane with the focus. Owned by the window.
class PaneFocus final : public QObject {
    Q_OBJECT

public:
    explicit PaneFocus(QMainWindow* window);

    QAction* nextAction() const { return m_next; }
    QAction* previousAction() const { return m_previous; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void focusMoved(QWidget* now);
    void step(int direction);
    QDockWidget* paneOf(QWidget* widget) const;
    void focusIn(QDockWidget* pane);
    void placeMark();

    QMainWindow* m_window; // Not owned; owns us.
    QAction* m_next;
    QAction* m_previous;
    bool m_raising = false;
    QPointer<QDockWidget> m_current;
    QPointer<QWidget> m_mark;                        // Child of the current pane.
    QHash<QDockWidget*, QPointer<QWidget>> m_latest; ///< control by pane; keys compared only
};

} // namespace mirabo
