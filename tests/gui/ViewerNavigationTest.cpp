// How the pointer, keys and fingers move the camera.
#include "GuiTestTools.h"
#include "support/Clock.h"

#include <kalmyr/base/SbViewVolume.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/events/SoGestureEvent.h>
#include <kalmyr/gui/SoInspectorViews.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/shapes/SoFaceSet.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

using Button = SoMouseButtonEvent;
using Key = SoKeyboardEvent;

class ViewerNavigation : public testing::Test {
protected:
    static constexpr short kWidth = 400;
    static constexpr short kHeight = 400;
    static constexpr short kMiddle = 200;

    static void SetUpTestSuite() { kalmyr::initGui(); }

    ViewerNavigation() : viewer(new SoGuiExaminerViewer)
    {
        viewer->setSize(SbVec2i32(kWidth, kHeight));
        viewer->setSeekTime(0);
    }

    void show(SoNode* scene)
    {
        viewer->setSceneGraph(scene);
        viewer->prepareFrame();
    }
    SoCamera& camera() const { return *viewer->getCamera(); }
    SbVec3f eye() const { return camera().position.getValue(); }
    SbVec3f axis(float x, float y, float z) const
    {
        return camera().orientation.getValue().rotated(SbVec3f(x, y, z));
    }
    SbVec3f interest() const { return eye() + axis(0, 0, -camera().focalDistance.getValue()); }

    bool send(const SoEvent& event) { return viewer->processEvent(&event); }
    bool wheel(int notches, short x = kMiddle, short y = kMiddle)
    {
        SoMouseWheelEvent event;
        event.setDelta(notches * SoMouseWheelEvent::kNotch);
        event.setPosition(SbVec2s(x, y));
        return send(event);
    }
    bool press(Key::Key key, bool ctrl = false) { return send(keyPress(key, ctrl)); }
    /// Drags from the middle through the points of a way.
    void drag(Button::Button which, const std::vector<SbVec2s>& way, bool shift = false)
    {
        Button down = button(which, true, kMiddle, kMiddle);
        down.setShiftDown(shift);
        send(down);
        for (const SbVec2s& at : way)
            send(motion(at[0], at[1]));
        send(button(which, false, way.back()[0], way.back()[1]));
    }
    void drag(Button::Button which, short dx, short dy, bool shift = false)
    {
        drag(which, {SbVec2s(static_cast<short>(kMiddle + dx), static_cast<short>(kMiddle + dy))},
             shift);
    }

    SoRef<SoGuiExaminerViewer> viewer;
};

SoRef<SoVRMLGroup> vrmlCube()
{
    SoRef<SoVRMLGroup> scene(new SoVRMLGroup);
    scene->addChild(new SoCube);
    return scene;
}

/// A square of the ground of one face, `height` below the origin.
SoRef<SoSeparator> ground(float height, float half)
{
    SoRef<SoSeparator> scene(new SoSeparator);
    auto* corners = new SoCoordinate3;
    const SbVec3f points[] = {SbVec3f(-half, -height, half), SbVec3f(half, -height, half),
                              SbVec3f(half, -height, -half), SbVec3f(-half, -height, -half)};
    corners->point.setValues(0, 4, points);
    auto* face = new SoFaceSet;
    face->numVertices.setValue(4);
    scene->addChild(corners);
    scene->addChild(face);
    return scene;
}

} // namespace

TEST_F(ViewerNavigation, WheelComesNearAndNeverThrough)
{
    show(cubeAt({0, 0, 0}).get()); // its front at z 1
    const SbVec3f start = eye();
    float distance = start[2] - 1;
    for (int i = 0; i < 70; ++i) {
        wheel(1);
        const float now = eye()[2] - 1;
        EXPECT_GT(now, 0) << "notch " << i;
        EXPECT_LT(now, distance) << "notch " << i;
        distance = now;
    }
    EXPECT_LT(distance, 0.01f);
    for (int i = 0; i < 200; ++i)
        wheel(1);
    EXPECT_GT(eye()[2], 1) << "not after any number";
    EXPECT_TRUE(std::isfinite(eye().length()));
    // What the pointer is at then is another thing to go to.
    wheel(-140);
    EXPECT_GT(eye()[2], 3);
}

