#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QList>
#include <QObject>

class MrbExtension;
class QAction;
class QDockWidget;
class QMenu;
class QToolBar;
class QWidget;
class SbString;
class SoType;

/// The context menus registered for one node type.
struct MrbContextMenus {
    QList<QMenu*> exact;     ///< for nodes of just this type
    QList<QMenu*> inherited; ///< for this type and the types derived from it
};

/// The window side of the tool: where extensions place their widgets.
///
/// Extensions reach it through MrbExtension::shell(). Whatever is handed over belongs to the tool
/// from then on, also after it was removed: it is deleted with the extension at the latest. An
/// extension may delete it earlier, and keeps a QPointer to what it wants to touch again, since the
/// host may close the window at any time. GUI thread only.
///
/// The order of the virtual operations is part of the binary interface.
class MRBEXT_API MrbShell : public QObject {
    Q_OBJECT

public:
    /// The running tool's shell; null while no tool runs. Within a call of the tool into an
    /// extension it is the extension's own, as MrbExtension::shell().
    static MrbShell* getInstance();

    /// Docks are listed in the "View" menu. One with an object name finds its old place again.
    virtual void addDockWidget(QDockWidget* dock, Qt::DockWidgetArea area) = 0;
    virtual void removeDockWidget(QDockWidget* dock) = 0;

    /// Returns the menus that are registered for a type, by its SoType::getIndex(); nothing for its
    /// ancestors.
    virtual MrbContextMenus getContextMenus(int typeIndex) const = 0;
    /// Offers a menu in the context menu of the tree's rows, for nodes of the type with that
    /// SoType::getIndex(), and of the types derived from it when `derivedToo`. One menu may be
    /// registered for several types. The node is the services' selected node when the menu opens.
    virtual void addContextMenu(int typeIndex, bool derivedToo, QMenu* menu) = 0;

    /// A menu of its own in the menu bar, before the help menu.
    virtual void addMenu(QMenu* menu) = 0;

    /// Asks the extension for its view and shows it in a dock, which is returned; null, with
    /// nothing done, when there is no view. The "View" menu gets a checkable entry with the
    /// extension's description. A second call gives the dock that is there.
    virtual QDockWidget* addView(MrbExtension* extension, Qt::DockWidgetArea area) = 0;

    /// Takes a menu back from every type that it is registered for.
    virtual void removeContextMenu(QMenu* menu) = 0;
    virtual void removeMenu(QMenu* menu) = 0;
    virtual void removeView(MrbExtension* extension) = 0;

    /// Adds one entry to a menu or tool bar of the tool. `place` is the title of a tool bar ("Edit
    /// Tool Bar") or the path of a menu from the menu bar ("Edit", "TreeView/Bookmarks"), without
    /// ampersands. Entries of extensions stand behind the tool's own, ordered by `position`; equal
    /// ones in the order of their calls. The same action again moves it. False, with nothing done,
    /// for an unknown place.
    virtual bool addEntry(QAction* entry, const QString& place, double position) = 0;
    virtual void removeEntry(QAction* entry) = 0;

    virtual void clearStatusMessage() = 0;
    /// Puts a widget into the status bar; a permanent one (not 0) is not covered by messages.
    virtual void addStatusWidget(QWidget* widget, int permanent, int stretch) = 0;
    /// The text is Latin-1; `timeout` in milliseconds, 0: until the next message.
    virtual void showStatusMessage(const SbString& text, int timeout) = 0;
    virtual void removeStatusWidget(QWidget* widget) = 0;
    /// Tool bars are listed in the "View" menu.
    virtual void addToolBar(QToolBar* toolBar, Qt::ToolBarArea area) = 0;
    virtual void removeToolBar(QToolBar* toolBar) = 0;

    /// As the operation above, by type.
    void addContextMenu(SoType type, bool derivedToo, QMenu* menu);
    /// All menus for a node of this type: its own, then those inherited from its ancestors, nearest
    /// first.
    QList<QMenu*> contextMenusFor(SoType type) const;

protected:
    MrbShell() = default;
    ~MrbShell() override;
    static void setInstance(MrbShell* shell);
    /// The tool's, whoever asks.
    static MrbShell* getToolInstance();
};
