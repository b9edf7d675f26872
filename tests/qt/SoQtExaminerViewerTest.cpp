#include "QtTestTools.h"
#include "support/Clock.h"
#include "support/Passes.h"

#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/vrml/SoVRMLNavigationInfo.h>

#include <QAction>
#include <QMenu>
#include <QToolButton>

TEST_F(QtViewerTest, LeftDragOrbitsAroundThePointOfInterest)
{
    const SbVec3f before = interest();
    const SbRotation orientation = camera().orientation.getValue();
    const float distance = camera().focalDistance.getValue();
    drag(Qt::LeftButton, QPoint(40, 10));
    EXPECT_FALSE(camera().orientation.getValue().equals(orientation, 0.01f));
    EXPECT_LT((interest() - before).length(), 1e-3f);
    EXPECT_FLOAT_EQ(camera().focalDistance.getValue(), distance);
    EXPECT_TRUE(viewer->isRedrawPending());
    // Dragged to the right, the eye goes around to the left.
    EXPECT_LT(camera().position.getValue()[0], -0.1f);
}

TEST_F(QtViewerTest, MiddleDragAndShiftDragPan)
{
    for (const bool middleButton : {true, false}) {
        const SbVec3f before = camera().position.getValue();
        const SbRotation orientation = camera().orientation.getValue();
        drag(middleButton ? Qt::MiddleButton : Qt::LeftButton, QPoint(30, 0),
             middleButton ? Qt::NoModifier : Qt::ShiftModifier);
        const SbVec3f way = camera().position.getValue() - before;
        EXPECT_LT(way[0], -0.1f) << "the scene follows the pointer";
        EXPECT_NEAR(way[1], 0, 1e-3);
        EXPECT_TRUE(camera().orientation.getValue().equals(orientation, 1e-5f));
    }
}

TEST_F(QtViewerTest, WheelAndControlDragZoom)
{
    const float start = camera().focalDistance.getValue();
    wheel(middle(), 120);
    const float nearer = camera().focalDistance.getValue();
    EXPECT_LT(nearer, start);
    wheel(middle(), -120);
    EXPECT_NEAR(camera().focalDistance.getValue(), start, 1e-3f * start);
    drag(Qt::LeftButton, QPoint(0, 30), Qt::ControlModifier);
    EXPECT_GT(std::abs(camera().focalDistance.getValue() - start), 0.05f * start);
    // What is under the pointer stays there.
    viewer->viewAll();
    const SbVec3f before = interest();
    wheel(QPoint(10, 10), 360);
    EXPECT_GT((interest() - before).length(), 0.05f);
}

TEST_F(QtViewerTest, ViewAllAndHomeFindTheSceneAgain)
{
    viewer->getGuiViewer()->setSeekTime(0);
    const SbVec3f home = camera().position.getValue();
    const double before = shareOf(viewer->grabImage(), Qt::green);
    drag(Qt::MiddleButton, QPoint(70, 50));
    drag(Qt::LeftButton, QPoint(50, 20));
    EXPECT_LT(shareOf(viewer->grabImage(), Qt::green), 0.8 * before);
    QTest::keyClick(surface(), Qt::Key_V);
    EXPECT_GT(shareOf(viewer->grabImage(), Qt::green), 0.8 * before);
    QTest::keyClick(surface(), Qt::Key_Home);
    EXPECT_LT((camera().position.getValue() - home).length(), 1e-3f);
}

TEST_F(QtViewerTest, SeekFliesTowardsThePointUnderThePointer)
{
    const support::Clock clock;
    const float before = camera().focalDistance.getValue();
    QTest::keyClick(surface(), Qt::Key_S);
    EXPECT_TRUE(viewer->getGuiViewer()->isSeekMode());
    EXPECT_EQ(surface()->cursor().shape(), Qt::CrossCursor);
    QTest::mouseClick(surface(), Qt::LeftButton, Qt::NoModifier, middle());
    EXPECT_FALSE(viewer->getGuiViewer()->isSeekMode());
    // The flight is served by the event loop.
    EXPECT_TRUE(support::passUntil([&] {
        support::Clock::advance(0.01);
        return camera().focalDistance.getValue() < 0.6f * before;
    }));
}

