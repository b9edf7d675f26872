#pragma once

#include "mirabo/core/MainActions.h"
#include "mirabo/preferences/Shortcuts.h"

#include <QMainWindow>
#include <QStringList>

#include <array>
#include <functional>

class QComboBox;
class QMenu;
class QMimeData;
class QToolBar;
class SoCommandManager;

namespace mirabo {
class FilePresence;
class PaneFocus;
class ReadMessages;
} // namespace mirabo

/// The tool's main window: actions, menus, tool bars and docks. Holds no editing logic.
class SoMiraboMainFrame final : public QMainWindow {
    Q_OBJECT

public:
    static constexpr int kRecentFileCount = 9;

    explicit SoMiraboMainFrame(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~SoMiraboMainFrame() override;

    /// Once per start: title, icon, actions, menus, tool bars. A tool that was not started
    /// standalone may not replace its host's scene.
    void setUp(SoCommandManager* hub, bool standalone);
    /// Whether another scene may take the place of the one that is shown.
    bool mayReplaceScene() const { return m_mayReplaceScene; }
    /// The "View" menu lists the docks and tool bars that exist now.
    void fillViewMenu();

    /// The shortcuts that the actions can have, by their names; see applyShortcuts().
    mirabo::ShortcutEntries shortcutEntries() const;
    /// Gives the actions the shortcuts of the preferences.
    void applyShortcuts(SoCommandManager* hub);
    QAction* action(mirabo::ActionId id) const { return m_actions[static_cast<std::size_t>(id)]; }
    void showRecentFiles(const QStringList& paths);
    /// The categories that are shown: all of them while "Toggle Filters" is off.
    int getFilterMask() const { return m_filterMask; }
    /// The categories that are checked, whether the filter is on or off.
    int getCheckedCategories() const;
    /// Checks those categories and no others, and turns the filter on.
    void checkCategories(int mask);

    /// Asked before the user's closing the window has any effect: false keeps it open.
    void setCloseQuestion(std::function<bool()> mayClose) { m_mayClose = std::move(mayClose); }
    /// Called when the user closes the window, before it is hidden.
    void setCloseHandler(std::function<void()> handler) { m_closeHandler = std::move(handler); }
    /// Called when the window dies while its docks still live: a host may delete the parent.
    void setDeathHandler(std::function<void()> handler) { m_deathHandler = std::move(handler); }
    /// Opens a file that was dropped on the window.
    void setDropHandler(std::function<void(const QString&)> handler)
    {
        m_dropHandler = std::move(handler);
    }

public Q_SLOTS:
    /// Turns the filter on or off; the categories that are checked stay so.
    void on_toggleFilterAction_toggled(bool on);
    /// Other categories are checked: turns the filter on.
    void on_filterChanged();
    void on_customFilterAction_toggled(bool on);

Q_SIGNALS:
    /// One bit for each category that is shown, in the order of their actions.
    void filterChanged(int mask);
    void customFilterToggled(bool on);
    /// Fetching the content of an inline node gave messages, while its file is read or later.
    void inlineRead(const mirabo::ReadMessages& messages);
    /// The selected row of a field list, or the current one of the tree, was dropped here.
    void fieldRowDropped();
    void treeRowDropped();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    bool takes(const QMimeData& data) const;
    QStringList recentPaths() const;
    void showPresence(const QString& path, bool exists);
    void createActions();
    void createMenus();
    void createTreeViewMenu();
    void createToolBars();
    void connectActions(SoCommandManager* hub);
    void connectFilters(SoCommandManager* hub);
    QAction* categoryAction(int bit) const;
    void addEntries(QWidget* target, std::initializer_list<mirabo::ActionId> ids) const;
    void addCategories(QWidget* target) const;
    QMenu* addNamedMenu(const QString& title);
    QToolBar* addNamedToolBar(const QString& title);

    std::array<QAction*, mirabo::kActionCount> m_actions{};
    std::array<QAction*, kRecentFileCount> m_recentActions{};
    QMenu* m_recentMenu = nullptr;
    mirabo::FilePresence* m_presence = nullptr; ///< of the recent files; a child of ours
    mirabo::PaneFocus* m_panes = nullptr;       ///< a child of ours
    QMenu* m_viewMenu = nullptr;
    QComboBox* m_findCombo = nullptr;
    int m_filterMask = mirabo::kAllCategories;
    bool m_mayReplaceScene = false;
    bool m_checkingAll = false; ///< several categories change at once
    std::function<bool()> m_mayClose;
    std::function<void()> m_closeHandler;
    std::function<void()> m_deathHandler;
    std::function<void(const QString&)> m_dropHandler;
};
