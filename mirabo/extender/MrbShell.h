#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QObject>

class QDockWidget;
class QToolBar;
class QWidget;
class SbString;

/// The window side of the tool: where extensions place their widgets.
///
/// Widgets handed over are reparented to the main window and die with it unless they are removed
/// before.
class MRBEXT_API MrbShell : public QObject {
    Q_OBJECT

public:
    /// The running tool's shell; null while no tool runs.
    static MrbShell* getInstance();

    virtual void addDockWidget(QDockWidget* dock, Qt::DockWidgetArea area) = 0;
    virtual void removeDockWidget(QDockWidget* dock) = 0;
    virtual void clearStatusMessage() = 0;
    virtual void addStatusWidget(QWidget* widget, int permanent, int stretch) = 0;
    /// `timeout` in milliseconds; 0: until the next message.
    virtual void showStatusMessage(const SbString& text, int timeout) = 0;
    virtual void removeStatusWidget(QWidget* widget) = 0;
    virtual void addToolBar(QToolBar* toolBar, Qt::ToolBarArea area) = 0;
    virtual void removeToolBar(QToolBar* toolBar) = 0;

protected:
    MrbShell() = default;
    ~MrbShell() override;
    static void setInstance(MrbShell* shell);
};
