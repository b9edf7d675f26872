#pragma once

#include <kalmyr/qt/SoQtViewer.h>

#include <QPointer>

class QAction;
class QMenu;
class SoGuiViewer;

/// The buttons and the menu of a viewer. Its actions belong to the viewer's whole widget.
class SoQtViewer::Decoration {
public:
    Decoration(SoGuiViewer* viewer, QWidget* whole, QWidget* surface);

    void buildColumn();
    /// Makes the menu; it is opened by the right mouse button.
    void buildMenu();
    QMenu* menu() const { return m_menu; }
    QWidget* column() const { return m_column; }

    /// Shows the viewer's state: checked buttons, cursor.
    void refresh();

private:
    enum Index { VIEW, PICK, HOME, SET_HOME, VIEW_ALL, SEEK, CAMERA, HEADLIGHT, COUNT };
    struct Entry;
    static const Entry kEntries[COUNT];
    void makeAction(int index);
    void run(int index, bool on);

    SoGuiViewer* m_viewer; // Not owned; lives longer.
    QPointer<QWidget> m_whole;
    QPointer<QWidget> m_surface;
    QPointer<QWidget> m_column;
    QPointer<QMenu> m_menu;
    QPointer<QAction> m_actions[COUNT];
};
