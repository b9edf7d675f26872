#include "mirabo/viewer/WindowSettings.h"

#include "mirabo/preferences/Settings.h"
#include "mirabo/viewer/FirstLayout.h"

#include <QApplication>
#include <QMainWindow>
#include <QScreen>

#include <algorithm>

namespace mirabo {

namespace {

constexpr QSize kFirstSize(1280, 900);
/// Share of the screen's width and height that leaves the host in view.
constexpr double kShareBesideHost = 0.62;
constexpr char kProgramsGroup[] = "/MiraboViewer/Programs/";
/// What has to be on a screen of a window's upper edge for it to be seen and taken with the mouse.
constexpr QSize kHandle(100, 24);

QString key(const char* name)
{
    return QString::fromLatin1(kMainFrameGroup) + name;
}

/// A key of the program in whose process we are.
QString programKey(const char* name)
{
    QString program = QCoreApplication::applicationName();
    program.replace('/', '_');
    return QString::fromLatin1(kProgramsGroup) + (program.isEmpty() ? QString("_") : program)
           + name;
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

bool restore(QMainWindow& window, const QRect& stored, const QString& layoutText)
{
    const QByteArray layout = QByteArray::fromBase64(layoutText.toLatin1());
    if (layout.isEmpty())
        return false;
    const QRect place = placeOnScreens(stored, screens());
    window.move(place.topLeft());
    window.resize(place.size());
    return window.restoreState(layout);
}

bool restoreForProgram(QMainWindow& window)
{
    const QRect place(readInt(programKey("/X")), readInt(programKey("/Y")),
                      readInt(programKey("/Width")), readInt(programKey("/Height")));
    if (!restore(window, place, readText(programKey("/Layout"))))
        return false;
    if (readBool(programKey("/Maximized")))
        window.setWindowState(Qt::WindowMaximized);
    return true;
}

bool restoreForAll(QMainWindow& window)
{
    const QRect place(readInt(key("/WindowX")), readInt(key("/WindowY")),
                      readInt(key("/WindowWidth")), readInt(key("/WindowHeight")));
    return restore(window, place, readText(key("/MainWindowLayout")));
}

} // namespace

QRect placeBesideHost(const QRect& host, const QRect& screen)
{
    QRect place(screen.topLeft(), screen.size() * kShareBesideHost);
    const bool hostIsRight = host.isValid() && host.center().x() > screen.center().x();
    const bool hostIsBelow = host.isValid() && host.center().y() > screen.center().y();
    if (!hostIsRight)
        place.moveRight(screen.right());
    if (!hostIsBelow)
        place.moveBottom(screen.bottom());
    return place;
}

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
    if (readRestoreWindow() && (restoreForProgram(window) || restoreForAll(window)))
        return;
    // The size for "restore down", and for a desktop without a window manager.
    const QWidget* viewer = window.centralWidget();
    if (viewer && !viewer->isHidden()) {
        const QPoint position(readInt(key("/WindowX")), readInt(key("/WindowY")));
        window.move(placeOnScreens(QRect(position, kFirstSize), screens()).topLeft());
        window.resize(kFirstSize.boundedTo(window.screen()->availableSize()));
    } else {
        const QWidget* host = QApplication::activeWindow();
        const QRect place = placeBesideHost(host ? host->frameGeometry() : QRect(),
                                            window.screen()->availableGeometry());
        window.move(place.topLeft());
        window.resize(place.size());
    }
    window.setWindowState(Qt::WindowMaximized);
    new FirstLayout(&window); // the window owns it
}

void writeWindowSettings(const QMainWindow& window)
{
    const SettingsChange change;
    const QString layout = QString::fromLatin1(window.saveState().toBase64());
    writeSetting(key("/WindowWidth"), window.width());
    writeSetting(key("/WindowHeight"), window.height());
    writeSetting(key("/WindowX"), window.x());
    writeSetting(key("/WindowY"), window.y());
    writeSetting(key("/MainWindowLayout"), layout);
    const bool isNormal = !window.isMaximized() && !window.isFullScreen();
    const QRect normal = isNormal ? QRect(window.pos(), window.size()) : window.normalGeometry();
    writeSetting(programKey("/Width"), normal.width());
    writeSetting(programKey("/Height"), normal.height());
    writeSetting(programKey("/X"), normal.x());
    writeSetting(programKey("/Y"), normal.y());
    writeSetting(programKey("/Maximized"), window.isMaximized());
    writeSetting(programKey("/Layout"), layout);
}

} // namespace mirabo
