#include "Options.h"
#include "Screenshot.h"

#include <mirabo/launch/SoMirabo.h>
#include <mirabo/launch/SoMiraboImpl.h>

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <cstdio>

namespace {

constexpr char kUsage[] =
    "usage: mirabo [--help] [--version] [--screenshot OUT.png] [--size WxH] [FILE]\n"
    "\n"
    "Opens the scene-graph inspector on a scene file (.ky, .wrl, compressed or not).\n"
    "\n"
    "  --screenshot OUT.png  draw the main window into a picture and end\n"
    "  --size WxH            size of the window in pixels\n"
    "  --version             print the version\n"
    "  --help                print this text\n";

/// A picture needs no display.
void chooseOffscreenWithoutDisplay()
{
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
        if (!qEnvironmentVariableIsEmpty(name))
            return;
    qputenv("QT_QPA_PLATFORM", "offscreen");
}

QWidget* mainWindow()
{
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->objectName() == "SoMiraboMainFrame")
            return widget;
    return nullptr;
}

/// Ends the event loop once the user has closed the tool, and tears it down.
void endWithTool(QApplication& application)
{
    auto* watch = new QTimer(&application);
    QObject::connect(watch, &QTimer::timeout, &application, [&application] {
        if (!SoMiraboImpl::processEvents())
            application.quit();
    });
    watch->start(50);
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = parseOptions(argc, argv);
    if (options.help) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (options.version) {
        std::puts("mirabo " MIRABO_VERSION);
        return 0;
    }
    if (!options.error.empty()) {
        std::fprintf(stderr, "mirabo: error: %s\n%s", options.error.c_str(), kUsage);
        return 2;
    }
    const bool batch = !options.screenshot.empty();
#if !defined(_WIN32)
    if (batch)
        chooseOffscreenWithoutDisplay();
#endif
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    // The tool opens the last argument that its application has: only the file is left to it.
    Arguments toolArguments(argv[0], options.file);
    QApplication application(toolArguments.count(), toolArguments.values());
    application.setQuitOnLastWindowClosed(false);
    application.setProperty("miraboBatch", batch);
    SoMiraboImpl::startStandalone(toolArguments.count(), toolArguments.values());
    QWidget* window = mainWindow();
    if (!window) {
        std::fputs("mirabo: error: the main window could not be opened\n", stderr);
        return 1;
    }
    if (options.width > 0) {
        window->setWindowState(Qt::WindowNoState);
        window->resize(options.width, options.height);
    }
    if (batch) {
        const int status = takeScreenshot(*window, options);
        SoMirabo::stop();
        return status;
    }
    endWithTool(application);
    return QApplication::exec();
}