TEST_F(ViewerNavigation, WheelInAndOutComesBack)
{
    show(cubeAt({0, 0, 0}).get());
    for (const SbVec2s at : {SbVec2s(230, 180), SbVec2s(10, 10)}) {
        const SbVec3f start = eye();
        const float focal = camera().focalDistance.getValue();
        for (const int notches : {3, 1, -2, -2})
            wheel(notches, at[0], at[1]);
        EXPECT_TRUE(near(eye(), start, 1e-3f * focal));
        EXPECT_NEAR(camera().focalDistance.getValue(), focal, 1e-3f * focal);
    }
}

TEST_F(ViewerNavigation, WheelReachesAFarSphere)
{
    const SoRef<SoSeparator> scene = cubeAt({5, 0, 0});
    const SoRef<SoSeparator> far = cubeAt({0, 0, -10000});
    auto* sphere = new SoSphere;
    sphere->radius = 100;
    far->replaceChild(1, sphere);
    scene->addChild(far.get());
    show(scene.get());
    camera().position = SbVec3f(0, 0, 20);
    camera().orientation = SbRotation();
    camera().focalDistance = 20; // something beside the way was looked at
    int notches = 0;
    while (eye()[2] > -9890 && notches < 200) {
        wheel(1);
        ++notches;
    }
    EXPECT_LT(notches, 100);
    EXPECT_GT(eye()[2], -9900) << "in front of it";
    EXPECT_NEAR(camera().focalDistance.getValue(), eye()[2] + 9900, 3)
        << "what was zoomed to is turned about next";
}

TEST_F(ViewerNavigation, WheelGoesOnWhereNothingIs)
{
    show(cubeAt({0, 0, 0}).get());
    camera().orientation = SbRotation(SbVec3f(0, 1, 0), 1.2f); // past the cube
    const SbVec3f start = eye();
    for (int i = 0; i < 100; ++i) {
        const SbVec3f before = eye();
        wheel(1);
        EXPECT_GT((eye() - before).length(), 1e-3f) << "notch " << i;
    }
    EXPECT_GT((eye() - start).length(), start.length());
}

TEST_F(ViewerNavigation, DragsHoldWhatIsUnderThePointer)
{
    show(cubeAt({0, 0, 0}).get());
    const SbVec3f held(0.2f, 0.1f, 1); // on the front
    SbVec3f at;
    camera().getViewVolume(1).projectToScreen(held, at);
    const auto x = static_cast<short>(at[0] * kWidth);
    const auto y = static_cast<short>(at[1] * kHeight);
    send(button(Button::BUTTON2, true, x, y));
    send(motion(static_cast<short>(x + 60), static_cast<short>(y - 40)));
    send(button(Button::BUTTON2, false, static_cast<short>(x + 60), static_cast<short>(y - 40)));
    SbVec3f after;
    camera().getViewVolume(1).projectToScreen(held, after);
    EXPECT_NEAR(after[0] * kWidth, x + 60, 2);
    EXPECT_NEAR(after[1] * kHeight, y - 40, 2);
}

TEST_F(ViewerNavigation, NearThingsAreSeenInAWideWorld)
{
    const SoRef<SoSeparator> world = ground(1.7f, 10000);
    world->addChild(cubeAt({0, 0, -5}, 1).get());
    world->addChild(cubeAt({0, 0, 0.5f}, 0.1f).get()); // behind the eye
    world->addChild(cubeAt({0, 30, -9000}, 20).get());
    show(world.get());
    const auto look = [this](const SbRotation& orientation) {
        camera().position = SbVec3f(0, 0, 0);
        camera().orientation = orientation;
        camera().focalDistance = 9000;
        viewer->prepareFrame();
        return camera().nearDistance.getValue();
    };
    const float ahead = look(SbRotation());
    EXPECT_LT(ahead, 4.1f) << "the ground is cut by the lower edge of the window";
    EXPECT_GT(ahead, 3);
    EXPECT_GT(camera().farDistance.getValue(), 9000);
    const float level = look(SbRotation(SbVec3f(1, 0, 0), 0.45f));
    EXPECT_GT(level, ahead) << "the ground is out of view";
    const float up = look(SbRotation(SbVec3f(1, 0, 0), 1.5f));
    EXPECT_GT(up, camera().farDistance.getValue() * 5e-4f) << "nothing is in view";
    const float back = look(SbRotation(SbVec3f(0, 1, 0), 3.1415927f));
    EXPECT_LT(back, 0.45f);
    EXPECT_GT(back, 0.3f);
    // The depth of the world does not vanish for a speck in front of the eye.
    world->addChild(cubeAt({0, 0, -0.02f}, 0.01f).get());
    const float speck = look(SbRotation());
    EXPECT_GE(speck, camera().farDistance.getValue() * viewer->getNearShare() * 0.99f);
    viewer->setNearShare(1e-7f);
    EXPECT_LT(look(SbRotation()), 0.015f);
    // The eye in a ball sees its inside, or its box, whose edges are farther away.
    const SoRef<SoSeparator> room = cubeAt({0, 0, 0});
    auto* ball = new SoSphere;
    ball->radius = 10;
    room->replaceChild(1, ball);
    room->addChild(cubeAt({0, 0, -1e5f}, 1).get());
    show(room.get());
    const float inside = look(SbRotation());
    EXPECT_NEAR(inside, 0.95f * 10 * std::cos(0.54f), 0.6f) << "at the corners of the window";
    viewer->setDrawStyle(SoGLRenderAction::BOUNDING_BOX);
    EXPECT_NEAR(look(SbRotation(SbVec3f(0, 1, 0), 0.7853982f)), 0.95f * 14.14f, 1);
}

