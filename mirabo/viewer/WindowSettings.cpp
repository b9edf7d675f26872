#include "mirabo/viewer/WindowSettings.h"

#include "mirabo/preferences/Settings.h"
#include "mirabo/viewer/FirstLayout.h"

#include <QGuiApplication>
#include <QMainWindow>
#include <QScreen>

#include <algorithm>

namespace mirabo {

namespace {

constexpr QSize kFirstSize(1280, 900);
/// What has to be on a screen of a window's upper edge for it to be seen and taken with the mouse.
constexpr QSize kHandle(100, 24);

QString key(const char* name)
{
    return QString::fromLatin1(kMainFrameGroup) + name;
}

QVector<QRect> screens()
{
    QVector<QRect> areas;
    for (const QScreen* screen : QGuiApplication::screens())
        areas << screen->geometry();
    return areas;
}

bool canBeTaken(const QRect& window, const QVector<QRect>& screens)
{
    const QRect edge(window.topLeft(), QSize(window.width(), kHandle.height()));
    const int width = std::min(kHandle.width(), window.width());
    return std::any_of(screens.begin(), screens.end(), [&](const QRect& screen) {
        const QRect seen = edge & screen;
        return seen.width() >= width && seen.height() >= kHandle.height();
    });
}

int distance(const QRect& window, const QRect& screen)
{
    return (window.topLeft() - screen.topLeft()).manhattanLength();
}

} // namespace

QRect placeOnScreens(QRect window, const QVector<QRect>& screens)
{
    if (screens.isEmpty())
        return window;
    QRect all;
    for (const QRect& screen : screens)
        all |= screen;
    window.setSize(window.size().boundedTo(all.size()));
    if (canBeTaken(window, screens))
        return window;
    const QRect screen =
        *std::min_element(screens.begin(), screens.end(), [&](const QRect& a, const QRect& b) {
            return distance(window, a) < distance(window, b);
        });
    window.setSize(window.size().boundedTo(screen.size()));
    window.moveLeft(std::clamp(window.x(), screen.left(), screen.right() + 1 - window.width()));
    window.moveTop(std::clamp(window.y(), screen.top(), screen.bottom() + 1 - window.height()));
    return window;
}

void readWindowSettings(QMainWindow& window)
{
    const QPoint position(readInt(key("/WindowX")), readInt(key("/WindowY")));
    const QByteArray layout = QByteArray::fromBase64(readText(key("/MainWindowLayout")).toLatin1());
    if (readRestoreWindow() && !layout.isEmpty()) {
        const QSize size(readInt(key("/WindowWidth")), readInt(key("/WindowHeight")));
        const QRect place = placeOnScreens(QRect(position, size), screens());
        window.move(place.topLeft());
        window.resize(place.size());
        if (window.restoreState(layout))
            return;
    }
    window.move(placeOnScreens(QRect(position, kFirstSize), screens()).topLeft());
    // The size for "restore down", and for a desktop without a window manager.
    window.resize(kFirstSize.boundedTo(window.screen()->availableSize()));
    window.setWindowState(Qt::WindowMaximized);
    new FirstLayout(&window); // the window owns it
}

void writeWindowSettings(const QMainWindow& window)
{
    const SettingsChange change;
    writeSetting(key("/WindowWidth"), window.width());
    writeSetting(key("/WindowHeight"), window.height());
    writeSetting(key("/WindowX"), window.x());
    writeSetting(key("/WindowY"), window.y());
    writeSetting(key("/MainWindowLayout"), QString::fromLatin1(window.saveState().toBase64()));
}

} // namespace mirabo
