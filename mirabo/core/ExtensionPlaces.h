#pragma once

#include <QPointer>
#include <QString>

#include <vector>

class QAction;
class QMainWindow;
class QMenu;
class QWidget;

namespace mirabo {

/// Where the main window takes menus and entries of extensions. Entries keep their order, behind
/// those of the tool.
class ExtensionPlaces {
public:
    explicit ExtensionPlaces(QMainWindow* window);

    /// Before the last menu of the menu bar, which is the help.
    void addMenu(QMenu* menu);
    void removeMenu(QMenu* menu);

    /// False for an unknown place. An entry that stands elsewhere moves.
    bool addEntry(QAction* entry, const QString& place, double position);
    void removeEntry(QAction* entry);

    /// Lists what shows and hides a dock or tool bar in the "View" menu.
    void listDock(QAction* toggle);
    void listToolBar(QAction* toggle);
    void unlist(QAction* toggle);

private:
    struct Entry {
        QPointer<QAction> action;
        QPointer<QWidget> place;
        double position;
    };
    QWidget* findPlace(const QString& path) const;
    QMenu* viewMenu() const;
    /// The separator between an extension's entries and the tool's, made on demand.
    void separate(QWidget* place) const;
    void dropSeparator(QWidget* place) const;
    bool holdsEntries(const QWidget* place) const;

    QMainWindow* m_window;        // Not owned; lives longer.
    std::vector<Entry> m_entries; ///< by position, equal ones by age
};

} // namespace mirabo