TEST_F(QtViewerTest, OnlyPickModeLetsTheSceneHaveThePointer)
{
    int presses = 0;
    auto* callback = new SoEventCallback;
    callback->addEventCallback(
        SoMouseButtonEvent::getClassTypeId(),
        [](void* data, SoEventCallback*) { ++*static_cast<int*>(data); }, &presses);
    scene.root->insertChild(callback, 0);
    const SbVec3f place = camera().position.getValue();
    QTest::mouseClick(surface(), Qt::LeftButton, Qt::NoModifier, middle());
    EXPECT_EQ(presses, 0);
    QTest::keyClick(surface(), Qt::Key_Escape);
    EXPECT_FALSE(viewer->isViewing());
    EXPECT_EQ(surface()->cursor().shape(), Qt::ArrowCursor);
    drag(Qt::LeftButton, QPoint(40, 10));
    EXPECT_EQ(presses, 2) << "press and release";
    EXPECT_LT((camera().position.getValue() - place).length(), 1e-5f);
    scene.root->removeChild(callback);
}

TEST_F(QtViewerTest, ButtonsDoWhatTheirKeysDo)
{
    QWidget* whole = viewer->getWidget();
    const auto button = [whole](const char* name) {
        for (auto* b : whole->findChildren<QToolButton*>())
            if (b->defaultAction()->objectName() == QLatin1String(name))
                return b;
        return static_cast<QToolButton*>(nullptr);
    };
    QTest::mouseClick(button("viewerPick"), Qt::LeftButton);
    EXPECT_FALSE(viewer->isViewing());
    QTest::mouseClick(button("viewerView"), Qt::LeftButton);
    EXPECT_TRUE(viewer->isViewing());
    QTest::mouseClick(button("viewerView"), Qt::LeftButton);
    EXPECT_TRUE(button("viewerView")->isChecked()) << "it does not uncheck itself";

    EXPECT_TRUE(viewer->isHeadlight());
    QTest::mouseClick(button("viewerHeadlight"), Qt::LeftButton);
    EXPECT_FALSE(viewer->isHeadlight());

    QTest::mouseClick(button("viewerPerspective"), Qt::LeftButton);
    EXPECT_EQ(viewer->getGuiViewer()->getCameraType(), SoGuiViewer::ORTHOGRAPHIC);
    EXPECT_TRUE(viewer->redraw());
    EXPECT_GT(shareOf(viewer->grabImage(), Qt::green), 0.1);

    viewer->setDecoration(false);
    EXPECT_FALSE(button("viewerPick")->isVisible());
}

TEST_F(QtViewerTest, RightButtonOpensTheMenuInViewingModeOnly)
{
    auto* menu = viewer->getWidget()->findChild<QMenu*>();
    ASSERT_TRUE(menu);
    QTest::mousePress(surface(), Qt::RightButton, Qt::NoModifier, middle());
    EXPECT_TRUE(menu->isVisible());
    menu->close();
    viewer->setViewing(false);
    QTest::mousePress(surface(), Qt::RightButton, Qt::NoModifier, middle());
    EXPECT_FALSE(menu->isVisible());
}

TEST_F(QtViewerTest, SceneWithoutHeadlightHasItOffUntilTheNext)
{
    FlatCube lit;
    auto* info = new SoVRMLNavigationInfo;
    info->headlight.setValue(false);
    lit.root->insertChild(info, 0);
    viewer->setSceneGraph(lit.root.get());
    EXPECT_FALSE(viewer->isHeadlight());
    viewer->setSceneGraph(scene.root.get());
    EXPECT_TRUE(viewer->isHeadlight());
    viewer->setHeadlight(false); // the user's choice stays
    viewer->setSceneGraph(scene.root.get());
    EXPECT_FALSE(viewer->isHeadlight());
}

TEST_F(QtViewerTest, DiesWithAFlightUnderWay)
{
    const support::Clock clock;
    QTest::keyClick(surface(), Qt::Key_S);
    QTest::mouseClick(surface(), Qt::LeftButton, Qt::NoModifier, middle());
    const SoRef<SoGuiViewer> kept(viewer->getGuiViewer());
    viewer.reset();
    support::Clock::advance(0.03);
    SoQt::processSensors();
    support::flush();
    SoQtExaminerViewer another(nullptr, "another");
    another.setSceneGraph(scene.root.get());
    EXPECT_TRUE(another.redraw());
}
