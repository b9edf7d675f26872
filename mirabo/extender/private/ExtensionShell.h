#pragma once

#include "mirabo/extender/MrbShell.h"
#include "mirabo/extender/private/EventGuard.h"

#include <QPointer>

#include <map>
#include <vector>

namespace mirabo {

class GuardedEntry;
class HostedExtension;

/// The tool's shell as one extension sees it: remembers what the extension places.
class ExtensionShell final : public MrbShell {
    Q_OBJECT

public:
    explicit ExtensionShell(HostedExtension& owner);
    ~ExtensionShell() override;

    /// Returns the shell of the tool; null when there is none any more.
    static MrbShell* tool() { return getToolInstance(); }

    /// Takes everything back from the window and deletes it.
    void removeAll();

    void addDockWidget(QDockWidget* dock, Qt::DockWidgetArea area) override;
    void removeDockWidget(QDockWidget* dock) override;
    MrbContextMenus getContextMenus(int typeIndex) const override;
    void addContextMenu(int typeIndex, bool derivedToo, QMenu* menu) override;
    void addMenu(QMenu* menu) override;
    QDockWidget* addView(MrbExtension* extension, Qt::DockWidgetArea area) override;
    void removeContextMenu(QMenu* menu) override;
    void removeMenu(QMenu* menu) override;
    void removeView(MrbExtension* extension) override;
    bool addEntry(QAction* entry, const QString& place, double position) override;
    void removeEntry(QAction* entry) override;
    void clearStatusMessage() override;
    void addStatusWidget(QWidget* widget, int permanent, int stretch) override;
    void showStatusMessage(const SbString& text, int timeout) override;
    void removeStatusWidget(QWidget* widget) override;
    void addToolBar(QToolBar* toolBar, Qt::ToolBarArea area) override;
    void removeToolBar(QToolBar* toolBar) override;

private:
    /// How an object leaves the window.
    using Remover = void (ExtensionShell::*)(QObject* object);
    struct Placed {
        QPointer<QObject> object;
        Remover remove;
    };
    /// False when there is nothing to place or no window to place it in.
    bool keep(QObject* object, Remover remove);
    template <typename T, void (MrbShell::*operation)(T*)>
    void takeBack(QObject* object);

    HostedExtension& m_owner;
    EventGuard m_guard;
    std::vector<Placed> m_placed; ///< in order of placing
    std::map<QAction*, QPointer<GuardedEntry>> m_entries;
};

} // namespace mirabo
