#include "support/ErrorGuard.h"
#include "support/HostScene.h"

#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/gui/SoLibMirabo.h>
#include <kalmyr/gui/SoSceneManagerImpl.h>

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

namespace {

/// A host that has no Qt application: the tool brings one, and the host pumps.
class PlainHostTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        static const QTemporaryDir store;
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, store.path());
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        kalmyr::initGui();
    }
    void TearDown() override
    {
        hooks().m_mirabo_stop();
        EXPECT_EQ(QCoreApplication::instance(), nullptr);
    }
    static SoLibMirabo& hooks() { return *SoLibMirabo::instance(); }
    static QWidget* window()
    {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->objectName() == "SoMiraboMainFrame")
                return widget;
        return nullptr;
    }
    static int rowCount()
    {
        int count = 0;
        auto* dock = window()->findChild<QWidget*>("dockMainWin");
        for (QTreeWidgetItemIterator at(dock->findChild<QTreeWidget*>()); *at; ++at)
            ++count;
        return count;
    }

    SoRef<SoSeparator> scene = support::hostScene();
};

TEST_F(PlainHostTest, PumpsAToolThatOwnsItsApplication)
{
    EXPECT_FALSE(hooks().m_mirabo_processEvents());
    hooks().m_mirabo_startNode(scene.get());
    ASSERT_NE(QCoreApplication::instance(), nullptr);
    EXPECT_EQ(QCoreApplication::arguments(), QStringList("qAppInstance"));
    bool fired = false;
    QTimer::singleShot(0, [&fired] { fired = true; });
    EXPECT_TRUE(hooks().m_mirabo_processEvents());
    EXPECT_TRUE(fired);
    EXPECT_EQ(rowCount(), support::kHostSceneRows);
    window()->close();
    EXPECT_FALSE(hooks().m_mirabo_isRunning());
    EXPECT_NE(QCoreApplication::instance(), nullptr);
    EXPECT_FALSE(hooks().m_mirabo_processEvents());
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
    EXPECT_FALSE(hooks().m_mirabo_processEvents());
}

TEST_F(PlainHostTest, StopsAtOnce)
{
    hooks().m_mirabo_stop(); // never started
    EXPECT_FALSE(hooks().m_mirabo_isRunning());
    hooks().m_mirabo_startNode(scene.get());
    EXPECT_TRUE(hooks().m_mirabo_isRunning());
    hooks().m_mirabo_stop();
    EXPECT_FALSE(hooks().m_mirabo_isRunning());
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
    hooks().m_mirabo_stop();
}

TEST_F(PlainHostTest, KeepsPumpingAToolThatWasStartedAgainAfterAClose)
{
    hooks().m_mirabo_startNode(scene.get());
    window()->close();
    hooks().m_mirabo_startNode(scene.get());
    EXPECT_TRUE(hooks().m_mirabo_isRunning());
    EXPECT_FALSE(hooks().m_mirabo_processEvents()) << "the pending end takes the new run with it";
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
}

TEST_F(PlainHostTest, ServesTheSensorsOfAHostWithoutALoop)
{
    hooks().m_mirabo_startNode(scene.get());
    bool served = false;
    SoOneShotSensor sensor([](void* data, SoSensor*) { *static_cast<bool*>(data) = true; },
                           &served);
    sensor.schedule();
    while (!served)
        ASSERT_TRUE(hooks().m_mirabo_processEvents());
}

TEST_F(PlainHostTest, OpensTheLastArgumentStandalone)
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath("scene.ky").toStdString();
    std::ofstream(path) << "#Kalmyr V1.0 ascii\nSeparator { Cube {} Sphere {} Cone {} }\n";
    std::string program = "prog";
    std::string file = path;
    char* arguments[] = {program.data(), file.data(), nullptr};
    hooks().m_mirabo_startStandalone(2, arguments);
    EXPECT_EQ(rowCount(), 4);
    EXPECT_EQ(window()->windowTitle(), QString("Mirabo -- %1").arg(path.c_str()));
    for (int turn = 0; turn < 5; ++turn)
        EXPECT_TRUE(hooks().m_mirabo_processEvents());
    hooks().m_mirabo_stop();

    hooks().m_mirabo_startStandalone(1, arguments);
    EXPECT_EQ(rowCount(), 2) << "nothing but the background";
    EXPECT_EQ(window()->windowTitle(), "Mirabo");
}