/// Triangles of all sizes around the eye, against points that are taken on them.
TEST_F(ViewerNavigation, NearPlaneStandsCloselyBeforeWhatIsSeen)
{
    std::mt19937 random(7);
    const auto number = [&random](float most) {
        return std::uniform_real_distribution<float>(-most, most)(random);
    };
    const auto place = [&number](float most) {
        return SbVec3f(number(most), number(most), number(most));
    };
    int measured = 0;
    for (int round = 0; round < 25; ++round) {
        const SoRef<SoSeparator> scene(new SoSeparator);
        scene->addChild(cubeAt({0, 0, -5e4f}, 10).get());
        scene->addChild(cubeAt({0, 0, 5e4f}, 10).get());
        std::vector<SbVec3f> points;
        for (int t = 0; t < 100; ++t) {
            const SbVec3f at = place(30);
            for (int i = 0; i < 3; ++i)
                points.push_back(at + place(t % 10 == 0 ? 12.0f : 3.0f));
        }
        auto* coordinates = new SoCoordinate3;
        coordinates->point.setValues(0, static_cast<int>(points.size()), points.data());
        auto* triangles = new SoFaceSet;
        const std::vector<std::int32_t> threes(points.size() / 3, 3);
        triangles->numVertices.setValues(0, static_cast<int>(threes.size()), threes.data());
        const SoRef<SoSeparator> cloud(new SoSeparator);
        cloud->addChild(coordinates);
        cloud->addChild(triangles);
        scene->addChild(cloud.get());
        show(scene.get());
        camera().position = place(5);
        camera().orientation = SbRotation(place(1), number(3));
        camera().focalDistance = 1e4f;
        viewer->prepareFrame();

        const SbViewVolume volume = camera().getViewVolume(1);
        const SbVec3f ahead = axis(0, 0, -1);
        float nearest = std::numeric_limits<float>::max();
        for (std::size_t t = 0; t < points.size(); t += 3) {
            constexpr int kSteps = 80;
            for (int a = 0; a <= kSteps; ++a) {
                for (int b = 0; a + b <= kSteps; ++b) {
                    const SbVec3f p =
                        (points[t] * static_cast<float>(a) + points[t + 1] * static_cast<float>(b)
                         + points[t + 2] * static_cast<float>(kSteps - a - b))
                        / static_cast<float>(kSteps);
                    const float depth = (p - eye()).dot(ahead);
                    SbVec3f seen;
                    volume.projectToScreen(p, seen);
                    if (depth > 0 && std::abs(seen[0] - 0.5f) <= 0.5f
                        && std::abs(seen[1] - 0.5f) <= 0.5f)
                        nearest = std::min(nearest, depth);
                }
            }
        }
        const float least = camera().farDistance.getValue() * viewer->getNearShare();
        if (nearest <= least)
            continue; // nearer than what a near plane may show
        const float plane = camera().nearDistance.getValue();
        EXPECT_LT(plane, nearest) << "round " << round;
        if (nearest < 0.9f * camera().farDistance.getValue() * 1e-3f) {
            EXPECT_GT(plane, 0.7f * nearest) << "round " << round;
            ++measured;
        }
    }
    EXPECT_GT(measured, 10);
}

