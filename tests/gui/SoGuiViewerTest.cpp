#include "GuiTestTools.h"
#include "support/Clock.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/base/SbViewVolume.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/nodekits/SoSceneKit.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/vrml/SoVRMLNavigationInfo.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

namespace {

class SoGuiViewerTest : public testing::Test {
protected:
    static void SetUpTestSuite() { kalmyr::initGui(); }

    SoGuiViewerTest() : viewer(new SoGuiExaminerViewer)
    {
        viewer->setSize(SbVec2i32(400, 200));
        viewer->setSeekTime(0);
    }

    void show(SoNode* scene)
    {
        viewer->setSceneGraph(scene);
        viewer->prepareFrame();
    }
    SoCamera& camera() const { return *viewer->getCamera(); }
    SbViewVolume volume() const
    {
        return camera().getViewVolume(viewer->getSceneManager()->getViewportRegion());
    }
    /// Window fractions and depth at which a point of the camera's space is seen.
    SbVec3f seen(const SbVec3f& point) const
    {
        SbVec3f screen;
        volume().projectToScreen(point, screen);
        return screen;
    }
    SbVec3f interest() const
    {
        return camera().position.getValue()
               + camera().orientation.getValue().rotated(
                   SbVec3f(0, 0, -camera().focalDistance.getValue()));
    }
    void expectWithinPlanes(const SbBox3f& box) const
    {
        for (int i = 0; i < 8; ++i) {
            const float depth = seen(box.getCorner(i))[2];
            EXPECT_GT(depth, 0) << "corner " << i;
            EXPECT_LT(depth, 1) << "corner " << i;
        }
    }

