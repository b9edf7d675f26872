#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/events/SoKeyboardEvent.h>

class QStringList;
class SbViewportRegion;
class SoGLRenderAction;
class SoGuiRenderArea;
class SoNode;
class SoRenderAreaCore;
class SoSceneManager;

/// Starts the inspector on a live scene, from any host.
///
/// All members run in the thread of the Qt application, or, in a host without Qt, in the one that
/// starts the tool; such a host calls processEvents() in its loop until it returns false. Starting
/// while the tool runs changes nothing. Members do nothing, and return false or 0, when the
/// library's hooks cannot be found. A start without a node, scene manager or render area, or where
/// Qt can open no display, posts a debug error and changes nothing.
///
/// All of them may be called from anywhere: slots, sensors, callbacks, the tool's own dialogs. What
/// ends the tool from within one of its own calls hides the windows at once, and closes its menus
/// and dialogs; the tool is destroyed when the outermost of those calls has returned, or with the
/// next pass of the event loop where Qt made the call.
class MIRABO_API SoMirabo {
public:
    /// The constructors and the assignment do nothing; they serve old hosts.
    SoMirabo(int argc, char** argv);
    SoMirabo(int argc, char** argv, SoGuiRenderArea* area);
    explicit SoMirabo(const QStringList* arguments);
    ~SoMirabo();
    SoMirabo& operator=(const SoMirabo&);

    static void start(SoNode* root);
    /// `parent` is the parent widget (QWidget *) of the main window, or null.
    static void start(SoNode* root, void* parent);
    static void start(SoSceneManager* manager);
    static void start(SoSceneManager* manager, void* parent);
    static void start(const SoRenderAreaCore* area);

    /// As start() on the area's scene manager; the arguments are ignored.
    static void launch(int argc, char** argv, SoGuiRenderArea* area);
    static void setInstance(int argc, char** argv, SoGuiRenderArea* area);
    static void setInstance(int argc, char** argv, SoNode* root, bool flag);

    /// isRunning() is false from now on.
    static void stop();
    static bool isRunning();
    static int isInstance();
    /// Pumps Qt where the tool owns it, and ends a tool whose window was closed. False once it no
    /// longer runs.
    static bool processEvents();

    /// For views that are neither render areas of the toolkit nor drawn by a scene manager: see
    /// SoInspectorViews::addView(). Does not load the tool; may be called before a start.
    static void addView(SoGLRenderAction* action, void (*redraw)(void* data) = nullptr,
                        void* data = nullptr);

    /// A pick of the host at a window position (pixels): the picked node is selected in the tree,
    /// or, when there is none, nothing. Render areas of the toolkit pick by themselves.
    static void setPickAction(const SbViewportRegion& region, SbVec2s cursor);
    static void setSceneGraph(SoNode* root);

    /// The key that opens the tool from a render area.
    static SoKeyboardEvent::Key getShortcutValue();
    static void setShortcutValue(SoKeyboardEvent::Key key);
};