TEST_F(ViewerNavigation, PlanesAreNotMeasuredTwiceForOneView)
{
    const SoRef<SoSeparator> world = ground(1, 10000);
    show(world.get());
    camera().position = SbVec3f(0, 0, 0);
    viewer->prepareFrame();
    const float before = camera().nearDistance.getValue();
    const auto id = viewer->getSceneManager()->getSceneGraph()->getChangeId();
    viewer->prepareFrame();
    EXPECT_EQ(viewer->getSceneManager()->getSceneGraph()->getChangeId(), id);
    viewer->setAutoClipping(false);
    camera().nearDistance = 3;
    viewer->prepareFrame();
    EXPECT_EQ(camera().nearDistance.getValue(), 3) << "they are somebody else's";
    viewer->setAutoClipping(true);
    viewer->prepareFrame();
    EXPECT_NEAR(camera().nearDistance.getValue(), before, 1e-3f);
}

TEST_F(ViewerNavigation, ATurntableKeepsTheHorizon)
{
    /// Roll of the camera: how far its axis to the right leaves the ground.
    const auto roll = [this] { return std::abs(axis(1, 0, 0)[1]); };
    const std::vector<SbVec2s> loop = {SbVec2s(300, 200), SbVec2s(300, 300), SbVec2s(200, 300),
                                       SbVec2s(200, 200)};
    show(cubeAt({0, 0, 0}).get());
    EXPECT_FALSE(viewer->isTurntable());
    for (int i = 0; i < 8; ++i)
        drag(Button::BUTTON1, loop);
    EXPECT_GT(roll(), 0.3f) << "a ball rolls";

    const SoRef<SoVRMLGroup> scene = vrmlCube();
    show(scene.get());
    EXPECT_TRUE(viewer->isTurntable()) << "VRML97 says which way is up";
    const SbRotation before = camera().orientation.getValue();
    for (int i = 0; i < 8; ++i)
        drag(Button::BUTTON1, loop);
    EXPECT_LT(roll(), 1e-3f);
    EXPECT_TRUE(camera().orientation.getValue().equals(before, 1e-3f));
    // Up and over: it ends at the pole.
    const float distance = (eye() - interest()).length();
    for (int i = 0; i < 10; ++i)
        drag(Button::BUTTON1, 0, -150);
    EXPECT_TRUE(near(axis(0, 0, -1), {0, -1, 0}, 1e-3f));
    drag(Button::BUTTON1, 120, 20);
    EXPECT_LT(roll(), 1e-3f);
    EXPECT_NEAR((eye() - interest()).length(), distance, 1e-3f);
    viewer->setTurning(SoGuiExaminerViewer::FREE);
    EXPECT_FALSE(viewer->isTurntable());
}

TEST_F(ViewerNavigation, TheTurntableStandsInTheWorldAndIsLevelled)
{
    show(cubeAt({0, 0, 0}).get());
    viewer->setUpDirection(SbVec3f(0, 0, 2));
    camera().orientation = SbRotation(SbVec3f(1, 1, 0.3f), 1);
    viewer->setTurning(SoGuiExaminerViewer::TURNTABLE);
    EXPECT_LT(std::abs(axis(1, 0, 0)[2]), 1e-4f) << "z is up";
    EXPECT_GT(axis(0, 1, 0)[2], 0);
    press(Key::LEFT_ARROW);
    EXPECT_LT(std::abs(axis(1, 0, 0)[2]), 1e-4f);
    viewer->flyToSide(SoGuiViewer::FRONT);
    EXPECT_TRUE(near(axis(0, 0, -1), {0, 1, 0}, 1e-4f));
    EXPECT_TRUE(near(axis(0, 1, 0), {0, 0, 1}, 1e-4f));
}

