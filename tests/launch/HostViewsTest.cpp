#include "LaunchSupport.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/vrml/SoVRMLAppearance.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLShape.h>

#include <mirabo/extender/MrbServices.h>
#include <mirabo/launch/SoMirabo.h>

#include <QSettings>

#include <cstdlib>

namespace {

constexpr int kSize = 200;

/// A host with two views of its own on one scene: a viewer and a plain render area.
class HostViewsTest : public LaunchTest {
protected:
    void SetUp() override
    {
        LaunchTest::SetUp();
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << "no OpenGL";
        viewer = new SoGuiExaminerViewer;
        viewer->setSize(SbVec2i32(kSize, kSize));
        viewer->setViewing(false);
        area = new SoGuiRenderArea;
        area->setSize(SbVec2i32(kSize, kSize));
    }
    void show(SoNode* root)
    {
        viewer->setSceneGraph(root);
        viewer->viewAll();
        const SoRef<SoSeparator> whole(new SoSeparator);
        auto* camera = new SoPerspectiveCamera;
        whole->addChild(camera);
        whole->addChild(root);
        camera->viewAll(root, SbViewportRegion(kSize, kSize));
        area->setSceneGraph(whole.get());
    }

    static int lineIn(const SoOffscreenRenderer& drawn)
    {
        int count = 0;
        const unsigned char* p = drawn.getBuffer();
        for (int i = 0; p && i < kSize * kSize; ++i, p += 3)
            count += p[0] < 3 && std::abs(p[1] - 230) < 3 && p[2] > 250 ? 1 : 0;
        return count;
    }
    int lineInView(SoGuiRenderArea& view)
    {
        EXPECT_TRUE(view.renderOffscreen(renderer));
        return lineIn(renderer);
    }
    /// Of a horizontal line through the middle: first and last pixel with the outline's colour.
    std::pair<int, int> lineSpan()
    {
        std::pair<int, int> span(-1, -1);
        EXPECT_TRUE(viewer->renderOffscreen(renderer));
        for (int x = 0; x < kSize; ++x) {
            const unsigned char* p = renderer.getBuffer() + 3 * (kSize / 2 * kSize + x);
            if (p[0] > 3 || std::abs(p[1] - 230) > 3 || p[2] < 250)
                continue;
            span.first = span.first < 0 ? x : span.first;
            span.second = x;
        }
        return span;
    }
    static void click(SoGuiRenderArea& view, short x, short y)
    {
        SoMouseButtonEvent event;
        event.setButton(SoMouseButtonEvent::BUTTON1);
        event.setPosition(SbVec2s(x, y));
        for (const SoButtonEvent::State state : {SoButtonEvent::DOWN, SoButtonEvent::UP}) {
            event.setState(state);
            view.processEvent(&event);
        }
        pass();
    }
    static std::string currentRow()
    {
        const QTreeWidgetItem* item = tree()->currentItem();
        return item ? item->text(0).toStdString() : "none";
    }
    static QTreeWidgetItem* row(int child) { return tree()->topLevelItem(0)->child(child); }
    static void choose(QTreeWidgetItem* item)
    {
        tree()->setCurrentItem(item);
        pass();
    }

    SoRef<SoGuiExaminerViewer> viewer;
    SoRef<SoGuiRenderArea> area;
    SoOffscreenRenderer renderer{SbViewportRegion(kSize, kSize)};
};

} // namespace

TEST_F(HostViewsTest, OutlineTheChosenOccurrence)
{
    show(scene.get());
    SoGLRenderAction own;
    viewer->getSceneManager()->setGLRenderAction(&own);
    hooks().m_mirabo_startNode(scene.get());
    pass();
    choose(tree()->topLevelItem(0));
    choose(row(0)); // the left wheel, of two
    EXPECT_GT(lineInView(*viewer), 50);
    EXPECT_GT(lineInView(*area), 50);
    const auto left = lineSpan();
    choose(row(2)); // the right wheel
    const auto right = lineSpan();
    EXPECT_LT(left.second, right.first);
    EXPECT_EQ(viewer->getSceneManager()->getGLRenderAction(), &own);

    hooks().m_mirabo_stop();
    EXPECT_EQ(lineInView(*viewer), 0);
    EXPECT_EQ(lineInView(*area), 0);
    viewer->getSceneManager()->setGLRenderAction(nullptr);
    renderer.setGLRenderAction(nullptr);
}

