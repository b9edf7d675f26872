#include "LaunchSupport.h"
#include "support/Clock.h"
#include "support/Passes.h"

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/nodes/SoWWWInline.h>

#include <QAction>
#include <QFile>
#include <QHeaderView>
#include <QMap>
#include <QMenu>
#include <QScreen>
#include <QSettings>
#include <QStatusBar>

namespace {

constexpr const char* kGoodScene = "#Kalmyr V1.0 ascii\nSeparator {\n  Cube {}\n  Sphere {}\n}\n";

class StandaloneTest : public LaunchTest {
protected:
    static void start() { hooks().m_mirabo_startStandalone(0, nullptr); }
};

TEST_F(StandaloneTest, ShowsAnEmptySceneOnABackground)
{
    start();
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(rowCount(), 2);
    EXPECT_EQ(tree()->topLevelItem(0)->child(0)->text(0), "GradientBackground");
    EXPECT_TRUE(action("&Open...")->isEnabled());
    EXPECT_TRUE(action("&Close")->isEnabled());
    EXPECT_FALSE(action("&Reload")->isEnabled());
    for (const char* name : {"dockMainWin", "dockNodeOverview", "dockFieldWatch"})
        EXPECT_NE(window()->findChild<QDockWidget*>(name), nullptr) << name;
    EXPECT_EQ(window()->centralWidget()->windowTitle(), "Kalmyr SceneViewer");
}

TEST_F(StandaloneTest, AsksTheHostForInlinesAndGivesThemBack)
{
    static int asked = 0;
    SoWWWInline::setFetchURLCallBack([](const SbString&, void*, SoWWWInline*) { ++asked; },
                                     nullptr);
    const SoRef<SoWWWInline> node(new SoWWWInline);
    hooks().m_mirabo_startStandalone(0, nullptr);
    SoWWWInline::fetch("https://host/part.ky", node.get());
    EXPECT_EQ(asked, 1);
    hooks().m_mirabo_stop();
    SoWWWInline::fetch("https://host/part.ky", node.get());
    EXPECT_EQ(asked, 2);
    SoWWWInline::setFetchURLCallBack(nullptr, nullptr);
}

TEST_F(StandaloneTest, StaysHiddenWhereTheMainLoopIsDisabled)
{
    SoPreferences::setValue("KMR_DISABLE_MAINLOOP", "1");
    start();
    EXPECT_TRUE(hooks().m_mirabo_isRunning());
    ASSERT_NE(window(), nullptr);
    EXPECT_FALSE(window()->isVisible());
    SoPreferences::removeValue("KMR_DISABLE_MAINLOOP");
}

TEST_F(StandaloneTest, OpensReloadsAndClosesAFile)
{
    const std::string path = writeFile("a.ky", kGoodScene);
    start();
    drop(path);
    EXPECT_EQ(rowCount(), 3);
    EXPECT_EQ(window()->windowTitle(), QString("Mirabo -- %1").arg(path.c_str()));
    EXPECT_TRUE(action("&Reload")->isEnabled());
    writeFile("a.ky", "#Kalmyr V1.0 ascii\nSeparator { Cone {} }\n");
    action("&Reload")->trigger();
    EXPECT_EQ(rowCount(), 2);
    action("&Close")->trigger();
    EXPECT_EQ(rowCount(), 1);
    EXPECT_EQ(window()->windowTitle(), "Mirabo");
    EXPECT_FALSE(action("&Reload")->isEnabled());
}

TEST_F(StandaloneTest, KeepsBookmarksOfAFile)
{
    const std::string path = writeFile("marked.ky", kGoodScene);
    const auto isMarked = [] { return !tree()->topLevelItem(0)->child(1)->icon(4).isNull(); };
    start();
    drop(path);
    tree()->setCurrentItem(tree()->topLevelItem(0)->child(1));
    QCoreApplication::processEvents();
    action("Toggle Bookmark")->trigger();
    EXPECT_TRUE(isMarked());
    action("&Reload")->trigger();
    EXPECT_TRUE(isMarked());
    hooks().m_mirabo_stop();
    start();
    drop(path);
    EXPECT_TRUE(isMarked());
    QCoreApplication::processEvents();
    action("Clear All Bookmarks")->trigger();
    EXPECT_FALSE(isMarked());
    action("&Reload")->trigger();
    EXPECT_FALSE(isMarked());
}

TEST_F(StandaloneTest, KeepsTheOldSceneWhenAFileIsBad)
{
    const std::pair<const char*, std::string> kBad[] = {
        {"1:1", writeFile("header.ky", "#Wrong V7 ascii\nSeparator {}\n")},
        {"1:1", writeFile("garbage.ky", std::string("\x7f\x00\xff\xfe\x01zz\n", 8))},
        {"2:", writeFile("truncated.ky", "#Kalmyr V1.0 ascii\nSeparator { Cube {")},
        {"2:13", writeFile("number.ky", "#Kalmyr V1.0 ascii\nSeparator { 42 {} }\n")},
        {"3:", writeFile("field.ky", "#Kalmyr V1.0 ascii\nSeparator {\n Cube { width no } }\n")},
        {"1:1", writeFile("empty.ky", "")},
    };
    start();
    drop(writeFile("good.ky", kGoodScene));
    const QString title = window()->windowTitle();
    for (const auto& [place, path] : kBad) {
        const QString message = messageOf([&path = path] { openRecent(path); });
        EXPECT_TRUE(message.startsWith("MiraboReadFile: ")) << path << message.toStdString();
        EXPECT_TRUE(message.contains(QString("%1:%2").arg(path.c_str(), place)))
            << message.toStdString();
        EXPECT_EQ(rowCount(), 3) << path;
        EXPECT_EQ(window()->windowTitle(), title);
        pass();
    }
    const QString missing = messageOf([this] { openRecent(writeFile("x", "") + "/no.ky"); });
    EXPECT_TRUE(missing.contains("no.ky")) << missing.toStdString();
    EXPECT_EQ(rowCount(), 3);
}

TEST_F(StandaloneTest, ShowsWhatCanBeShownOfADamagedScene)
{
    start();
    const std::string texture =
        writeFile("texture.ky",
                  "#Kalmyr V1.0 ascii\nSeparator { Texture2 { filename \"none.png\" } Cube {} }\n");
    const std::string index = writeFile(
        "index.wrl", "#VRML V2.0 utf8\nShape { geometry IndexedFaceSet {\n coord Coordinate {"
                     " point [0 0 0, 1 0 0, 0 1 0] }\n coordIndex [0 1 2 -1 0 1 99 -1] } }\n");
    auto errors = support::expectErrors();
    errors.mayStayEmpty(); // a faulty index may be found when it is drawn only
    for (const std::string& path : {texture, index}) {
        messageOf([&path] { openRecent(path); });
        EXPECT_EQ(window()->windowTitle(), QString("Mirabo -- %1").arg(path.c_str()));
        support::flush();
    }
    EXPECT_TRUE(hooks().m_mirabo_isRunning());
}

TEST_F(StandaloneTest, IgnoresADropOfWhatCannotBeOpened)
{
    start();
    const QString message =
        messageOf([this] { drop(folder.filePath("nothing.ky").toStdString()); });
    EXPECT_TRUE(message.isEmpty()) << message.toStdString();
    EXPECT_EQ(rowCount(), 2);
}

TEST_F(StandaloneTest, RemembersNineFilesAndTheWindow)
{
    start();
    std::string last;
    for (int i = 0; i < 10; ++i) {
        last = writeFile(QString("%1.ky").arg(i), kGoodScene);
        drop(last);
    }
    window()->setWindowState(Qt::WindowNoState);
    window()->setGeometry(30, 40, 701, 552); // smaller than the screen
    pass();
    window()->close();
    hooks().m_mirabo_processEvents();
    QSettings store("Mirabo", "MiraboViewer");
    EXPECT_EQ(store.value("/MiraboViewer/MiraboMainFrame/WindowWidth").toInt(), 701);
    EXPECT_EQ(store.value("/MiraboViewer/MiraboMainFrame/WindowHeight").toInt(), 552);

    start();
    EXPECT_EQ(window()->size(), QSize(701, 552));
    EXPECT_FALSE(window()->isMaximized());
    const auto* menu = window()->findChild<QMenu*>("RecentFilesMenu");
    ASSERT_EQ(menu->actions().size(), 9);
    EXPECT_EQ(menu->actions()[0]->text(), QString("&1 %1").arg(last.c_str()));
    EXPECT_TRUE(menu->actions()[8]->isVisible());
    EXPECT_TRUE(menu->actions()[8]->text().endsWith("1.ky"));
}

/// Sizes, colours and widths that would make a window of a million pixels.
TEST_F(StandaloneTest, StaysUsableWithAStoreFullOfAbsurdValues)
{
    start();
    window()->setWindowState(Qt::WindowNoState);
    pass();
    window()->close();
    hooks().m_mirabo_processEvents();
    QSettings store("Mirabo", "MiraboViewer");
    for (const QString& key : store.allKeys())
        if (key != "Store/Version" && !key.endsWith("MainWindowLayout"))
            store.setValue(key, 1'000'000);
    for (const char* group :
         {"TreeViewPreferences/Node Type", "TreeViewPreferences/Node/Part Name",
          "NodeOverviewPreferences/Default Value", "FieldWatchPreferences/Default Value"})
        for (const char* name : {"family", "size", "red", "bold", "show"})
            store.setValue(QString("%1/%2").arg(group, name), 1'000'000);
    store.setValue("FieldWatchPreferences/FieldWatchHeight", 1'000'000);
    store.sync();
    start();
    pass();
    EXPECT_LE(window()->width(), window()->screen()->size().width());
    EXPECT_LE(window()->height(), window()->screen()->size().height());
    EXPECT_LE(tree()->header()->length(), 4000);
    EXPECT_GT(tree()->visualItemRect(tree()->topLevelItem(0)).height(), 0);
}

/// Another tool's, while this one runs.
TEST_F(StandaloneTest, EndLeavesSettingsThatChangedMeanwhile)
{
    start();
    pass();
    window()->close();
    hooks().m_mirabo_processEvents();
    start();
    pass();
    const QString path = QSettings("Mirabo", "MiraboViewer").fileName();
    const QString copy = folder.filePath("copy.conf");
    ASSERT_TRUE(QFile::copy(path, copy));
    const QMap<QString, QVariant> theirs = {{"FieldWatchPreferences/ListColumnWidth/0", "161"},
                                            {"NodeOverviewPreferences/ListColumnWidth/0", "171"},
                                            {"NodeOverviewPreferences/ShowCatalogPart", "true"},
                                            {"TreeViewPreferences/Node Type/red", "181"},
                                            {"MiraboViewer/MiraboMainFrame/File1", "/theirs.ky"},
                                            {"Bookmarks/Scenes", "/theirs.ky"}};
    {
        QSettings other(copy, QSettings::IniFormat); // under another name, as in another process
        for (auto at = theirs.begin(); at != theirs.end(); ++at)
            other.setValue(at.key(), at.value());
    }
    ASSERT_TRUE(QFile::remove(path) && QFile::rename(copy, path));
    window()->close();
    hooks().m_mirabo_processEvents();
    hooks().m_mirabo_stop();
    QSettings store(path, QSettings::IniFormat);
    for (auto at = theirs.begin(); at != theirs.end(); ++at)
        EXPECT_EQ(store.value(at.key()), at.value()) << at.key().toStdString();
}

TEST_F(StandaloneTest, TellsInTheStatusBarThatItsSettingsWereKeptAside)
{
    const QString path = QSettings("Mirabo", "MiraboViewer").fileName();
    {
        QSettings store("Mirabo", "MiraboViewer");
        store.setValue("Store/Version", 1000);
    }
    const auto errors = support::expectErrors();
    start();
    EXPECT_TRUE(window()->statusBar()->currentMessage().contains(path))
        << window()->statusBar()->currentMessage().toStdString();
    EXPECT_EQ(errors.count(), 1U);
}

TEST_F(StandaloneTest, OpensMaximisedTheFirstTime)
{
    start();
    EXPECT_TRUE(window()->isMaximized());
    EXPECT_TRUE(window()->statusBar()->isVisible());
}

TEST_F(StandaloneTest, FirstLayoutFollowsTheSizeThatTheWindowGets)
{
    const support::Clock clock; // the window finds its size for a time only
    start();
    const auto settle = [](const QSize& size) {
        window()->setWindowState(Qt::WindowNoState);
        window()->resize(size);
        support::flush();
    };
    auto* treeDock = window()->findChild<QDockWidget*>("dockMainWin");
    auto* overview = window()->findChild<QDockWidget*>("dockNodeOverview");
    auto* editor = window()->findChild<QDockWidget*>("view:Field Editor");
    ASSERT_TRUE(editor);
    settle(QSize(1440, 900));
    EXPECT_GT(treeDock->width(), 350);
    EXPECT_LT(treeDock->width(), 720);
    EXPECT_TRUE(window()->tabifiedDockWidgets(overview).isEmpty());
    EXPECT_EQ(window()->dockWidgetArea(editor), Qt::RightDockWidgetArea);
    settle(QSize(900, 700));
    EXPECT_LT(treeDock->width(), 450);
    EXPECT_EQ(window()->tabifiedDockWidgets(overview).size(), 2) << "no room for two";
    EXPECT_TRUE(window()->tabifiedDockWidgets(overview).contains(editor));
    settle(QSize(1440, 900));
    EXPECT_TRUE(window()->tabifiedDockWidgets(overview).isEmpty());
    support::Clock::advance(2);
    settle(QSize(900, 700));
    EXPECT_TRUE(window()->tabifiedDockWidgets(overview).isEmpty()) << "now the user resizes it";
}

} // namespace