TEST_F(ViewerNavigation, AFlickSpinsUntilATouch)
{
    const support::Clock clock;
    show(vrmlCube().get());
    const auto flick = [this](double pause) {
        const auto at = [](auto event) {
            event.setTime(SbTime::getTimeOfDay());
            return event;
        };
        send(at(button(Button::BUTTON1, true, 200, 200)));
        for (short x = 210; x <= 260; x = static_cast<short>(x + 10)) {
            support::Clock::advance(0.01);
            send(at(motion(x, 200)));
        }
        support::Clock::advance(pause);
        send(at(button(Button::BUTTON1, false, 260, 200)));
    };
    flick(0.3);
    EXPECT_FALSE(viewer->isSpinning()) << "the pointer had come to rest";
    flick(0.005);
    ASSERT_TRUE(viewer->isSpinning());
    const auto pass = [this] {
        const SbVec3f before = eye();
        support::Clock::advance(0.05);
        SoSensorManager::processTimerQueue();
        return eye() - before;
    };
    for (int i = 0; i < 5; ++i) {
        const SbVec3f step = pass();
        EXPECT_GT(step.length(), 0.01f);
        EXPECT_NEAR(step[1], 0, 1e-3f) << "about the up direction";
    }
    send(button(Button::BUTTON1, true, 200, 200));
    EXPECT_FALSE(viewer->isSpinning());
    EXPECT_EQ(pass(), SbVec3f(0, 0, 0));
    send(button(Button::BUTTON1, false, 200, 200));

    for (const bool byKey : {true, false}) {
        flick(0.005);
        ASSERT_TRUE(viewer->isSpinning());
        byKey ? press(Key::V) : wheel(1);
        EXPECT_FALSE(viewer->isSpinning());
    }
    viewer->setSpinning(false);
    flick(0.005);
    EXPECT_FALSE(viewer->isSpinning());
    viewer->setSpinning(true);
    viewer->setTurning(SoGuiExaminerViewer::FREE);
    viewer->resetToHomePosition();
    flick(0.005);
    ASSERT_TRUE(viewer->isSpinning());
    EXPECT_LT(pass()[0], -0.01f) << "on as the drag went";
    viewer.reset();
    support::Clock::advance(1);
    SoSensorManager::processTimerQueue();
}

namespace {

/// A cube that counts what it gets.
struct Listener {
    Listener() : scene(cubeAt({0, 0, 0}))
    {
        auto* callback = new SoEventCallback;
        callback->addEventCallback(
            SoEvent::getClassTypeId(),
            [](void* data, SoEventCallback* node) {
                auto* self = static_cast<Listener*>(data);
                const SoEvent* event = node->getEvent();
                self->presses += SoMouseButtonEvent::isPressEvent(event, Button::BUTTON1);
                self->releases += SoMouseButtonEvent::isReleaseEvent(event, Button::BUTTON1);
                self->others += !event->isOfType(SoMouseButtonEvent::getClassTypeId());
                if (self->handles)
                    node->setHandled();
            },
            this);
        scene->addChild(callback);
    }
    SoRef<SoSeparator> scene;
    int presses = 0, releases = 0, others = 0;
    bool handles = false;
};

} // namespace

TEST_F(ViewerNavigation, OneModeTellsClicksFromDrags)
{
    Listener listener;
    show(listener.scene.get());
    drag(Button::BUTTON1, 0, 0);
    EXPECT_EQ(listener.presses, 0) << "not unless asked for";
    viewer->setClickPicking(true);
    const SbVec3f place = eye();
    drag(Button::BUTTON1, 2, 1); // the hand trembles
    EXPECT_EQ(listener.presses, 1);
    EXPECT_EQ(listener.releases, 1);
    EXPECT_EQ(eye(), place);
    drag(Button::BUTTON1, 60, 0);
    EXPECT_NE(eye(), place);
    EXPECT_EQ(listener.presses, 1) << "a drag is no click";
    EXPECT_EQ(listener.releases, 1);
    // There and back is a drag as well.
    drag(Button::BUTTON1, {SbVec2s(240, 200), SbVec2s(200, 200)});
    EXPECT_EQ(listener.presses, 1);
    // Of a click that is interrupted nothing is left.
    send(button(Button::BUTTON1, true, kMiddle, kMiddle));
    wheel(1);
    send(button(Button::BUTTON1, false, kMiddle, kMiddle));
    EXPECT_EQ(listener.presses, 1);
}