/// The tool that was started on one view knows the others by the scene that they share.
TEST_F(HostViewsTest, ClickIntoTheTree)
{
    show(scene.get());
    hooks().m_mirabo_startSceneManager(viewer->getSceneManager());
    pass();
    for (SoGuiRenderArea* view : {static_cast<SoGuiRenderArea*>(viewer.get()), area.get()}) {
        click(*view, 2, 2);
        EXPECT_EQ(currentRow(), "none") << "a click on nothing";
        EXPECT_EQ(lineInView(*view), 0);
        for (short x = kSize; currentRow() == "none" && x > 0;)
            click(*view, x = static_cast<short>(x - 5), kSize / 2);
        EXPECT_EQ(currentRow(), "Cube");
        ASSERT_NE(tree()->currentItem()->parent(), nullptr);
        QTreeWidgetItem* above = tree()->currentItem()->parent()->parent();
        EXPECT_EQ(above->indexOfChild(tree()->currentItem()->parent()), 2) << "the right wheel";
        EXPECT_GT(lineInView(*viewer), 50);
        EXPECT_GT(lineInView(*area), 50);
    }
    click(*viewer, 2, 2);
    viewer->setViewing(true);
    click(*viewer, kSize / 4, kSize / 2);
    EXPECT_EQ(currentRow(), "none") << "the pointer moves the camera";

    const SoRef<SoGuiRenderArea> other(new SoGuiRenderArea);
    other->setSceneGraph(support::hostScene().get());
    choose(tree()->topLevelItem(0));
    click(*other, 2, 2);
    EXPECT_EQ(currentRow(), "Separator") << "a view of something else";
}

/// Every shape of such a scene is in a field: what is around it is outlined.
TEST_F(HostViewsTest, OutlineWhatHoldsANodeInAField)
{
    const SoRef<SoVRMLGroup> world(new SoVRMLGroup);
    auto* shape = new SoVRMLShape;
    shape->appearance.setValue(new SoVRMLAppearance);
    shape->geometry.setValue(new SoVRMLBox);
    world->addChild(shape);
    show(world.get());
    hooks().m_mirabo_startNode(world.get());
    pass();
    click(*area, kSize / 2, kSize / 2);
    EXPECT_EQ(currentRow(), "VRMLBox");
    EXPECT_GT(lineInView(*area), 50);
    choose(tree()->topLevelItem(0));
    EXPECT_GT(lineInView(*area), 50);
    QTreeWidgetItem* box = row(0)->child(row(0)->childCount() - 1);
    choose(box);
    EXPECT_EQ(lineInView(*area), 0) << "chosen in the tree it outlines nothing";
}

TEST_F(HostViewsTest, OutlineNothingWhereThereIsNoHighlight)
{
    show(scene.get());
    const auto expectNone = [this](const char* why) {
        hooks().m_mirabo_startNode(scene.get());
        pass();
        choose(row(0));
        EXPECT_EQ(lineInView(*viewer), 0) << why;
        click(*viewer, kSize / 4, kSize / 2);
        EXPECT_EQ(currentRow(), "Cube") << "picks select rows all the same";
        EXPECT_EQ(lineInView(*viewer), 0) << why;
        hooks().m_mirabo_stop();
    };
    for (const char* mode : {"KMRU_LAUNCH_MIRABO", "ART_LAUNCH_MIRABO"}) {
        SoPreferences::setValue(mode, "1");
        expectNone(mode);
        SoPreferences::removeValue(mode);
    }
    QSettings store("Mirabo", "MiraboViewer");
    store.setValue("/TreeViewPreferences/HighlightSelectedNode", false);
    store.sync();
    expectNone("the setting");
}

/// A scene manager that the host draws and feeds by itself.
TEST_F(HostViewsTest, ArePickedInByTheirScene)
{
    const SoRef<SoSceneManager> manager(new SoSceneManager);
    const SbViewportRegion region(kSize, kSize);
    const SoRef<SoSeparator> drawn(new SoSeparator);
    auto* camera = new SoPerspectiveCamera;
    drawn->addChild(camera);
    drawn->addChild(scene.get());
    camera->viewAll(scene.get(), region);
    manager->setViewportRegion(region);
    manager->setSceneGraph(drawn.get());
    hooks().m_mirabo_startNode(scene.get());
    pass();
    hooks().m_mirabo_setPickAction(region, SbVec2s(kSize / 4, kSize / 2));
    EXPECT_EQ(currentRow(), "Cube");
    hooks().m_mirabo_setPickAction(region, SbVec2s(2, 2));
    EXPECT_EQ(currentRow(), "none");
}

