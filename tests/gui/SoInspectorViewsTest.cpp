#include "GuiTestTools.h"
#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/gui/SoInspectorViews.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/rendering/SoOutline.h>
#include <kalmyr/sensors/SoSensorManager.h>

#include <cstdlib>
#include <string>

namespace {

constexpr int kSize = 100;

class SoInspectorViewsTest : public testing::Test {
protected:
    static void SetUpTestSuite() { kalmyr::initGui(); }
    void SetUp() override
    {
        scene = new SoSeparator;
        cube = cubeAt({0, 0, 0}).get();
        scene->addChild(cube.get());
        viewer = new SoGuiExaminerViewer;
        viewer->setSize(SbVec2i32(kSize, kSize));
        viewer->setSceneGraph(scene.get());
        viewer->viewAll();
        viewer->setViewing(false);
        path = new SoPath(scene.get());
        path->append(0);
    }
    void TearDown() override
    {
        SoInspectorViews::setOutlined(nullptr);
        SoInspectorViews::setClickFunction(nullptr, nullptr);
    }

    static int lineIn(const SoOffscreenRenderer& renderer)
    {
        int count = 0;
        const unsigned char* p = renderer.getBuffer();
        for (int i = 0; p && i < kSize * kSize; ++i, p += 3)
            count += p[0] < 3 && std::abs(p[1] - 230) < 3 && p[2] > 250 ? 1 : 0;
        return count;
    }
    int lineInView(SoGuiRenderArea& area)
    {
        EXPECT_TRUE(area.renderOffscreen(renderer));
        return lineIn(renderer);
    }
    /// Presses and clicks as P and C, with their positions.
    void listen()
    {
        SoInspectorViews::setClickFunction(
            [](void* data, SoGuiRenderArea*, const SbVec2s& at, SoInspectorViews::Click click) {
                static_cast<SoInspectorViewsTest*>(data)->heard +=
                    (click == SoInspectorViews::PRESSED ? "P" : "C") + std::to_string(at[0]) + " ";
            },
            this);
    }
    std::string click(short x, short toX)
    {
        heard.clear();
        const auto press = button(SoMouseButtonEvent::BUTTON1, true, x, 50);
        const auto move = motion(toX, 50);
        const auto release = button(SoMouseButtonEvent::BUTTON1, false, toX, 50);
        viewer->processEvent(&press);
        viewer->processEvent(&move);
        viewer->processEvent(&release);
        return heard;
    }
    static void runQueue() { SoSensorManager::processDelayQueue(true); }

    SoRef<SoSeparator> scene;
    SoRef<SoSeparator> cube;
    SoRef<SoGuiExaminerViewer> viewer;
    SoRef<SoPath> path;
    SoOffscreenRenderer renderer{SbViewportRegion(kSize, kSize)};
    std::string heard;
};

} // namespace

TEST_F(SoInspectorViewsTest, EveryViewOfTheSceneOutlines)
{
    if (!SoOffscreenContext::shared().isValid())
        GTEST_SKIP() << "no OpenGL";
    const SoRef<SoGuiRenderArea> other(new SoGuiRenderArea);
    other->setSize(SbVec2i32(kSize, kSize));
    other->setSceneGraph(cubeAt({0, 0, 0}).get());
    SoGLRenderAction own; // the program's, which stays as it is
    viewer->getSceneManager()->setGLRenderAction(&own);
    int redraws = 0;
    viewer->getSceneManager()->setRenderCallback(
        [](void* data, SoSceneManager*) { ++*static_cast<int*>(data); }, &redraws);
    EXPECT_EQ(lineInView(*viewer), 0);
    runQueue();
    redraws = 0;

    SoInspectorViews::setOutlined(path.get());
    runQueue();
    EXPECT_EQ(redraws, 1);
    EXPECT_GT(lineInView(*viewer), 150);
    EXPECT_EQ(lineInView(*other), 0) << "another scene";
    EXPECT_TRUE(renderer.render(scene.get()));
    EXPECT_EQ(lineIn(renderer), 0) << "a picture of the program, not a view";
    EXPECT_FALSE(viewer->getSceneManager()->isRedrawScheduled());

    SoInspectorViews::setOutlined(nullptr);
    runQueue();
    EXPECT_EQ(redraws, 2);
    EXPECT_EQ(lineInView(*viewer), 0);
    renderer.setGLRenderAction(nullptr);
    viewer->getSceneManager()->setGLRenderAction(nullptr);
}