TEST_F(ViewerNavigation, WheelAndMiddleDragWorkWhilePicking)
{
    Listener listener;
    show(listener.scene.get());
    viewer->setViewing(false);
    SbVec3f place = eye();
    const auto hasMoved = [&] { return !near(std::exchange(place, eye()), eye(), 1e-4f); };
    EXPECT_TRUE(wheel(1));
    EXPECT_TRUE(hasMoved());
    drag(Button::BUTTON2, 40, 0);
    EXPECT_TRUE(hasMoved());
    drag(Button::BUTTON1, 40, 0);
    EXPECT_FALSE(hasMoved()) << "the first button is the scene's";
    EXPECT_EQ(listener.presses, 1);
    send(motion(20, 20));
    EXPECT_FALSE(hasMoved());
    listener.handles = true;
    wheel(1);
    drag(Button::BUTTON2, 40, 0);
    EXPECT_FALSE(hasMoved()) << "what the scene handles is no longer the viewer's";
}

TEST_F(ViewerNavigation, LooksFromAllSides)
{
    show(cubeAt({3, 4, 5}).get());
    const SbVec3f center = interest();
    const float distance = camera().focalDistance.getValue();
    constexpr Key::Key keys[] = {Key::NUMBER_1, Key::NUMBER_2, Key::NUMBER_3,
                                 Key::NUMBER_4, Key::NUMBER_5, Key::NUMBER_6};
    const SbVec3f from[] = {{0, 0, 1}, {0, 0, -1}, {-1, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}};
    for (std::size_t i = 0; i < std::size(keys); ++i) {
        EXPECT_TRUE(press(keys[i]));
        EXPECT_TRUE(near(eye(), center + from[i] * distance, 1e-3f)) << i;
        if (i < 4) {
            EXPECT_TRUE(near(axis(0, 1, 0), {0, 1, 0}, 1e-4f)) << i;
        }
    }
}

TEST_F(ViewerNavigation, FliesToEverythingAndCanBeStopped)
{
    const support::Clock clock;
    show(cubeAt({0, 0, 0}).get());
    const SbVec3f all = eye();
    camera().position = SbVec3f(0, 0, 90);
    camera().focalDistance = 90;
    viewer->setSeekTime(1);
    const auto pass = [] {
        support::Clock::advance(0.1);
        SoSensorManager::processTimerQueue();
    };
    press(Key::V);
    EXPECT_TRUE(viewer->isAnimating());
    EXPECT_EQ(eye()[2], 90);
    for (int i = 0; i < 4; ++i)
        pass();
    EXPECT_LT(eye()[2], 80);
    wheel(-1);
    const SbVec3f place = eye();
    EXPECT_FALSE(viewer->isAnimating());
    pass();
    EXPECT_EQ(eye(), place);
    press(Key::V);
    for (int i = 0; i < 12; ++i)
        pass();
    EXPECT_FALSE(viewer->isAnimating());
    EXPECT_TRUE(near(eye(), all, 1e-3f));
}

TEST_F(ViewerNavigation, FramesWhatIsChosen)
{
    const SoRef<SoSelection> scene(new SoSelection);
    const SoRef<SoSeparator> first = cubeAt({-50, 0, 0});
    const SoRef<SoSeparator> second = cubeAt({50, 10, 0});
    scene->addChild(first.get());
    scene->addChild(second.get());
    show(scene.get());
    viewer->flyToAll();
    const SbVec3f everything = interest();
    scene->select(second.get());
    press(Key::F);
    EXPECT_TRUE(near(interest(), {50, 10, 0}, 1e-2f));
    EXPECT_LT(camera().focalDistance.getValue(), 20);
    scene->deselectAll();
    press(Key::F);
    EXPECT_TRUE(near(interest(), everything, 1e-2f)) << "nothing is chosen";
    // What the inspector outlines; its path begins above the scene.
    const SoRef<SoSeparator> above(new SoSeparator);
    above->addChild(first.get());
    const SoRef<SoPath> path(new SoPath(above.get()));
    path->append(0);
    path->append(1); // the cube in it
    SoInspectorViews::setOutlined(path.get(), 1);
    press(Key::F);
    EXPECT_TRUE(near(interest(), {-50, 0, 0}, 1e-2f));
    SoInspectorViews::setOutlined(nullptr);
    const SoRef<SoPath> elsewhere(new SoPath(above.get()));
    EXPECT_FALSE(viewer->flyTo(elsewhere.get()));
}

