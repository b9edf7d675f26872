#include "LaunchSupport.h"
#include "support/Clock.h"
#include "support/DialogAnswers.h"
#include "support/Passes.h"

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/gui/SoSceneManagerImpl.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>
#include <kalmyr/qt/SoQtRenderArea.h>

#include <mirabo/extender/MrbCommand.h>
#include <mirabo/extender/MrbServices.h>
#include <mirabo/launch/SoMirabo.h>

#include <QAction>
#include <QDockWidget>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QLocale>
#include <QMenuBar>
#include <QPixmapCache>
#include <QTimer>

#include <algorithm>
#include <iterator>
#include <thread>

#include <malloc.h>

namespace {

using HostedTest = LaunchTest;

class NoCommand final : public MrbCommand {
public:
    bool execute() override { return true; }
    void undo() override {}
    void redo() override {}
};

TEST_F(HostedTest, ShowsAHostsSceneAndLeavesItAsItWas)
{
    const std::string before = support::writeScene(scene.get());
    const int references = scene->getRefCount();
    const int auditors = scene->getAuditors().getLength();
    EXPECT_FALSE(hooks().m_mirabo_isRunning());
    hooks().m_mirabo_startNode(scene.get());
    EXPECT_TRUE(hooks().m_mirabo_isRunning());
    ASSERT_NE(window(), nullptr);
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(window()->windowTitle(), "Mirabo");
    EXPECT_EQ(rowCount(), support::kHostSceneRows);
    EXPECT_FALSE(action("&Open...")->isEnabled());
    EXPECT_FALSE(action("&Close")->isEnabled());
    EXPECT_EQ(window()->findChild<QDockWidget*>("dockSceneViewer"), nullptr);
    tree()->setCurrentItem(tree()->topLevelItem(0)->child(4));
    pass();

    hooks().m_mirabo_stop();
    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(support::writeScene(scene.get()), before);
    EXPECT_EQ(scene->getRefCount(), references);
    EXPECT_EQ(scene->getAuditors().getLength(), auditors);
}

TEST_F(HostedTest, LaysItsPanelsOutBesideTheHost)
{
    const support::Clock clock; // the window finds its size for a time only
    hooks().m_mirabo_startNode(scene.get());
    const auto dock = [this](const char* name) { return window()->findChild<QDockWidget*>(name); };
    QDockWidget* overview = dock("dockNodeOverview");
    QDockWidget* watch = dock("dockFieldWatch");
    EXPECT_TRUE(window()->isMaximized());
    for (const QSize& size : {QSize(1600, 900), QSize(800, 600), QSize(1600, 900)}) {
        window()->setWindowState(Qt::WindowNoState);
        window()->resize(size);
        support::flush();
        EXPECT_NEAR(dock("dockMainWin")->width(), size.width() / 3, 20);
        EXPECT_LT(overview->geometry().bottom(), watch->geometry().top());
        EXPECT_GT(watch->height(), size.height() / 4);
        EXPECT_EQ(window()->tabifiedDockWidgets(watch).contains(dock("view:Field Editor")),
                  size.width() < 1000);
    }
}

// Without a scene manager the picture has a size and a view of its own.
TEST_F(HostedTest, ExportsAHostsSceneWithAndWithoutItsView)
{
    const auto exported = [this] {
        support::DialogAnswers answers({[this](QDialog* dialog) {
            static_cast<QFileDialog*>(dialog)->selectNameFilter("BMP - Windows Bitmap");
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(folder.filePath("a.bmp"));
            dialog->accept();
        }});
        action("&Export")->trigger();
        pass();
        const QImage image(folder.filePath("a.bmp"));
        QFile::remove(folder.filePath("a.bmp"));
        return image;
    };
    const int references = scene->getRefCount();
    hooks().m_mirabo_startNode(scene.get());
    const QImage whole = exported();
    ASSERT_EQ(whole.size(), QSize(1280, 1024));
    EXPECT_EQ(whole.pixel(0, 0), qRgb(0, 0, 0));
    // The row of cubes and the sphere lies within the picture and fills it from side to side.
    int left = whole.width(), right = 0;
    for (int x = 0; x < whole.width(); ++x) {
        for (int y = 0; y < whole.height(); ++y) {
            if (whole.pixel(x, y) != qRgb(0, 0, 0)) {
                left = std::min(left, x);
                right = x;
            }
        }
    }
    EXPECT_GT(left, 0);
    EXPECT_LT(left, 400);
    EXPECT_GT(right, 880);
    EXPECT_LT(right, 1279);
    hooks().m_mirabo_stop();
    EXPECT_EQ(scene->getRefCount(), references);

    const SoRef<SoSceneManager> manager(new SoSceneManager);
    manager->setSceneGraph(scene.get());
    manager->setViewportRegion(SbViewportRegion(300, 200));
    manager->setBackgroundColor(SbColor(0, 1, 0));
    hooks().m_mirabo_startSceneManager(manager.get());
    const QImage seen = exported();
    ASSERT_EQ(seen.size(), QSize(300, 200));
    EXPECT_EQ(seen.pixel(0, 0), qRgb(0, 255, 0));
    hooks().m_mirabo_stop();
}

TEST_F(HostedTest, PutsBackWhatItChangesInTheProcess)
{
    constexpr const char* kPreferences[] = {"KMR_DEBUG_STACKERROR", "KMR_STACKWALKER_HTML_OUTPUT"};
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    SoPreferences::setValue(kPreferences[1], "0");
    for (int run = 0; run < 2; ++run) {
        hooks().m_mirabo_startNode(scene.get());
        EXPECT_EQ(QLocale(), QLocale::c());
        for (const char* name : kPreferences)
            EXPECT_STREQ(SoPreferences::getValue(name).getString(), "1") << name;
        hooks().m_mirabo_stop();
        EXPECT_EQ(QLocale().language(), QLocale::German);
        EXPECT_FALSE(SoPreferences::hasValue(kPreferences[0]));
        EXPECT_STREQ(SoPreferences::getValue(kPreferences[1]).getString(), "0");
    }
    // What the host chooses meanwhile stays.
    hooks().m_mirabo_startNode(scene.get());
    QLocale::setDefault(QLocale(QLocale::French));
    SoPreferences::setValue(kPreferences[1], "2");
    hooks().m_mirabo_stop();
    EXPECT_EQ(QLocale().language(), QLocale::French);
    EXPECT_STREQ(SoPreferences::getValue(kPreferences[1]).getString(), "2");
    SoPreferences::removeValue(kPreferences[1]);
    QLocale::setDefault(before);
}

TEST_F(HostedTest, FollowsTheHostsEdits)
{
    hooks().m_mirabo_startNode(scene.get());
    scene->addChild(new SoCube);
    EXPECT_EQ(rowCount(), support::kHostSceneRows + 1);
    scene->removeChild(0);
    EXPECT_EQ(rowCount(), support::kHostSceneRows - 2);
    scene->removeAllChildren();
    EXPECT_EQ(rowCount(), 1);
    pass();
}

/// The selection node above the scene; null: there is none.
SoSelection* selectionAbove(const SoNode& scene)
{
    const SoAuditorList& auditors = scene.getAuditors();
    for (int i = 0; i < auditors.getLength(); ++i) {
        if (auditors[i].type != SoAuditor::PARENT)
            continue;
        SoNode* parent = static_cast<SoChildList*>(auditors[i].auditor)->getParent();
        if (parent->isOfType(SoSelection::getClassTypeId()))
            return static_cast<SoSelection*>(parent);
    }
    return nullptr;
}

TEST_F(HostedTest, ShowsWhatStandsBesideTheScene)
{
    hooks().m_mirabo_startNode(scene.get());
    const SoRef<SoSelection> selection(selectionAbove(*scene));
    ASSERT_TRUE(selection);
    auto* pasted = new SoSeparator;
    pasted->addChild(new SoCube);
    selection->addChild(pasted);
    ASSERT_EQ(tree()->topLevelItemCount(), 2);
    pasted->addChild(new SoSphere);
    QTreeWidgetItem* row = tree()->topLevelItem(1);
    ASSERT_EQ(row->childCount(), 2);
    tree()->setCurrentItem(row->child(1));
    EXPECT_EQ(MrbServices::getInstance()->getSelectedNode(), pasted->getChild(1));
    ASSERT_EQ(selection->getNumSelected(), 1);
    const SoPath* outlined = selection->getPath(0);
    EXPECT_EQ(outlined->getTail(), pasted->getChild(1));
    EXPECT_EQ(outlined->getIndex(1), 1);

    tree()->setCurrentItem(row);
    pass();
    action("&Delete")->trigger();
    EXPECT_EQ(selection->getNumChildren(), 1);
    EXPECT_EQ(rowCount(), support::kHostSceneRows);
    action("&Undo")->trigger();
    EXPECT_EQ(rowCount(), support::kHostSceneRows + 3);

    // The root goes with all, and comes back with all.
    tree()->setCurrentItem(tree()->topLevelItem(0));
    pass();
    action("&Delete")->trigger();
    EXPECT_EQ(rowCount(), 0);
    EXPECT_EQ(selection->getNumChildren(), 0);
    action("&Undo")->trigger();
    EXPECT_EQ(rowCount(), support::kHostSceneRows + 3);
    EXPECT_EQ(selection->findChild(pasted), 1);

    MrbServices::getInstance()->setSceneGraph(pasted); // another scene
    EXPECT_EQ(rowCount(), 3);
    EXPECT_EQ(tree()->topLevelItemCount(), 1);
    hooks().m_mirabo_stop();
    EXPECT_EQ(selection->getNumChildren(), 0);
    selection->addChild(new SoCube); // nobody follows it any more
}

TEST_F(HostedTest, IgnoresASecondStart)
{
    hooks().m_mirabo_startNode(scene.get());
    const SoRef<SoNode> other(new SoCube);
    hooks().m_mirabo_startNode(other.get());
    EXPECT_EQ(rowCount(), support::kHostSceneRows);
    const SoRef<SoGuiRenderArea> area(new SoGuiRenderArea);
    area->setSceneGraph(other.get());
    hooks().m_mirabo_startRenderArea(static_cast<SoRenderAreaCore*>(area.get()));
    EXPECT_EQ(area->getSceneManager()->getImpl()->getOwnMirabo(), 0);
    EXPECT_EQ(rowCount(), support::kHostSceneRows);
    // The scene is not the host's to set by this hook.
    hooks().m_mirabo_setSceneGraph(other.get());
    EXPECT_EQ(rowCount(), support::kHostSceneRows);
}

TEST_F(HostedTest, AttachesToASceneManagerAndFindsItsRenderArea)
{
    SoQtExaminerViewer viewer(nullptr, "host", false);
    viewer.setSceneGraph(scene.get());
    SoSceneManager* manager = viewer.getSceneManager();
    hooks().m_mirabo_startSceneManager(manager);
    EXPECT_EQ(manager->getImpl()->getOwnMirabo(), 1);
    EXPECT_EQ(MrbServices::getInstance()->getSceneManager(), manager);
    EXPECT_EQ(MrbServices::getInstance()->getRenderArea(), viewer.getGuiRenderArea());
    EXPECT_FALSE(MrbServices::getInstance()->isStandalone());
    EXPECT_GE(rowCount(), support::kHostSceneRows); // what the viewer adds is shown as well

    hooks().m_mirabo_stop();
    EXPECT_EQ(manager->getImpl()->getOwnMirabo(), 0);
    EXPECT_EQ(MrbServices::getInstance(), nullptr);
}

TEST_F(HostedTest, FollowsTheScenesOfItsSceneManager)
{
    SoQtRenderArea area(nullptr);
    SoSceneManager* manager = area.getSceneManager();
    manager->setSceneGraph(scene.get());
    hooks().m_mirabo_startSceneManager(manager);
    ASSERT_GT(rowCount(), 1);
    QAction* undo = action("&Undo");
    ASSERT_TRUE(undo);

    const SoRef<SoSeparator> next(new SoSeparator);
    next->addChild(new SoSeparator);
    const SoRef<SoSeparator> kept(scene);
    NoCommand command; // the stack forgets it without deleting it
    MrbServices::getInstance()->pushCommand(&command);
    EXPECT_TRUE(undo->isEnabled());
    manager->setSceneGraph(next.get());
    EXPECT_EQ(rowCount(), 2);
    EXPECT_FALSE(undo->isEnabled());
    next->addChild(new SoSeparator);
    EXPECT_EQ(rowCount(), 3);
    kept->addChild(new SoSeparator); // the tool has let go of it
    EXPECT_EQ(rowCount(), 3);
    manager->setSceneGraph(nullptr);
    EXPECT_EQ(rowCount(), 0);
    pass();
    manager->setSceneGraph(kept.get());
    EXPECT_GT(rowCount(), 3);
    std::thread([&] {
        const SoWriteLock lock;
        manager->setSceneGraph(next.get());
    }).join();
    pass();
    EXPECT_EQ(rowCount(), 3);
    hooks().m_mirabo_stop();
    manager->setSceneGraph(kept.get());
}

TEST_F(HostedTest, SelectsWhatTheHostPicks)
{
    const SoRef<SoGuiExaminerViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSize(SbVec2i32(200, 200));
    const SoRef<SoSeparator> ball(new SoSeparator);
    ball->addChild(new SoSphere);
    viewer->setSceneGraph(ball.get());
    viewer->viewAll();
    hooks().m_mirabo_startRenderArea(static_cast<SoRenderAreaCore*>(viewer.get()));
    EXPECT_EQ(MrbServices::getInstance()->getRenderArea(), viewer.get());
    tree()->setCurrentItem(tree()->topLevelItem(0));
    const auto pick = [&] {
        hooks().m_mirabo_setPickAction(viewer->getSceneManager()->getViewportRegion(),
                                       SbVec2s(100, 100));
        return tree()->currentItem()->text(0);
    };
    viewer->setViewing(true);
    EXPECT_NE(pick(), "Sphere") << "while viewing the pointer moves the camera";
    viewer->setViewing(false);
    EXPECT_EQ(pick(), "Sphere");
    EXPECT_EQ(MrbServices::getInstance()->getSelectedNode(), ball->getChild(0));

    hooks().m_mirabo_stop();
    hooks().m_mirabo_setPickAction(viewer->getSceneManager()->getViewportRegion(), SbVec2s(9, 9));
}

TEST_F(HostedTest, LeavesTheEventLoopToAHostThatHasOne)
{
    hooks().m_mirabo_startNode(scene.get());
    pass();
    bool fired = false;
    QTimer::singleShot(0, [&fired] { fired = true; });
    EXPECT_TRUE(hooks().m_mirabo_processEvents());
    EXPECT_FALSE(fired);
    pass();
    EXPECT_TRUE(fired);
}

TEST_F(HostedTest, EndsWithTheNextPumpAfterTheUserClosedIt)
{
    hooks().m_mirabo_startNode(scene.get());
    window()->close();
    EXPECT_FALSE(hooks().m_mirabo_isRunning());
    ASSERT_NE(window(), nullptr) << "tear-down waits for the pump";
    EXPECT_FALSE(hooks().m_mirabo_processEvents());
    EXPECT_EQ(window(), nullptr);
    EXPECT_FALSE(hooks().m_mirabo_processEvents());
    EXPECT_NE(QCoreApplication::instance(), nullptr);
}

TEST_F(HostedTest, StartsAgainWhileTheEndIsPendingButStillEnds)
{
    hooks().m_mirabo_startNode(scene.get());
    const int menus = window()->menuBar()->actions().size();
    const int actions = window()->findChildren<QAction*>().size();
    window()->close();
    const SoRef<SoNode> other(new SoCube);
    hooks().m_mirabo_startNode(other.get());
    EXPECT_TRUE(hooks().m_mirabo_isRunning());
    ASSERT_NE(window(), nullptr);
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(rowCount(), 1);
    EXPECT_EQ(window()->menuBar()->actions().size(), menus);
    EXPECT_EQ(window()->findChildren<QAction*>().size(), actions);
    EXPECT_FALSE(hooks().m_mirabo_processEvents());
    EXPECT_EQ(window(), nullptr);
}

TEST_F(HostedTest, RestartsOnAnotherKindOfStartWhileTheEndIsPending)
{
    hooks().m_mirabo_startNode(scene.get());
    window()->close();
    const SoRef<SoGuiRenderArea> area(new SoGuiRenderArea);
    area->setSceneGraph(scene.get());
    hooks().m_mirabo_startRenderArea(static_cast<SoRenderAreaCore*>(area.get()));
    EXPECT_EQ(area->getSceneManager()->getImpl()->getOwnMirabo(), 1);
    window()->close();
    hooks().m_mirabo_startStandalone(0, nullptr);
    EXPECT_TRUE(hooks().m_mirabo_isRunning());
    EXPECT_NE(window()->findChild<QDockWidget*>("dockSceneViewer"), nullptr);
    EXPECT_TRUE(action("&Open...")->isEnabled());
    EXPECT_EQ(area->getSceneManager()->getImpl()->getOwnMirabo(), 0);
    window()->close();
    hooks().m_mirabo_startNode(scene.get());
    EXPECT_EQ(window()->findChild<QDockWidget*>("dockSceneViewer"), nullptr);
    EXPECT_FALSE(action("&Open...")->isEnabled());
    EXPECT_FALSE(hooks().m_mirabo_processEvents());
}

TEST_F(HostedTest, OutlivesWhatTheHostDeletes)
{
    const auto selectBall = [this] {
        tree()->setCurrentItem(tree()->topLevelItem(0)->child(4));
        pass();
    };
    hooks().m_mirabo_startNode(scene.get());
    selectBall();
    EXPECT_NE(MrbServices::getInstance()->getSelectedNode(), nullptr);
    scene->removeChild(4); // the selected node dies
    tree()->setCurrentItem(nullptr);
    EXPECT_NE(MrbServices::getInstance()->getSelectedNode(), scene->getChild(3));
    pass();
    scene = SoRef<SoSeparator>(); // and the host forgets its scene
    EXPECT_GT(rowCount(), 1);
    pass();
    hooks().m_mirabo_stop();
}

TEST_F(HostedTest, ForgetsADeadSelection)
{
    hooks().m_mirabo_startNode(scene.get());
    MrbServices* services = MrbServices::getInstance();
    SoRef<SoCube> loose(new SoCube);
    services->setSelectedNode(loose.get());
    services->setSelectedField(&loose->width);
    EXPECT_EQ(services->getSelectedNode(), loose.get());
    loose = SoRef<SoCube>();
    EXPECT_EQ(services->getSelectedNode(), nullptr);
    EXPECT_EQ(services->getSelectedField(), nullptr);
    pass();
}

TEST_F(HostedTest, KnowsTheNodesOfOptionalModulesWhileItRuns)
{
    constexpr const char* kTypes[] = {"VRMLShape", "BaseKit", "Rotor",
                                      "Array",     "Dragger", "TransformManip"};
    const auto known = [&kTypes] {
        return std::count_if(std::begin(kTypes), std::end(kTypes),
                             [](const char* name) { return !SoType::fromName(name).isBad(); });
    };
    EXPECT_EQ(known(), 2) << "what the toolkit itself starts";
    hooks().m_mirabo_startNode(scene.get());
    EXPECT_EQ(known(), 6);
    hooks().m_mirabo_stop();
    EXPECT_EQ(known(), 2);
    hooks().m_mirabo_stop(); // finishes what was not started
    EXPECT_EQ(known(), 2);
}

TEST_F(HostedTest, AnnouncesAnotherSceneOnce)
{
    hooks().m_mirabo_startNode(scene.get());
    MrbServices* services = MrbServices::getInstance();
    QList<SoNode*> announced;
    QObject::connect(services, &MrbServices::sceneGraphChanged, services,
                     [&announced](SoNode* root) { announced << root; });
    const SoRef<SoNode> other(new SoCube);
    services->setSceneGraph(other.get());
    EXPECT_EQ(announced, QList<SoNode*>{other.get()});
    services->setSceneGraph(nullptr);
    EXPECT_EQ(announced.mid(1), QList<SoNode*>{nullptr});
    EXPECT_EQ(rowCount(), 0);
}

TEST_F(HostedTest, OutlivesAHostsViewer)
{
    auto viewer = std::make_unique<SoQtExaminerViewer>(nullptr, "host", false);
    viewer->setSceneGraph(scene.get());
    hooks().m_mirabo_startSceneManager(viewer->getSceneManager());
    viewer.reset();
    pass();
    hooks().m_mirabo_setPickAction(SbViewportRegion(100, 100), SbVec2s(50, 50));
    MrbServices::getInstance()->setSelectedNode(scene->getChild(0));
    pass();
    hooks().m_mirabo_stop();
}

TEST_F(HostedTest, EndsWithItsParentWindow)
{
    for (const bool pumped : {true, false}) {
        auto host = std::make_unique<QWidget>();
        SoMirabo::start(scene.get(), host.get());
        ASSERT_NE(window(), nullptr);
        EXPECT_EQ(window()->parentWidget(), host.get());
        EXPECT_TRUE(window()->isWindow());
        host.reset();
        EXPECT_EQ(window(), nullptr);
        EXPECT_FALSE(SoMirabo::isRunning());
        scene->addChild(new SoCube); // nobody looks any more
        pass();
        if (pumped) {
            EXPECT_FALSE(SoMirabo::processEvents());
        }
    }
    // Started again without a pump between.
    SoMirabo::start(scene.get());
    EXPECT_TRUE(SoMirabo::isRunning());
    EXPECT_EQ(rowCount(), support::kHostSceneRows + 2);
}

/// Bytes of the heap in use; the address sanitizer holds freed ones back and looks for leaks
/// itself.
std::size_t bytesInUse()
{
#ifdef __SANITIZE_ADDRESS__
    return 0;
#else
    return mallinfo2().uordblks;
#endif
}

constexpr int kRuns = 100;

TEST_F(HostedTest, HundredRunsLeaveNothingBehind)
{
    constexpr std::size_t kSlack = 200000; // bytes in all, for caches of the platform
    // Qt's own cache of scaled icons grows up to a limit.
    const int cacheLimit = QPixmapCache::cacheLimit();
    QPixmapCache::setCacheLimit(0);
    const std::string before = support::writeScene(scene.get());
    std::size_t inUse = 0;
    for (int run = 0; run < kRuns; ++run) {
        if (run == kRuns / 5)
            inUse = bytesInUse();
        hooks().m_mirabo_startNode(scene.get());
        tree()->setCurrentItem(tree()->topLevelItem(0)->child(0)->child(1));
        pass();
        hooks().m_mirabo_stop();
        pass();
    }
    EXPECT_LT(bytesInUse(), inUse + kSlack);
    QPixmapCache::setCacheLimit(cacheLimit);
    EXPECT_EQ(scene->getRefCount(), 1);
    EXPECT_EQ(scene->getAuditors().getLength(), 0);
    EXPECT_EQ(support::writeScene(scene.get()), before);
}

TEST_F(HostedTest, StaticInterfaceGoesThroughTheHooks)
{
    EXPECT_EQ(SoMirabo::getShortcutValue(), SoKeyboardEvent::F12);
    SoLibMirabo::finish();
    EXPECT_FALSE(SoMirabo::isRunning());
    EXPECT_EQ(SoMirabo::isInstance(), 0);
    EXPECT_FALSE(SoMirabo::processEvents());
    SoMirabo::setSceneGraph(scene.get());
    SoMirabo::stop();
    EXPECT_FALSE(SoLibMirabo::isAvailable()) << "none of these loads the library";
    SoMirabo::setInstance(0, nullptr, scene.get(), true);
    EXPECT_EQ(SoMirabo::isInstance(), 1);
    EXPECT_TRUE(SoMirabo::processEvents());
    window()->close();
    EXPECT_FALSE(SoMirabo::processEvents());
    EXPECT_FALSE(SoLibMirabo::isAvailable()) << "the hooks are let go with the tool";

    const SoRef<SoGuiRenderArea> area(new SoGuiRenderArea);
    area->setSceneGraph(scene.get());
    SoMirabo::start(static_cast<const SoRenderAreaCore*>(area.get()));
    EXPECT_EQ(MrbServices::getInstance()->getRenderArea(), area.get());
    SoMirabo::stop();
    EXPECT_FALSE(SoLibMirabo::isAvailable());
    SoMirabo::launch(0, nullptr, area.get());
    EXPECT_TRUE(SoMirabo::isRunning());
}

} // namespace