/// Drawn with an action of the host's own, in whatever context: two lines.
TEST_F(HostViewsTest, TakeTwoLinesWhereTheyAreTheHostsOwn)
{
    const SoRef<SoSeparator> drawn(new SoSeparator);
    auto* camera = new SoPerspectiveCamera;
    drawn->addChild(camera);
    drawn->addChild(scene.get());
    const SbViewportRegion region(kSize, kSize);
    camera->viewAll(scene.get(), region);
    SoGLRenderAction action(region);
    renderer.setGLRenderAction(&action);
    int redraws = 0;
    SoMirabo::addView(
        &action, [](void* data) { ++*static_cast<int*>(data); }, &redraws);

    SoMirabo::start(scene.get());
    pass();
    EXPECT_TRUE(renderer.render(drawn.get()));
    redraws = 0;
    choose(row(2));
    EXPECT_GT(redraws, 0);
    EXPECT_TRUE(renderer.render(drawn.get()));
    EXPECT_GT(lineIn(renderer), 50);

    SoMirabo::setPickAction(region, SbVec2s(2, 2));
    EXPECT_EQ(currentRow(), "none");
    EXPECT_TRUE(renderer.render(drawn.get()));
    EXPECT_EQ(lineIn(renderer), 0);
    short x = kSize;
    while (currentRow() == "none" && x > 0)
        SoMirabo::setPickAction(region, SbVec2s(x = static_cast<short>(x - 5), kSize / 2));
    EXPECT_EQ(currentRow(), "Cube");
    EXPECT_TRUE(renderer.render(drawn.get()));
    EXPECT_GT(lineIn(renderer), 50);
    SoMirabo::stop();
    EXPECT_TRUE(renderer.render(drawn.get()));
    EXPECT_EQ(lineIn(renderer), 0);
    renderer.setGLRenderAction(nullptr);
}

TEST_F(HostViewsTest, MayDieWhileSomethingIsOutlined)
{
    show(scene.get());
    hooks().m_mirabo_startSceneManager(viewer->getSceneManager());
    pass();
    choose(tree()->topLevelItem(0)->child(tree()->topLevelItem(0)->childCount() - 1));
    EXPECT_GT(lineInView(*viewer), 50);
    viewer.reset();
    pass();
    EXPECT_GT(lineInView(*area), 50) << "the other one goes on";
    area.reset();
    pass();
    hooks().m_mirabo_stop();
    EXPECT_EQ(scene->getRefCount(), 1);
}

/// The user closes the window, and the host has not pumped yet.
TEST_F(HostViewsTest, ForgetAToolThatWaitsForItsEnd)
{
    show(scene.get());
    hooks().m_mirabo_startNode(scene.get());
    pass();
    choose(row(0));
    EXPECT_GT(lineInView(*viewer), 50);
    window()->close();
    EXPECT_FALSE(hooks().m_mirabo_isRunning());
    EXPECT_EQ(lineInView(*viewer), 0);
    choose(row(2));
    click(*viewer, kSize / 4, kSize / 2);
    EXPECT_EQ(tree()->currentItem(), row(2));
    EXPECT_EQ(lineInView(*viewer), 0);
    hooks().m_mirabo_startNode(scene.get()); // goes on with the same window
    pass();
    click(*viewer, kSize / 4, kSize / 2);
    EXPECT_EQ(currentRow(), "Cube");
    EXPECT_GT(lineInView(*viewer), 50);
}

/// The tool's own viewer.
TEST_F(HostViewsTest, ClearTheRowWithAClickOnNothing)
{
    hooks().m_mirabo_startStandalone(0, nullptr);
    drop(writeFile("a.ky", "#Kalmyr V1.0 ascii\nSeparator {\n  Cube {}\n}\n"));
    auto* own = MrbServices::getInstance()->getRenderArea();
    ASSERT_NE(own, nullptr);
    auto* examiner = static_cast<SoGuiViewer*>(own);
    examiner->setViewing(false);
    own->setSize(SbVec2i32(kSize, kSize));
    examiner->viewAll();
    const SoNode* root = static_cast<SoSelection*>(own->getSceneGraph())->getChild(0);
    const int held = root->getRefCount();
    click(*own, kSize / 2, kSize / 2);
    EXPECT_EQ(currentRow(), "Cube");
    EXPECT_GT(lineInView(*own), 50);
    click(*own, 2, 2);
    EXPECT_EQ(currentRow(), "none");
    EXPECT_EQ(lineInView(*own), 0);
    EXPECT_EQ(root->getRefCount(), held);
    renderer.setGLRenderAction(nullptr);
}