TEST_F(ViewerNavigation, SchemesDifferInButtonsAndKeys)
{
    show(cubeAt({0, 0, 0}).get());
    const auto kind = [this](Button::Button which, bool shift) {
        const SbVec3f place = eye();
        const SbRotation orientation = camera().orientation.getValue();
        drag(which, 40, 10, shift);
        if (!camera().orientation.getValue().equals(orientation, 1e-4f))
            return 't';
        return near(eye(), place, 1e-4f) ? '-' : 'p';
    };
    EXPECT_EQ(kind(Button::BUTTON1, false), 't');
    EXPECT_EQ(kind(Button::BUTTON1, true), 'p');
    EXPECT_EQ(kind(Button::BUTTON2, false), 'p');
    EXPECT_FALSE(press(Key::PAD_7));
    viewer->setNavigationScheme(SoGuiViewer::MODELLING);
    EXPECT_EQ(kind(Button::BUTTON1, false), '-');
    EXPECT_EQ(kind(Button::BUTTON2, false), 't');
    EXPECT_EQ(kind(Button::BUTTON2, true), 'p');
    EXPECT_TRUE(press(Key::PAD_7));
    EXPECT_TRUE(near(axis(0, 0, -1), {0, -1, 0}, 1e-4f));
    EXPECT_TRUE(press(Key::PAD_1, true));
    EXPECT_TRUE(near(axis(0, 0, -1), {0, 0, 1}, 1e-4f)) << "the back";
    EXPECT_TRUE(press(Key::PAD_5));
    EXPECT_EQ(viewer->getCameraType(), SoGuiViewer::ORTHOGRAPHIC);
}

TEST_F(ViewerNavigation, TwoFingersPanAndZoom)
{
    show(cubeAt({0, 0, 0}).get());
    const auto move = [this](const SbVec2f& way, float scale) {
        SoGestureEvent event;
        event.setState(SoGestureEvent::UPDATE);
        event.setPosition(SbVec2s(kMiddle, kMiddle));
        event.setMotion(way);
        event.setScale(scale);
        return send(event);
    };
    const SbVec3f start = eye();
    EXPECT_TRUE(move(SbVec2f(40, 0), 1));
    EXPECT_LT(eye()[0], start[0] - 0.1f) << "the scene goes with the fingers";
    EXPECT_NEAR(eye()[2], start[2], 1e-4f);
    move(SbVec2f(-40, 0), 1);
    EXPECT_TRUE(near(eye(), start, 1e-3f));
    move(SbVec2f(0, 0), 2);
    EXPECT_NEAR(eye()[2] - 1, (start[2] - 1) / 2, 1e-2f) << "half the way to what is between them";
    viewer->setViewing(false);
    const SbVec3f place = eye();
    move(SbVec2f(40, 0), 1);
    EXPECT_NE(eye(), place) << "also while picking";
}

TEST_F(ViewerNavigation, SettingsAskForOneFrameAndNothingElseDoes)
{
    show(cubeAt({0, 0, 0}).get());
    SoSceneManager& manager = *viewer->getSceneManager();
    manager.setRenderCallback([](void*, SoSceneManager*) {}, nullptr);
    const auto asks = [&](auto change) {
        SoSensorManager::processDelayQueue(true);
        viewer->prepareFrame();
        SoSensorManager::processDelayQueue(true);
        change();
        return manager.isRedrawScheduled();
    };
    EXPECT_FALSE(asks([] {}));
    EXPECT_FALSE(asks([this] { send(motion(100, 100)); }));
    EXPECT_FALSE(asks([this] { viewer->setBackgroundColor(SbColor(0, 0, 0)); }));
    EXPECT_FALSE(asks([this] { viewer->setSize(SbVec2i32(kWidth, kHeight)); }));
    EXPECT_FALSE(asks([this] { viewer->setNavigationScheme(SoGuiViewer::MODELLING); }));
    EXPECT_FALSE(asks([this] { drag(Button::BUTTON3, 50, 50); }));
    EXPECT_TRUE(asks([this] { viewer->setDrawStyle(SoGLRenderAction::WIREFRAME); }));
    EXPECT_FALSE(asks([this] { viewer->setDrawStyle(SoGLRenderAction::WIREFRAME); }));
    EXPECT_TRUE(asks([this] { viewer->setStereo(true); }));
    EXPECT_TRUE(asks([this] { wheel(1); }));
    EXPECT_FALSE(asks([this] { viewer->prepareFrame(); }));
}
