#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>

#include <QStringList>

#include <memory>

class QApplication;
class QWidget;
class SbViewportRegion;
class SoGuiRenderArea;
class SoNode;
class SoSceneManager;

namespace mirabo {
class Session;
}

/// The one run of the tool: starts it, pumps it, and tears it down. One per process.
///
/// A close by the user only marks the end; tear-down comes with the next processEvents() or stop.
class SoMiraboImpl {
public:
    SoMiraboImpl() = delete;

    static void startNode(SoNode* root, QWidget* parent);
    static void startSceneManager(SoSceneManager* manager, QWidget* parent);
    static void startRenderArea(SoGuiRenderArea* area);
    /// Starts with a viewer of its own, on the file that the last argument names if there is one.
    /// No event loop is entered.
    MIRABO_API static void startStandalone(int& argc, char** argv);

    static void stop();
    static bool isRunning();
    /// 1 while the tool runs.
    MIRABO_API static int processEvents();
    static void setPickAction(const SbViewportRegion& region, SbVec2s cursor);

    /// The user closed the window: the tool no longer runs, tear-down is pending.
    static void requestFinish();
};
