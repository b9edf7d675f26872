#pragma once

#include "mirabo/core/ExtensionPlaces.h"
#include "mirabo/extender/MrbShell.h"

#include <QPointer>

#include <cstdint>
#include <map>

class SoMiraboMainFrame;

namespace mirabo {
class ExtensionView;
}

/// The tool's shell; owns the main window. Operations do nothing once the host has deleted the
/// window.
class MrbShellImpl final : public MrbShell {
    Q_OBJECT

public:
    /// Created on first use with this parent for the main window.
    static MrbShellImpl* getInstance(QWidget* parent = nullptr);
    /// Refuses a second instance with a toolkit error.
    static void createInstance(QWidget* parent);
    static bool exists();
    static void destroyInstance();

    SoMiraboMainFrame* getMainFrame() const { return m_frame.data(); }

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
    struct View {
        QPointer<mirabo::ExtensionView> dock;
        QPointer<QAction> toggle;
    };
    using Menus = std::multimap<int, QPointer<QMenu>>;

    explicit MrbShellImpl(QWidget* parent);
    ~MrbShellImpl() override;
    static QList<QMenu*> registered(const Menus& menus, int typeIndex);
    static void placeDock(SoMiraboMainFrame& frame, QDockWidget* dock, Qt::DockWidgetArea area);

    std::map<MrbExtension*, View> m_views;
    Menus m_exactMenus;                        ///< by type index, in order of registration
    Menus m_inheritedMenus;                    ///< for derived types as well
    std::map<std::uint64_t, double> m_entries; ///< position of each entry, by its address
    QPointer<SoMiraboMainFrame> m_frame;       ///< owned, unless the parent deleted it before us
    mirabo::ExtensionPlaces m_places;
};