    SoRef<SoGuiExaminerViewer> viewer;
};

class ViewerCameraTest : public SoGuiViewerTest,
                         public testing::WithParamInterface<SoGuiViewer::CameraType> {
protected:
    ViewerCameraTest()
    {
        viewer->setCameraType(GetParam());
        scene = cubeAt({10, 20, 30});
        show(scene.get());
    }

    SoRef<SoSeparator> scene;
    const SbBox3f box{{9, 19, 29}, {11, 21, 31}};
};

INSTANTIATE_TEST_SUITE_P(Kinds, ViewerCameraTest,
                         testing::Values(SoGuiViewer::PERSPECTIVE, SoGuiViewer::ORTHOGRAPHIC));

TEST_P(ViewerCameraTest, FitsEverythingIntoTheWindow)
{
    for (const SbVec2i32 size : {SbVec2i32(400, 200), SbVec2i32(100, 500)}) {
        viewer->setSize(size);
        viewer->orbitBy(0.7f, 0.3f);
        viewer->viewAll();
        SbBox2f extent;
        for (int i = 0; i < 8; ++i) {
            const SbVec3f p = seen(box.getCorner(i));
            extent.extendBy(SbVec2f(p[0], p[1]));
        }
        EXPECT_TRUE(SbBox2f(SbVec2f(0, 0), SbVec2f(1, 1)).intersect(extent.getMin()));
        EXPECT_TRUE(SbBox2f(SbVec2f(0, 0), SbVec2f(1, 1)).intersect(extent.getMax()));
        const SbVec2f used = extent.getSize();
        EXPECT_GT(std::max(used[0], used[1]), 0.5f) << "and it is not lost in it";
    }
}

TEST_P(ViewerCameraTest, OrbitKeepsThePointOfInterestAndItsDistance)
{
    const SbVec3f before = interest();
    const float distance = camera().focalDistance.getValue();
    const SbVec3f place = camera().position.getValue();
    for (const SbVec2f to : {SbVec2f(0.7f, 0.4f), SbVec2f(1.4f, -0.2f), SbVec2f(0.5f, 0.5f)})
        viewer->orbit(SbVec2f(0.45f, 0.5f), to);
    viewer->orbitBy(0.5f, -0.2f);
    EXPECT_TRUE(near(interest(), before, 1e-3f));
    EXPECT_FLOAT_EQ(camera().focalDistance.getValue(), distance);
    EXPECT_GT((camera().position.getValue() - place).length(), 0.1f * distance);
}

TEST_P(ViewerCameraTest, OrbitMovesTheFrontWithThePointer)
{
    // The nearest point of a ball around the point of interest goes where the pointer goes.
    const SbVec3f front = interest() + SbVec3f(0, 0, 0.2f);
    viewer->orbit(SbVec2f(0.5f, 0.5f), SbVec2f(0.55f, 0.5f));
    EXPECT_GT(seen(front)[0], 0.5f);
    EXPECT_NEAR(seen(front)[1], 0.5f, 1e-4f);
    viewer->orbit(SbVec2f(0.5f, 0.5f), SbVec2f(0.45f, 0.5f));
    viewer->orbit(SbVec2f(0.5f, 0.5f), SbVec2f(0.5f, 0.6f));
    EXPECT_GT(seen(front)[1], 0.5f);
}

TEST_P(ViewerCameraTest, ZoomKeepsThePointUnderThePointer)
{
    const SbVec2f pointer(0.8f, 0.3f);
    const SbVec3f pointed = volume().getPlanePoint(camera().focalDistance.getValue(), pointer);
    const float sizeBefore = seen(box.getMax())[0] - seen(box.getMin())[0];
    viewer->zoomTowards(pointer, 0.5f);
    EXPECT_NEAR(seen(pointed)[0], pointer[0], 1e-4f);
    EXPECT_NEAR(seen(pointed)[1], pointer[1], 1e-4f);
    EXPECT_GT(std::abs(seen(box.getMax())[0] - seen(box.getMin())[0]), std::abs(sizeBefore));
    // In and out again comes back; nonsense is ignored.
    const SbVec3f place = camera().position.getValue();
    viewer->zoomTowards(pointer, 3);
    viewer->zoomTowards(pointer, 1 / 3.0f);
    viewer->zoomTowards(pointer, 0);
    viewer->zoomTowards(pointer, std::numeric_limits<float>::quiet_NaN());
    EXPECT_TRUE(near(camera().position.getValue(), place, 1e-3f));
}

TEST_P(ViewerCameraTest, ZoomHasLimits)
{
    for (int i = 0; i < 100; ++i)
        viewer->dolly(1e6f);
    EXPECT_TRUE(std::isfinite(camera().position.getValue().length()));
    for (int i = 0; i < 200; ++i)
        viewer->dolly(1e-6f);
    EXPECT_GT(camera().focalDistance.getValue(), 0);
    EXPECT_TRUE(std::isfinite(camera().position.getValue().length()));
    viewer->viewAll();
    EXPECT_NEAR(seen({10, 20, 30})[0], 0.5f, 1e-3f);
}

TEST_P(ViewerCameraTest, PanCarriesWhatIsAtTheDistanceOfInterest)
{
    const SbVec2f from(0.2f, 0.2f);
    const SbVec2f to(0.6f, 0.9f);
    const SbVec3f grabbed = volume().getPlanePoint(camera().focalDistance.getValue(), from);
    const SbRotation orientation = camera().orientation.getValue();
    viewer->pan(from, to);
    EXPECT_NEAR(seen(grabbed)[0], to[0], 1e-4f);
    EXPECT_NEAR(seen(grabbed)[1], to[1], 1e-4f);
    EXPECT_EQ(camera().orientation.getValue(), orientation);
}

TEST_P(ViewerCameraTest, OtherKindOfCameraShowsTheSame)
{
    viewer->orbitBy(0.3f, 0.2f);
    viewer->dolly(0.7f);
    const SbVec3f right = camera().orientation.getValue().rotated(SbVec3f(1, 0.5f, 0));
    const SbVec3f beside = interest() + right; // at the distance of interest both kinds agree
    const SbVec3f before = seen(beside);
    const SbVec3f center = interest();
    const auto other = GetParam() == SoGuiViewer::PERSPECTIVE ? SoGuiViewer::ORTHOGRAPHIC
                                                              : SoGuiViewer::PERSPECTIVE;
    ASSERT_TRUE(viewer->setCameraType(other));
    EXPECT_EQ(viewer->getCameraType(), other);
    EXPECT_TRUE(near(interest(), center, 1e-3f));
    EXPECT_NEAR(seen(beside)[0], before[0], 1e-4f);
    EXPECT_NEAR(seen(beside)[1], before[1], 1e-4f);
    ASSERT_TRUE(viewer->setCameraType(GetParam()));
    EXPECT_NEAR(seen(beside)[0], before[0], 1e-4f);
    EXPECT_NEAR(seen(beside)[1], before[1], 1e-4f);
}

TEST_P(ViewerCameraTest, ComesHome)
{
    const SbVec3f corner = seen({11, 21, 31});
    viewer->orbitBy(1, 1);
    viewer->pan({0, 0}, {1, 0.3f});
    viewer->dolly(0.1f);
    viewer->resetToHomePosition();
    viewer->prepareFrame();
    EXPECT_TRUE(near(seen({11, 21, 31}), corner, 1e-3f));
    viewer->orbitBy(1, 0);
    const SbVec3f place = camera().position.getValue();
    viewer->saveHomePosition();
    viewer->viewAll();
    viewer->orbitBy(2, 0);
    viewer->resetToHomePosition();
    EXPECT_TRUE(near(camera().position.getValue(), place, 1e-3f));
}

TEST_P(ViewerCameraTest, SeeksWhatIsUnderThePointer)
{
    const SbVec3f target(9.5f, 20.5f, 31); // on the front face
    const SbVec3f at = seen(target);
    const SbVec2s pixel(static_cast<short>(at[0] * 400), static_cast<short>(at[1] * 200));
    const float before = camera().focalDistance.getValue();
    ASSERT_TRUE(viewer->seekToPoint(pixel));
    EXPECT_TRUE(near(interest(), target, 0.05f));
    EXPECT_NEAR(seen(target)[0], 0.5f, 0.02f);
    EXPECT_NEAR(seen(target)[1], 0.5f, 0.02f);
    if (GetParam() == SoGuiViewer::PERSPECTIVE) {
        EXPECT_LT(camera().focalDistance.getValue(), before * 0.6f);
    }
    EXPECT_FALSE(viewer->seekToPoint(SbVec2s(1, 1)));
}

TEST_P(ViewerCameraTest, ClippingPlanesEncloseTheScene)
{
    const auto check = [this] {
        viewer->prepareFrame();
        expectWithinPlanes(box);
    };
    check();
    viewer->orbitBy(0.8f, 0.5f);
    check();
    viewer->dolly(50);
    check();
    viewer->viewAll();
    static_cast<SoTranslation*>(scene->getChild(0))->translation = SbVec3f(10, 20, -5000);
    viewer->prepareFrame();
    expectWithinPlanes(SbBox3f(9, 19, -5001, 11, 21, -4999));
    EXPECT_FALSE(camera().nearDistance.getValue() >= camera().farDistance.getValue());
}

TEST_P(ViewerCameraTest, PlanesStayInOrderInsideTheScene)
{
    static_cast<SoCube*>(scene->getChild(1))->depth = 1e5f;
    camera().position = SbVec3f(10, 20, 30);
    viewer->prepareFrame();
    EXPECT_LT(camera().nearDistance.getValue(), camera().farDistance.getValue());
    EXPECT_GE(camera().farDistance.getValue(), 5e4f);
    if (GetParam() == SoGuiViewer::PERSPECTIVE) {
        EXPECT_GT(camera().nearDistance.getValue(), 0);
    }
}

TEST_P(ViewerCameraTest, LeavesTheSceneAlone)
{
    const auto id = scene->getChangeId();
    viewer->orbit({0.2f, 0.3f}, {0.4f, 0.5f});
    viewer->zoomTowards({0.1f, 0.1f}, 0.5f);
    viewer->setHeadlight(false);
    viewer->prepareFrame();
    viewer->viewAll();
    EXPECT_EQ(scene->getChangeId(), id);
}

TEST_P(ViewerCameraTest, AnUnchangedFrameChangesNothing)
{
    viewer->prepareFrame();
    const auto id = viewer->getSceneManager()->getSceneGraph()->getChangeId();
    viewer->prepareFrame();
    EXPECT_EQ(viewer->getSceneManager()->getSceneGraph()->getChangeId(), id);
}

TEST_F(SoGuiViewerTest, PlacesTheCameraWhenThereIsSomethingToSee)
{
    const SoRef<SoSeparator> scene(new SoSeparator);
    show(scene.get());
    scene->addChild(cubeAt({100, 0, 0}).get());
    viewer->prepareFrame();
    EXPECT_TRUE(near(interest(), {100, 0, 0}, 1e-3f))
        << "what came first into an empty scene is in view";
    scene->addChild(cubeAt({200, 0, 0}).get());
    viewer->prepareFrame();
    EXPECT_TRUE(near(interest(), {100, 0, 0}, 1e-3f)) << "but the view does not jump later";
    // A host that places the camera itself before the first frame is not overruled.
    viewer->setSceneGraph(cubeAt({0, 0, 0}).get());
    camera().position = SbVec3f(1, 2, 33);
    viewer->prepareFrame();
    EXPECT_EQ(camera().position.getValue(), SbVec3f(1, 2, 33));
}

TEST_F(SoGuiViewerTest, UsesTheCameraOfTheScene)
{
    const SoRef<SoSeparator> scene(new SoSeparator);
    auto* transform = new SoTransform;
    transform->translation = SbVec3f(0, 0, 100);
    transform->rotation = SbRotation(SbVec3f(0, 1, 0), 1.5707963f);
    auto* own = new SoPerspectiveCamera;
    own->position = SbVec3f(0, 0, 8);
    own->focalDistance = 8;
    scene->addChild(transform);
    scene->addChild(own);
    scene->addChild(new SoCube);
    show(scene.get());
    EXPECT_EQ(viewer->getCamera(), own);
    EXPECT_FALSE(viewer->hasOwnCamera());
    EXPECT_EQ(own->position.getValue(), SbVec3f(0, 0, 8)) << "it stands where the scene puts it";
    EXPECT_FALSE(viewer->setCameraType(SoGuiViewer::ORTHOGRAPHIC));
    // The cube is one unit around the camera's origin; the planes are in the camera's own space.
    EXPECT_LE(own->nearDistance.getValue(), 7);
    EXPECT_GE(own->farDistance.getValue(), 9);
    const auto id = scene->getChangeId();
    viewer->prepareFrame();
    EXPECT_EQ(scene->getChangeId(), id) << "planes that enclose the scene stay";
    own->farDistance = 7.5f;
    viewer->prepareFrame();
    EXPECT_GE(own->farDistance.getValue(), 9) << "those that would cut it do not";
    // The pick is in world space, the camera's place is not.
    ASSERT_TRUE(viewer->seekToPoint(SbVec2s(200, 100)));
    EXPECT_TRUE(near(interest(), {0, 0, 1}, 0.1f));
}

TEST_F(SoGuiViewerTest, UsesTheCameraOfAKit)
{
    const SoRef<SoSceneKit> kit(new SoSceneKit);
    auto* own = static_cast<SoCamera*>(kit->getPart("cameraList[0].camera"));
    ASSERT_TRUE(own);
    kit->setCameraNumber(0);
    kit->getPart("childList[0]");
    show(kit.get());
    EXPECT_EQ(viewer->getCamera(), own);
    EXPECT_FALSE(SoBaseKit::isSearchingChildren()) << "that is the program's choice";
}

TEST_F(SoGuiViewerTest, FollowsCamerasThatComeAndGo)
{
    const auto scene = cubeAt({0, 0, 0});
    show(scene.get());
    const SoRef<SoCamera> added(new SoPerspectiveCamera);
    added->position = SbVec3f(0, 0, 12);
    added->focalDistance = 12;
    scene->insertChild(added.get(), 0);
    viewer->prepareFrame();
    EXPECT_EQ(viewer->getCamera(), added.get());
    scene->removeChild(added.get());
    viewer->prepareFrame();
    EXPECT_NE(viewer->getCamera(), added.get());
    EXPECT_TRUE(viewer->hasOwnCamera());
    EXPECT_EQ(added->getRefCount(), 1) << "the viewer has let it go";
    EXPECT_TRUE(near(camera().position.getValue(), {0, 0, 12}, 1e-3f))
        << "and shows what it showed";
    auto* root = static_cast<SoSeparator*>(viewer->getSceneManager()->getSceneGraph());
    EXPECT_EQ(root->getNumChildren(), 3) << "headlight, camera, scene";
}

TEST_F(SoGuiViewerTest, StartsAtTheFirstViewpoint)
{
    const SoRef<SoSeparator> scene(new SoSeparator);
    auto* shift = new SoTranslation;
    shift->translation = SbVec3f(5, 0, 0);
    auto* viewpoint = new SoVRMLViewpoint;
    viewpoint->position = SbVec3f(1, 2, 30);
    viewpoint->orientation = SbRotation(SbVec3f(0, 1, 0), 0.1f);
    viewpoint->fieldOfView = 0.5f;
    scene->addChild(shift);
    scene->addChild(viewpoint);
    scene->addChild(new SoCube);
    show(scene.get());
    EXPECT_TRUE(viewer->hasOwnCamera());
    EXPECT_TRUE(near(camera().position.getValue(), {6, 2, 30}, 1e-4f));
    EXPECT_TRUE(camera().orientation.getValue().equals(SbRotation(SbVec3f(0, 1, 0), 0.1f), 1e-5f));
    EXPECT_FLOAT_EQ(static_cast<SoPerspectiveCamera&>(camera()).heightAngle.getValue(), 0.5f);
    EXPECT_NEAR(camera().focalDistance.getValue(), 30, 1);

    // It goes with the viewpoint that is bound, and back when that lets go.
    auto* other = new SoVRMLViewpoint;
    other->position = SbVec3f(0, 0, 7);
    auto* resting = new SoVRMLViewpoint;
    resting->jump = false;
    auto* dark = new SoVRMLNavigationInfo;
    dark->headlight = false;
    for (SoNode* node : std::initializer_list<SoNode*>{other, resting, dark})
        scene->addChild(node);
    EXPECT_TRUE(viewpoint->isBound.getValue());
    other->set_bind = true;
    EXPECT_FALSE(viewpoint->isBound.getValue());
    EXPECT_TRUE(near(camera().position.getValue(), {5, 0, 7}, 1e-4f));
    resting->set_bind = true;
    EXPECT_TRUE(near(camera().position.getValue(), {5, 0, 7}, 1e-4f));
    resting->set_bind = false;
    other->set_bind = false;
    EXPECT_TRUE(near(camera().position.getValue(), {6, 2, 30}, 1e-4f));
    // It is carried along, wherever it went meanwhile.
    camera().position = SbVec3f(6, 2, 31);
    shift->translation = SbVec3f(0, 0, 0);
    viewpoint->orientation = SbRotation(SbVec3f(0, 1, 0), 0.1f + 1.5707963f);
    viewer->prepareFrame();
    EXPECT_TRUE(near(camera().position.getValue(), {2, 2, 30}, 1e-4f));
    EXPECT_TRUE(camera().orientation.getValue().equals(viewpoint->orientation.getValue(), 1e-5f));
    scene->removeChild(viewpoint);
    viewer->prepareFrame();
    EXPECT_TRUE(near(camera().position.getValue(), {2, 2, 30}, 1e-4f));
    EXPECT_TRUE(viewer->isHeadlight());
    dark->set_bind = true;
    EXPECT_FALSE(viewer->isHeadlight());
}

TEST_F(SoGuiViewerTest, PointerMovesTheCameraOnlyInViewingMode)
{
    show(cubeAt({0, 0, 0}).get());
    const auto drag = [this](SoMouseButtonEvent::Button which) {
        const SbVec3f before = camera().position.getValue();
        const auto down = button(which, true, 200, 100);
        const auto move = motion(240, 120);
        const auto up = button(which, false, 240, 120);
        for (const SoEvent* event : std::initializer_list<const SoEvent*>{&down, &move, &up})
            viewer->processEvent(event);
        const auto after = motion(10, 10);
        const SbVec3f place = camera().position.getValue();
        viewer->processEvent(&after);
        EXPECT_EQ(camera().position.getValue(), place) << "the button is up";
        return (place - before).length() > 0.01f;
    };
    EXPECT_TRUE(drag(SoMouseButtonEvent::BUTTON1));
    EXPECT_TRUE(drag(SoMouseButtonEvent::BUTTON2));
    EXPECT_FALSE(drag(SoMouseButtonEvent::BUTTON3));
    viewer->setViewing(false);
    EXPECT_FALSE(drag(SoMouseButtonEvent::BUTTON1));

    // A mode that changes in the middle of a drag ends it.
    viewer->setViewing(true);
    const auto down = button(SoMouseButtonEvent::BUTTON1, true, 200, 100);
    const auto escape = keyPress(SoKeyboardEvent::ESCAPE);
    viewer->processEvent(&down);
    viewer->processEvent(&escape);
    viewer->processEvent(&escape);
    EXPECT_TRUE(viewer->isViewing());
    const SbVec3f place = camera().position.getValue();
    const auto move = motion(300, 150);
    viewer->processEvent(&move);
    EXPECT_EQ(camera().position.getValue(), place);
}

TEST_F(SoGuiViewerTest, WheelZoomsTowardsThePointer)
{
    show(cubeAt({0, 0, 0}).get());
    SoMouseWheelEvent wheel;
    wheel.setDelta(SoMouseWheelEvent::kNotch);
    wheel.setPosition(SbVec2s(200, 100));
    const float before = camera().focalDistance.getValue();
    EXPECT_TRUE(viewer->processEvent(&wheel));
    EXPECT_LT(camera().focalDistance.getValue(), before);
    wheel.setDelta(-SoMouseWheelEvent::kNotch);
    viewer->processEvent(&wheel);
    EXPECT_NEAR(camera().focalDistance.getValue(), before, 1e-4f);
}

TEST_F(SoGuiViewerTest, KnowsItsKeys)
{
    show(cubeAt({0, 0, 0}).get());
    const auto press = [this](SoKeyboardEvent::Key key, bool ctrl = false) {
        const auto event = keyPress(key, ctrl);
        return viewer->processEvent(&event);
    };
    EXPECT_TRUE(press(SoKeyboardEvent::ESCAPE));
    EXPECT_FALSE(viewer->isViewing());
    EXPECT_FALSE(press(SoKeyboardEvent::S)) << "in picking mode keys belong to the scene";
    EXPECT_TRUE(press(SoKeyboardEvent::ESCAPE));
    EXPECT_FALSE(press(SoKeyboardEvent::S, true)) << "Ctrl+S is somebody else's";
    EXPECT_FALSE(viewer->isSeekMode());
    EXPECT_TRUE(press(SoKeyboardEvent::S));
    EXPECT_TRUE(viewer->isSeekMode());
    const auto click = button(SoMouseButtonEvent::BUTTON1, true, 200, 100);
    EXPECT_TRUE(viewer->processEvent(&click));
    EXPECT_FALSE(viewer->isSeekMode());
    EXPECT_TRUE(near(interest(), {0, 0, 1}, 0.05f));
    EXPECT_TRUE(press(SoKeyboardEvent::V));
    EXPECT_TRUE(near(interest(), {0, 0, 0}, 0.01f));
    const SbVec3f place = camera().position.getValue();
    EXPECT_TRUE(press(SoKeyboardEvent::LEFT_ARROW));
    EXPECT_LT(camera().position.getValue()[0], place[0] - 0.1f);
    EXPECT_TRUE(press(SoKeyboardEvent::HOME));
    EXPECT_TRUE(near(camera().position.getValue(), place, 0.05f));
}

TEST_F(SoGuiViewerTest, FliesToItsTarget)
{
    const support::Clock clock;
    show(cubeAt({0, 0, 0}).get());
    const SbVec3f home = camera().position.getValue();
    viewer->orbitBy(1, 0);
    const SbVec3f away = camera().position.getValue();
    viewer->setSeekTime(0.1f);
    viewer->resetToHomePosition();
    EXPECT_TRUE(viewer->isAnimating());
    EXPECT_EQ(camera().position.getValue(), away) << "it takes off with the next timer";
    bool between = false;
    for (int i = 0; viewer->isAnimating() && i < 1000; ++i) {
        support::Clock::advance(0.005);
        SoSensorManager::processTimerQueue();
        const SbVec3f now = camera().position.getValue();
        between = between || (!near(now, home, 0.01f) && !near(now, away, 0.01f));
        EXPECT_NEAR((now - interest()).length(), home.length(), 0.01f)
            << "on the way around the cube";
    }
    EXPECT_FALSE(viewer->isAnimating());
    EXPECT_TRUE(between);
    EXPECT_TRUE(near(camera().position.getValue(), home, 1e-3f));
    // Whoever grabs the scene stops the flight, and so does a viewer that goes.
    viewer->orbitBy(1, 0);
    viewer->resetToHomePosition();
    const auto down = button(SoMouseButtonEvent::BUTTON1, true, 200, 100);
    viewer->processEvent(&down);
    EXPECT_FALSE(viewer->isAnimating());
    viewer->resetToHomePosition();
    viewer.reset();
    support::Clock::advance(1);
    SoSensorManager::processTimerQueue();
}

TEST_F(SoGuiViewerTest, TellsItsDecoration)
{
    int told = 0;
    viewer->setStateCallback([](void* data, SoGuiViewer*) { ++*static_cast<int*>(data); }, &told);
    const auto tells = [&told](auto change) {
        const int before = told;
        change();
        return told > before;
    };
    EXPECT_TRUE(tells([this] { viewer->setViewing(false); }));
    EXPECT_TRUE(tells([this] { viewer->setSeekMode(true); }));
    EXPECT_TRUE(tells([this] { viewer->setHeadlight(false); }));
    EXPECT_TRUE(tells([this] { viewer->setCameraType(SoGuiViewer::ORTHOGRAPHIC); }));
    EXPECT_TRUE(tells([this] { viewer->setSceneGraph(nullptr); }));
    EXPECT_FALSE(tells([this] { viewer->setHeadlight(false); })) << "no change";
}

} // namespace
