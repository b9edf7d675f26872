// Whatever dies under a viewer that draws, handles an event or flies: its scene, its scene manager,
// the viewer itself. The address sanitizer looks on.

#include "GuiTestTools.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/nodes/SoCallback.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/sensors/SoSensorManager.h>

#include <functional>

namespace {

double s_now = 0; ///< seconds, for the flight

/// A viewer, a scene that calls back when it is drawn or gets an event, and who counts its deaths.
class DeathsWhileDrawing : public testing::Test {
protected:
    static void SetUpTestSuite() { kalmyr::initGui(); }

    void SetUp() override
    {
        auto* drawn = new SoCallback;
        drawn->setCallback(
            [](void* data, SoAction*) { static_cast<DeathsWhileDrawing*>(data)->hit(); }, this);
        auto* handled = new SoEventCallback;
        handled->addEventCallback(
            SoLocation2Event::getClassTypeId(),
            [](void* data, SoEventCallback*) { static_cast<DeathsWhileDrawing*>(data)->hit(); },
            this);
        SoRef<SoSeparator> scene = cubeAt({0, 0, 0});
        scene->addChild(drawn);
        scene->addChild(handled);
        scene->addChild(new SoCube);
        m_sceneDeath.setDeleteCallback([](void* data, SoSensor*) { ++*static_cast<int*>(data); },
                                       &sceneDeaths);
        viewer = new SoGuiExaminerViewer;
        viewer->setSize(SbVec2i32(40, 30));
        viewer->setSceneGraph(scene.get());
        viewer->viewAll();
        m_sceneDeath.attach(scene.get());
    }

public: // called by sensors and nodes
    void hit()
    {
        if (const auto now = std::exchange(act, {}))
            now();
    }

protected:
    bool draw()
    {
        SoOffscreenRenderer renderer(viewer->getSceneManager()->getViewportRegion());
        return viewer->renderOffscreen(renderer);
    }

    SoRef<SoGuiExaminerViewer> viewer;
    std::function<void()> act; ///< once, from inside the scene
    int sceneDeaths = 0;

private:
    SoNodeSensor m_sceneDeath;
};

} // namespace

TEST_F(DeathsWhileDrawing, TheSceneIsLetGo)
{
    if (!SoOffscreenContext::shared().isValid())
        GTEST_SKIP() << SoOffscreenContext::shared().getError();
    act = [this] { viewer->setSceneGraph(nullptr); };
    draw();
    EXPECT_FALSE(act) << "it was not drawn";
    EXPECT_EQ(sceneDeaths, 1) << "nobody holds it any more";
    EXPECT_TRUE(draw()) << "an empty scene";
}

TEST_F(DeathsWhileDrawing, TheViewerDies)
{
    if (!SoOffscreenContext::shared().isValid())
        GTEST_SKIP() << SoOffscreenContext::shared().getError();
    act = [this] { viewer.reset(); };
    SoOffscreenRenderer renderer(viewer->getSceneManager()->getViewportRegion());
    viewer->renderOffscreen(renderer);
    EXPECT_EQ(sceneDeaths, 1);
}

TEST_F(DeathsWhileDrawing, TheSceneManagerDies)
{
    SoRef<SoSceneManager> manager(new SoSceneManager);
    manager->setSceneGraph(viewer->getSceneGraph());
    viewer.reset();
    act = [&manager] { manager.reset(); };
    SoLocation2Event event;
    manager->processEvent(&event);
    EXPECT_FALSE(manager);
    EXPECT_EQ(sceneDeaths, 1);
}

TEST_F(DeathsWhileDrawing, TheViewerDiesOfAnEvent)
{
    viewer->setViewing(false);
    act = [this] { viewer.reset(); };
    const SoLocation2Event event = motion(20, 15);
    viewer->processEvent(&event);
    EXPECT_FALSE(viewer);
    EXPECT_EQ(sceneDeaths, 1);
}

TEST_F(DeathsWhileDrawing, TheViewerDiesInTheMiddleOfAMove)
{
    // A sensor of the host that runs at once is told of every field that the move sets.
    SoNodeSensor sensor;
    sensor.setPriority(0);
    sensor.setData(this);
    sensor.setFunction(
        [](void* data, SoSensor*) { static_cast<DeathsWhileDrawing*>(data)->hit(); });
    const SoMouseWheelEvent zoom = [] {
        SoMouseWheelEvent event;
        event.setDelta(SoMouseWheelEvent::kNotch);
        event.setPosition(SbVec2s(3, 4));
        return event;
    }();
    const SoKeyboardEvent turn = keyPress(SoKeyboardEvent::LEFT_ARROW);
    const SoRef<SoNode> scene(viewer->getSceneGraph());
    for (const SoEvent* event :
         {static_cast<const SoEvent*>(&zoom), static_cast<const SoEvent*>(&turn)}) {
        viewer = new SoGuiExaminerViewer;
        viewer->setSize(SbVec2i32(40, 30));
        viewer->setSceneGraph(scene.get());
        viewer->viewAll();
        sensor.attach(viewer->getCamera());
        act = [this] { viewer.reset(); };
        viewer->processEvent(event);
        EXPECT_FALSE(viewer);
    }
}

TEST_F(DeathsWhileDrawing, TheViewerDiesInFlight)
{
    SoNodeSensor sensor;
    sensor.setPriority(0);
    sensor.setData(this);
    sensor.setFunction(
        [](void* data, SoSensor*) { static_cast<DeathsWhileDrawing*>(data)->hit(); });
    SbTime::setSource([] { return SbTime(s_now); });
    viewer->resetToHomePosition();
    sensor.attach(viewer->getCamera());
    act = [this] { viewer.reset(); };
    for (; viewer && s_now < 10; s_now += 0.125)
        SoSensorManager::processTimerQueue();
    SbTime::setSource(nullptr);
    EXPECT_FALSE(act);
}
