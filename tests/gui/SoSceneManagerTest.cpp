#include "GuiTestTools.h"
#include "support/ErrorGuard.h"

#include <kalmyr/gui/SoSceneManagerImpl.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/sensors/SoSensorManager.h>

namespace {

class SoSceneManagerTest : public testing::Test {
protected:
    static void SetUpTestSuite() { kalmyr::initGui(); }

    void countRedraws(SoSceneManager& manager)
    {
        manager.setRenderCallback([](void* data, SoSceneManager*) { ++*static_cast<int*>(data); },
                                  &redraws);
    }
    static void runQueue() { SoSensorManager::processDelayQueue(true); }

    int redraws = 0;
};

TEST_F(SoSceneManagerTest, AsksForOneRedrawHoweverManyChangesCome)
{
    const SoRef<SoSceneManager> manager(new SoSceneManager);
    const auto scene = cubeAt({0, 0, 0});
    manager->setSceneGraph(scene.get());
    EXPECT_FALSE(manager->isRedrawScheduled()) << "nobody wants to hear of it";
    countRedraws(*manager);
    for (int i = 0; i < 10; ++i)
        static_cast<SoCube*>(scene->getChild(1))->width = static_cast<float>(i);
    EXPECT_TRUE(manager->isRedrawScheduled());
    runQueue();
    runQueue();
    EXPECT_EQ(redraws, 1);
    manager->setBackgroundColor(SbColor(1, 0, 0));
    runQueue();
    EXPECT_EQ(redraws, 2);
}

TEST_F(SoSceneManagerTest, WatchesOnlyThePresentScene)
{
    const SoRef<SoSceneManager> manager(new SoSceneManager);
    const auto first = cubeAt({0, 0, 0});
    const auto second = cubeAt({1, 0, 0});
    countRedraws(*manager);
    manager->setSceneGraph(first.get());
    manager->setSceneGraph(second.get());
    runQueue();
    redraws = 0;
    first->removeAllChildren();
    runQueue();
    EXPECT_EQ(redraws, 0);
    second->removeAllChildren();
    runQueue();
    EXPECT_EQ(redraws, 1);
}

TEST_F(SoSceneManagerTest, HoldsItsScene)
{
    const SoRef<SoSceneManager> manager(new SoSceneManager);
    SoRef<SoSeparator> outer(new SoSeparator);
    outer->addChild(new SoSeparator);
    manager->setSceneGraph(outer.get());
    outer.reset();
    EXPECT_EQ(manager->getSceneGraph()->getRefCount(), 1);
    // What takes over may have been held by nothing but what goes.
    manager->setSceneGraph(static_cast<SoSeparator*>(manager->getSceneGraph())->getChild(0));
    EXPECT_EQ(static_cast<SoSeparator*>(manager->getSceneGraph())->getNumChildren(), 0);
    EXPECT_EQ(manager->getSceneGraph()->getRefCount(), 1);
}

TEST_F(SoSceneManagerTest, MayDieWithARedrawOutstanding)
{
    SoRef<SoSceneManager> manager(new SoSceneManager);
    const auto scene = cubeAt({0, 0, 0});
    countRedraws(*manager);
    manager->setSceneGraph(scene.get());
    manager.reset();
    scene->removeAllChildren();
    runQueue();
    EXPECT_EQ(redraws, 0);
}

TEST_F(SoSceneManagerTest, PassesEventsToTheScene)
{
    const SoRef<SoSceneManager> manager(new SoSceneManager);
    const SoRef<SoSeparator> scene(new SoSeparator);
    auto* listener = new SoEventCallback;
    scene->addChild(listener);
    SbVec2s heard;
    listener->addEventCallback(
        SoMouseButtonEvent::getClassTypeId(),
        [](void* data, SoEventCallback* node) {
            *static_cast<SbVec2s*>(data) = node->getEvent()->getPosition();
            node->setHandled();
        },
        &heard);
    const auto press = button(SoMouseButtonEvent::BUTTON1, true, 12, 34);
    EXPECT_FALSE(manager->processEvent(&press)) << "no scene yet";
    manager->setSceneGraph(scene.get());
    EXPECT_TRUE(manager->processEvent(&press));
    EXPECT_EQ(heard, SbVec2s(12, 34));
    const auto move = motion(1, 2);
    EXPECT_FALSE(manager->processEvent(&move));
}

TEST_F(SoSceneManagerTest, ReportsThatItCannotDrawWithoutAContext)
{
    const SoRef<SoSceneManager> manager(new SoSceneManager);
    auto errors = support::expectErrors();
    EXPECT_FALSE(manager->render());
}

TEST_F(SoSceneManagerTest, RemembersTheInspector)
{
    const SoRef<SoSceneManager> manager(new SoSceneManager);
    EXPECT_EQ(manager->getImpl()->getOwnMirabo(), 0);
    manager->getImpl()->setOwnMirabo(1);
    EXPECT_EQ(manager->getImpl()->getOwnMirabo(), 1);
}

class SoGuiRenderAreaTest : public SoSceneManagerTest {};

/// As the inspector looks for the render area of a scene manager that it is started on.
std::vector<SoGuiRenderArea*> areasOf(SoSceneManager& manager)
{
    std::vector<SoGuiRenderArea*> areas;
    const SoAuditorList& auditors = manager.getImpl()->getRootField().getAuditors();
    for (int i = 0; i < auditors.getLength(); ++i) {
        if (auditors.getType(i) != SoAuditor::FIELD)
            continue;
        auto* field = dynamic_cast<SoField*>(auditors.getObject(i));
        if (!field || !field->isOfType(SoSFFieldContainer::getClassTypeId()))
            continue;
        SoFieldContainer* container = field->getContainer();
        if (container->isOfType(SoGuiRenderArea::getClassTypeId()))
            areas.push_back(static_cast<SoGuiRenderArea*>(container));
    }
    return areas;
}

TEST_F(SoGuiRenderAreaTest, IsFoundFromItsSceneManager)
{
    const SoRef<SoGuiRenderArea> plain(new SoGuiRenderArea);
    EXPECT_EQ(areasOf(*plain->getSceneManager()), std::vector<SoGuiRenderArea*>{plain.get()});
    EXPECT_EQ(plain->sceneManager.getValue(), plain->getSceneManager());
    EXPECT_EQ(plain->getField(SbName("sceneManager")), &plain->sceneManager);

    const SoRef<SoGuiRenderArea> viewer(new SoGuiExaminerViewer);
    EXPECT_EQ(areasOf(*viewer->getSceneManager()), std::vector<SoGuiRenderArea*>{viewer.get()});
    EXPECT_TRUE(viewer->isOfType(SoGuiViewer::getClassTypeId()));
    const SoRef<SoSceneManager> alone(new SoSceneManager);
    EXPECT_TRUE(areasOf(*alone).empty());
}

TEST_F(SoGuiRenderAreaTest, MayDieBeforeItsManagerOrItsScene)
{
    SoRef<SoGuiRenderArea> area(new SoGuiRenderArea);
    const SoRef<SoSceneManager> manager(area->getSceneManager());
    SoRef<SoSeparator> scene = cubeAt({0, 0, 0});
    area->setSceneGraph(scene.get());
    countRedraws(*manager);
    area.reset();
    EXPECT_TRUE(areasOf(*manager).empty());
    scene->removeAllChildren();
    runQueue();
    EXPECT_EQ(redraws, 0) << "the callback belonged to the area";
    EXPECT_EQ(manager->getSceneGraph(), scene.get());
    scene.reset();
    manager->setSceneGraph(nullptr);

    // A viewer's scene that somebody takes out of the whole graph.
    SoRef<SoGuiViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSceneGraph(cubeAt({0, 0, 0}).get());
    static_cast<SoSeparator*>(viewer->getSceneManager()->getSceneGraph())->removeAllChildren();
    viewer->prepareFrame();
    viewer->setSceneGraph(cubeAt({1, 0, 0}).get());
    viewer->prepareFrame();
    viewer.reset();
}

TEST_F(SoGuiRenderAreaTest, KeepsItsSizeInRange)
{
    const SoRef<SoGuiRenderArea> area(new SoGuiRenderArea);
    area->setSize(SbVec2i32(640, 480));
    EXPECT_EQ(area->getSize(), SbVec2i32(640, 480));
    area->setSize(SbVec2i32(0, -5));
    EXPECT_EQ(area->getSize(), SbVec2i32(1, 1));
    area->setSize(SbVec2i32(100000, 7));
    EXPECT_EQ(area->getSize(), SbVec2i32(32767, 7));
}

SbColor pixelAt(const SoOffscreenRenderer& renderer, int x, int y)
{
    const int width = renderer.getViewportRegion().getWindowSize()[0];
    const unsigned char* p = renderer.getBuffer() + 3 * (y * width + x);
    return SbColor(static_cast<float>(p[0]) / 255, static_cast<float>(p[1]) / 255,
                   static_cast<float>(p[2]) / 255);
}

TEST_F(SoGuiRenderAreaTest, DrawsSceneAndBackgroundIntoMemory)
{
    if (!SoOffscreenContext::shared().isValid())
        GTEST_SKIP() << SoOffscreenContext::shared().getError();
    const SoRef<SoGuiViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSize(SbVec2i32(60, 40));
    viewer->setBackgroundColor(SbColor(0, 0, 1));
    SoOffscreenRenderer renderer{SbViewportRegion()};
    ASSERT_TRUE(viewer->renderOffscreen(renderer)) << "without a scene";
    EXPECT_TRUE(near(pixelAt(renderer, 30, 20), SbColor(0, 0, 1), 0.01f));

    countRedraws(*viewer->getSceneManager());
    viewer->setSceneGraph(cubeAt({5, 6, 7}).get());
    ASSERT_TRUE(viewer->renderOffscreen(renderer));
    EXPECT_FALSE(viewer->getSceneManager()->isRedrawScheduled()) << "it has just been drawn";
    EXPECT_EQ(renderer.getViewportRegion().getWindowSize(), SbVec2s(60, 40));
    EXPECT_TRUE(near(pixelAt(renderer, 1, 1), SbColor(0, 0, 1), 0.01f));
    const SbColor middle = pixelAt(renderer, 30, 20);
    EXPECT_GT(middle[0], 0.5f) << "the headlight shines on the cube";
    EXPECT_NEAR(middle[0], middle[2], 0.01f);
}

} // namespace
