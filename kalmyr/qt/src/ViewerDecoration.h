#pragma once

#include "ViewerSettings.h"

#include <kalmyr/gui/SoGuiViewer.h>
#include <kalmyr/qt/SoQtViewer.h>

#include <QPointer>

class QAction;
class QLayout;
class QMenu;
class QToolButton;

/// The buttons and the menu of a viewer. Its actions belong to the viewer's whole widget.
class SoQtViewer::Decoration {
public:
    explicit Decoration(SoQtViewer* viewer);

    void buildColumn();
    /// Makes the menu; it is opened by the right mouse button.
    void buildMenu();
    QMenu* menu() const { return m_menu; }
    QWidget* column() const { return m_column; }

    /// Shows the viewer's state: checked buttons, cursor.
    void refresh();

private:
    enum Index { VIEW, PICK, HOME, SET_HOME, VIEW_ALL, CHOSEN, SEEK, CAMERA, HEADLIGHT, COUNT };
    struct Entry;
    static const Entry kEntries[COUNT];
    void makeAction(int index);
    void makeSides();
    QToolButton* addButton(QLayout& layout);
    void addMenuButton(QLayout& layout, const QIcon& icon, const QString& text,
                       const QList<QAction*>& actions);
    void run(int index, bool on);
    QString tipOf(const QString& text, const char* key) const;
    Qt::CursorShape cursor() const;

    SoGuiViewer* m_viewer; // Not owned; lives longer.
    SoQtViewer* m_owner;   // Not owned; owns us.
    QPointer<QWidget> m_whole;
    QPointer<QWidget> m_column;
    QPointer<QMenu> m_menu;
    QPointer<QAction> m_actions[COUNT];
    QList<QAction*> m_sides;
    ViewerSettings m_settings;
};
