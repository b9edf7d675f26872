#pragma once

#include "mirabo/extender/MrbShell.h"

#include <QPointer>

class SoMiraboMainFrame;

/// The tool's shell; owns the main window.
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
    void clearStatusMessage() override;
    void addStatusWidget(QWidget* widget, int permanent, int stretch) override;
    void showStatusMessage(const SbString& text, int timeout) override;
    void removeStatusWidget(QWidget* widget) override;
    void addToolBar(QToolBar* toolBar, Qt::ToolBarArea area) override;
    void removeToolBar(QToolBar* toolBar) override;

private:
    explicit MrbShellImpl(QWidget* parent);
    ~MrbShellImpl() override;

    QPointer<SoMiraboMainFrame> m_frame; ///< owned, unless the parent deleted it before us
};