TEST_F(PlainHostTest, RefusesAnApplicationWithoutWidgets)
{
    int count = 1;
    std::string name = "console";
    char* arguments[] = {name.data(), nullptr};
    const QCoreApplication console(count, arguments);
    const SoRef<SoGuiExaminerViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSceneGraph(scene.get());
    auto errors = support::expectErrors();
    hooks().m_mirabo_startNode(scene.get());
    EXPECT_FALSE(hooks().m_mirabo_isRunning());
    hooks().m_mirabo_startSceneManager(viewer->getSceneManager());
    EXPECT_FALSE(hooks().m_mirabo_isRunning());
    EXPECT_EQ(viewer->getSceneManager()->getImpl()->getOwnMirabo(), 0);
    EXPECT_EQ(errors.count(), 2U);
    EXPECT_FALSE(hooks().m_mirabo_processEvents());
}

/// Starts in all ways in a process whose Qt has this platform; ends it with 0 when none succeeded
/// and each was told of.
[[noreturn]] void startWithout(const char* platform, SoNode* scene)
{
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    unsetenv("XDG_SESSION_TYPE");
    if (*platform)
        setenv("QT_QPA_PLATFORM", platform, 1);
    else
        unsetenv("QT_QPA_PLATFORM");
    SoLibMirabo& hooks = *SoLibMirabo::instance();
    const SoRef<SoGuiExaminerViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSceneGraph(scene);
    auto errors = support::expectErrors();
    std::string program = "prog";
    char* arguments[] = {program.data(), nullptr};
    hooks.m_mirabo_startNode(scene);
    hooks.m_mirabo_startSceneManager(viewer->getSceneManager());
    hooks.m_mirabo_startStandalone(1, arguments);
    SoKeyboardEvent key;
    key.setKey(SoLibMirabo::getShortcutValue());
    key.setState(SoButtonEvent::DOWN);
    viewer->processEvent(&key);
    const bool attached = viewer->getSceneManager()->getImpl()->getOwnMirabo() != 0;
    const bool refused = !hooks.m_mirabo_isRunning() && !QCoreApplication::instance();
    for (const std::string& text : errors.texts())
        std::fprintf(stderr, "%s\n", text.c_str());
    std::_Exit(refused && !attached && errors.count() == 4 ? 0 : 3);
}

TEST_F(PlainHostTest, GoesOnWhereNoDisplayCanBeHad)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto status = testing::ExitedWithCode(0);
    EXPECT_EXIT(startWithout("", scene.get()), status, "no display can be opened");
    EXPECT_EXIT(startWithout("xcb", scene.get()), status, "no display can be opened");
    EXPECT_EXIT(startWithout("wayland;xcb", scene.get()), status, "\"wayland\"(.|\n)*\"xcb\"");
    EXPECT_EXIT(startWithout("nosuchplatform", scene.get()), status, "no usable plug-in");
    // One of several is enough.
    EXPECT_EXIT(
        {
            unsetenv("DISPLAY");
            setenv("QT_QPA_PLATFORM", "xcb;offscreen", 1);
            hooks().m_mirabo_startNode(scene.get());
            std::_Exit(hooks().m_mirabo_isRunning() ? 0 : 3);
        },
        status, "");
}

TEST_F(PlainHostTest, RunsAgainAndAgain)
{
    for (int run = 0; run < 10; ++run) {
        hooks().m_mirabo_startNode(scene.get());
        EXPECT_TRUE(hooks().m_mirabo_processEvents());
        if (run % 2 == 0)
            hooks().m_mirabo_stop();
        else
            window()->close();
        EXPECT_FALSE(hooks().m_mirabo_processEvents());
    }
    EXPECT_EQ(scene->getRefCount(), 1);
    EXPECT_EQ(scene->getAuditors().getLength(), 0);
}

} // namespace
