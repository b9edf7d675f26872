#include "mirabo/viewer/WindowSettings.h"

#include "mirabo/preferences/Settings.h"
#include "mirabo/viewer/FirstLayout.h"

#include <QMainWindow>
#include <QScreen>
#include <QSettings>

namespace mirabo {

namespace {

constexpr int kUnsetSize = 32767;
constexpr QSize kFirstSize(1280, 900);

QString key(const char* name)
{
    return QString::fromLatin1(kMainFrameGroup) + name;
}

} // namespace

void readWindowSettings(QMainWindow& window)
{
    const int width = readInt(key("/WindowWidth"), kUnsetSize);
    const int height = readInt(key("/WindowHeight"), kUnsetSize);
    const QString layout = readText(key("/MainWindowLayout"), QString());
    window.move(readInt(key("/WindowX"), 0), readInt(key("/WindowY"), 0));
    if (layout.isEmpty()) {
        // The size for "restore down", and for a desktop without a window manager.
        window.resize(kFirstSize.boundedTo(window.screen()->availableSize()));
        window.setWindowState(Qt::WindowMaximized);
        new FirstLayout(&window); // the window owns it
        return;
    }
    window.resize(width, height);
    window.restoreState(QByteArray::fromBase64(layout.toLatin1()));
}

void writeWindowSettings(const QMainWindow& window)
{
    QSettings& store = settings();
    store.setValue(key("/WindowWidth"), window.width());
    store.setValue(key("/WindowHeight"), window.height());
    store.setValue(key("/WindowX"), window.x());
    store.setValue(key("/WindowY"), window.y());
    store.setValue(key("/MainWindowLayout"), QString::fromLatin1(window.saveState().toBase64()));
}

} // namespace mirabo
