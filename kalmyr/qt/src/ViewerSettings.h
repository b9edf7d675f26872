#pragma once

#include <QList>

#include <functional>
#include <vector>

class QAction;
class QMenu;
class QWidget;
class SoQtViewer;

/// The settings of a viewer as menus: of each choice one action is checked.
///
/// The actions belong to the viewer's whole widget; this must live no longer than the viewer.
class ViewerSettings {
public:
    ViewerSettings(SoQtViewer* viewer, QWidget* whole);

    /// Adds a submenu for each setting.
    void addTo(QMenu& menu) const;
    /// The actions of the draw styles alone.
    QList<QAction*> drawStyles() const;
    /// Checks what is set.
    void refresh();

private:
    struct Choice {
        const char* name; ///< of the object
        const char* text;
        int value;
    };
    struct Setting {
        const char* text;
        std::vector<Choice> choices; ///< one alone is switched on (1) and off (0)
        std::function<int(SoQtViewer&)> get;
        std::function<void(SoQtViewer&, int)> set;
        QList<QAction*> actions;
    };
    static std::vector<Setting> settingsOf(const SoQtViewer& viewer);
    void makeActions(Setting& setting, QWidget* whole);
    void choose(Setting& setting, int value);

    SoQtViewer* m_viewer; // Not owned; lives longer.
    std::vector<Setting> m_settings;
};
