#include "mirabo/viewer/WindowSettings.h"

#include "mirabo/preferences/Settings.h"

#include <QDockWidget>
#include <QGuiApplication>
#include <QMainWindow>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace mirabo;

namespace {

const QVector<QRect> kScreens = {QRect(0, 0, 1920, 1080), QRect(1920, 100, 1280, 1024)};

class WindowSettingsTest : public ::testing::Test {
protected:
    WindowSettingsTest()
    {
        releaseSettings();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
    }
    ~WindowSettingsTest() override { releaseSettings(); }

    static QString key(const char* name) { return QString(kMainFrameGroup) + "/" + name; }

    static QString programKey(const char* name)
    {
        return "MiraboViewer/Programs/" + QCoreApplication::applicationName() + "/" + name;
    }

    struct Window : QMainWindow {
        Window()
        {
            dock.setObjectName("dock");
            addDockWidget(Qt::LeftDockWidgetArea, &dock);
        }
        QDockWidget dock{this};
    };

    QTemporaryDir m_folder;
};

} // namespace

TEST(PlaceOnScreens, KeepsWhatTheUserCanTake)
{
    for (const QRect& window :
         {QRect(0, 0, 1920, 1080), QRect(-1000, 50, 1200, 700), QRect(1800, 0, 900, 900),
          QRect(3100, 1100, 500, 500), QRect(100, 1050, 300, 300), QRect(0, 0, 3200, 1080),
          QRect(2000, 150, 1, 1)})
        EXPECT_EQ(placeOnScreens(window, kScreens), window) << window.x() << " " << window.y();
    EXPECT_EQ(placeOnScreens(QRect(5, 6, 7, 8), {}), QRect(5, 6, 7, 8));
}

TEST(PlaceBesideHost, StandsInTheCornerAwayFromIt)
{
    const QRect screen(100, 50, 1920, 1080);
    const QRect hosts[] = {QRect(), QRect(120, 60, 900, 600), QRect(1100, 60, 900, 500),
                           QRect(1100, 600, 900, 500)};
    for (const QRect& host : hosts) {
        const QRect place = placeBesideHost(host, screen);
        EXPECT_TRUE(screen.contains(place));
        const QRect hidden = place & host;
        EXPECT_LE(hidden.width() * hidden.height(), host.width() * host.height() / 2);
    }
}

TEST(PlaceOnScreens, BringsOthersToTheNearestScreen)
{
    const struct {
        QRect window;
        QRect placed;
    } cases[] = {
        {QRect(32767, 300, 500, 400), QRect(2700, 300, 500, 400)},
        {QRect(-32767, -32767, 500, 400), QRect(0, 0, 500, 400)},
        {QRect(200, -30, 500, 400), QRect(200, 0, 500, 400)},    // its edge is out of reach
        {QRect(1950, 20, 500, 400), QRect(1950, 100, 500, 400)}, // between the screens
        {QRect(200, 1079, 500, 400), QRect(200, 680, 500, 400)},
        {QRect(-5000, 0, 32767, 32767), QRect(0, 0, 1920, 1080)},
        {QRect(9000, 9000, 32767, 32767), QRect(1920, 100, 1280, 1024)},
        {QRect(10, 10, 32767, 32767), QRect(10, 10, 3200, 1124)},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(placeOnScreens(each.window, kScreens), each.placed)
            << each.window.x() << " " << each.window.y();
    }
}

TEST_F(WindowSettingsTest, GiveTheNextWindowPlaceSizeAndLayout)
{
    {
        Window window;
        window.setGeometry(30, 40, 401, 302);
        window.addDockWidget(Qt::BottomDockWidgetArea, &window.dock);
        writeWindowSettings(window);
    }
    releaseSettings();
    Window window;
    readWindowSettings(window);
    EXPECT_EQ(window.pos(), QPoint(30, 40));
    EXPECT_EQ(window.size(), QSize(401, 302));
    EXPECT_FALSE(window.isMaximized());
    EXPECT_EQ(window.dockWidgetArea(&window.dock), Qt::BottomDockWidgetArea);
}

TEST_F(WindowSettingsTest, BelongToTheProgramAndKeepTheWindowMaximised)
{
    const QString program = QCoreApplication::applicationName();
    const auto storeIn = [](const char* name, const QRect& place, bool maximized) {
        QCoreApplication::setApplicationName(name);
        Window window;
        window.setGeometry(place);
        window.show();
        if (maximized)
            window.showMaximized();
        QCoreApplication::processEvents();
        writeWindowSettings(window);
    };
    storeIn("CAD/one", QRect(30, 40, 400, 300), true);
    storeIn("Game", QRect(50, 60, 500, 350), false);
    QCoreApplication::setApplicationName("CAD/one");
    Window first;
    readWindowSettings(first);
    EXPECT_TRUE(first.isMaximized());
    first.show();
    first.showNormal();
    QCoreApplication::processEvents();
    EXPECT_EQ(first.size(), QSize(400, 300));
    for (const char* name : {"Game", "Another"}) { // the latest of all where there is none
        QCoreApplication::setApplicationName(name);
        Window window;
        readWindowSettings(window);
        EXPECT_FALSE(window.isMaximized());
        EXPECT_EQ(window.size(), QSize(500, 350)) << name;
        // A window manager may have given the first one a frame.
        EXPECT_LE((window.pos() - QPoint(50, 60)).manhattanLength(), 10) << name;
    }
    QCoreApplication::setApplicationName(program);
}

TEST_F(WindowSettingsTest, OfAnotherDeskLeaveTheWindowOnTheScreen)
{
    {
        Window window;
        writeWindowSettings(window);
    }
    settings().remove("MiraboViewer/Programs"); // never stored in a program of this name
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    for (const int absurd : {0, -1, 99999999, -99999999}) {
        for (const char* name : {"WindowWidth", "WindowHeight", "WindowX", "WindowY"})
            writeSetting(key(name), absurd);
        Window window;
        readWindowSettings(window);
        EXPECT_TRUE(screen.contains(window.geometry())) << absurd;
    }
    // Nothing but a layout: as large as the screen.
    for (const char* name : {"WindowWidth", "WindowHeight", "WindowX", "WindowY"})
        removeSetting(key(name));
    Window window;
    readWindowSettings(window);
    EXPECT_EQ(window.geometry(), screen);
}

TEST_F(WindowSettingsTest, OpenTheWindowAsTheFirstTimeWhenTheLayoutCannotBeRead)
{
    Window stored;
    const QByteArray layout = stored.saveState();
    for (const QByteArray& damaged : {QByteArray("nonsense"), layout.left(layout.size() / 2),
                                      stored.saveState(77), QByteArray(2'000'000, 'A')}) {
        writeSetting(key("WindowWidth"), 300);
        settings().setValue(key("MainWindowLayout"), QString::fromLatin1(damaged.toBase64()));
        settings().setValue(programKey("Layout"), QString::fromLatin1(damaged.toBase64()));
        Window window;
        readWindowSettings(window);
        EXPECT_TRUE(window.isMaximized());
    }
}
