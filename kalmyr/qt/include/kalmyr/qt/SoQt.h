#pragma once

#include <kalmyr/base/Export.h>

class QWidget;
class SbString;

/// Binds the toolkit to Qt: initialises the toolkit and lets Qt's event loop serve its sensors.
///
/// Initialisations are counted, so that a host and a tool inside it may both initialise and finish
/// without knowing of each other; the last finish() lets go. May be repeated in one process.
/// Sensors are served only while a QCoreApplication exists; a nested event loop (a dialog) serves
/// them as well, but never from within a sensor's own callback.
///
/// Thread: the one of the application object.
class KALMYRQT_API SoQt {
public:
    SoQt() = delete;

    /// Initialises within a host's application. `topLevel` is only remembered, and forgotten by
    /// itself when it dies; null is allowed. Without an application object a debug error is posted
    /// and the sensors are not served.
    static void init(QWidget* topLevel);

    /// Initialises a program that has only toolkit code: makes the QApplication when there is none
    /// (finish() destroys it again) and a top-level widget titled `name`, which is not shown yet.
    /// `argc` and `argv` must live until finish(). Null, with a debug error posted, where
    /// whyNoDisplay() has a cause.
    static QWidget* init(int& argc, char** argv, const char* name);

    /// Why a QApplication with these arguments could open no display and would end the process;
    /// empty when it can, or is there already. `argv` may be null.
    static SbString whyNoDisplay(int argc, char** argv);

    /// Takes back one init(); more of them than inits are ignored.
    static void finish();
    static bool isInitialized();

    /// The widget of the latest init() that still lives, or null.
    static QWidget* getTopLevelWidget();

    /// Shows `widget` and brings it to the front.
    static void show(QWidget* widget);
    static void hide(QWidget* widget);

    /// Runs Qt's event loop until the last window is closed or exitMainLoop() is called.
    static int mainLoop();
    static void exitMainLoop(int code = 0);

    /// Serves what is due now: timers, then the delay queue. Does nothing from within a sensor's
    /// callback that this binding called.
    static void processSensors();
};