TEST_F(SoInspectorViewsTest, OtherViewsAreMadeKnownByTheirAction)
{
    if (!SoOffscreenContext::shared().isValid())
        GTEST_SKIP() << "no OpenGL";
    int redraws = 0;
    const SbViewportRegion region(kSize, kSize);
    {
        SoGLRenderAction action(region);
        SoInspectorViews::addView(
            &action, [](void* data) { ++*static_cast<int*>(data); }, &redraws);
        renderer.setGLRenderAction(&action);
        EXPECT_EQ(SoInspectorViews::findDrawn(cube.get(), region), nullptr);
        EXPECT_TRUE(renderer.render(scene.get()));
        EXPECT_EQ(SoInspectorViews::findDrawn(cube.get(), region), scene.get());
        SoInspectorViews::setOutlined(path.get());
        EXPECT_EQ(redraws, 1);
        cube->addChild(new SoCube); // smaller than what is seen without a camera
        static_cast<SoCube*>(cube->getChild(1))->width = 1;
        static_cast<SoCube*>(cube->getChild(1))->height = 1;
        cube->removeChild(2);
        EXPECT_TRUE(renderer.render(scene.get()));
        EXPECT_GT(lineIn(renderer), 150);
        SoInspectorViews::removeView(&action);
        EXPECT_TRUE(renderer.render(scene.get()));
        EXPECT_EQ(lineIn(renderer), 0);
        SoInspectorViews::addView(
            &action, [](void* data) { ++*static_cast<int*>(data); }, &redraws);
        renderer.setGLRenderAction(nullptr);
    }
    SoInspectorViews::setOutlined(nullptr);
    EXPECT_EQ(redraws, 1) << "an action that died is forgotten";
    EXPECT_EQ(SoInspectorViews::findDrawn(cube.get(), region), nullptr);
}

TEST_F(SoInspectorViewsTest, ClicksThatNobodyWantedAreTold)
{
    EXPECT_EQ(click(50, 50), "");
    listen();
    EXPECT_EQ(click(50, 50), "P50 C50 ");
    EXPECT_EQ(click(50, 52), "P50 C50 ") << "a hand trembles";
    EXPECT_EQ(click(50, 60), "P50 ") << "a drag";
    viewer->setPixelRatio(3);
    EXPECT_EQ(click(50, 58), "P50 C50 ") << "the same on a finer screen";
    viewer->setPixelRatio(1);
    viewer->setViewing(true);
    EXPECT_EQ(click(50, 50), "") << "the viewer moves the camera";
    viewer->setViewing(false);

    auto* taker = new SoEventCallback;
    const auto take = [](void*, SoEventCallback* node) { node->setHandled(); };
    taker->addEventCallback(SoMouseButtonEvent::getClassTypeId(), take, nullptr);
    scene->addChild(taker);
    EXPECT_EQ(click(50, 50), "") << "a node of the scene has it";
    scene->removeChild(taker);
    EXPECT_EQ(click(50, 50), "P50 C50 ");
}

TEST_F(SoInspectorViewsTest, ManagersAndScenesMayGoFirst)
{
    SoInspectorViews::setOutlined(path.get());
    viewer.reset();
    const SoRef<SoGuiRenderArea> area(new SoGuiRenderArea);
    area->setSceneGraph(scene.get());
    scene->removeAllChildren();
    SoInspectorViews::setOutlined(path.get());
    area->setSceneGraph(nullptr);
    path.reset();
    scene.reset();
    SoInspectorViews::setOutlined(nullptr);
    EXPECT_EQ(cube->getRefCount(), 1);
}
