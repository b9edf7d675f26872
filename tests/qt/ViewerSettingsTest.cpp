// Settings of a viewer, fingers and pens, and when it draws.
#include "QtTestTools.h"
#include "support/Passes.h"

#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/nodes/SoEventCallback.h>

#include <QAction>
#include <QMenu>
#include <QTabletEvent>
#include <QTouchDevice>

#include <set>

namespace {

class ViewerSettingsTest : public QtViewerTest {
protected:
    QAction* action(const char* name) const
    {
        return viewer->getWidget()->findChild<QAction*>(QLatin1String(name));
    }
    void choose(const char* name) const
    {
        ASSERT_TRUE(action(name)) << name;
        action(name)->trigger();
        EXPECT_TRUE(action(name)->isChecked()) << name;
    }
    SbRotation orientation() const { return camera().orientation.getValue(); }

    static QTouchDevice* device()
    {
        static auto* const s_device = QTest::createTouchDevice();
        return s_device;
    }
};

/// Number of different colours.
std::size_t tones(const QImage& image)
{
    std::set<QRgb> found;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            found.insert(image.pixel(x, y));
    return found.size();
}

} // namespace

TEST_F(ViewerSettingsTest, DrawsOnlyWhenSomethingChanged)
{
    const auto framesOf = [this](auto change) {
        support::flush();
        const std::uint64_t before = viewer->getFrameCount();
        change();
        support::flush();
        return viewer->getFrameCount() - before;
    };
    support::flush();
    EXPECT_EQ(framesOf([] {}), 0u);
    EXPECT_EQ(framesOf([this] { QTest::mouseMove(surface(), QPoint(5, 5)); }), 0u);
    EXPECT_EQ(framesOf([this] { viewer->setBackgroundColor(viewer->getBackgroundColor()); }), 0u);
    EXPECT_EQ(framesOf([this] { scene.cube->width = 2; }), 1u) << "a change, however small";
    EXPECT_EQ(framesOf([this] {
                  for (int i = 0; i < 9; ++i)
                      wheel(middle(), 120);
              }),
              1u)
        << "one for all that came together";
    EXPECT_EQ(framesOf([this] { drag(Qt::LeftButton, QPoint(40, 10)); }), 1u);
    EXPECT_EQ(framesOf([] {}), 0u) << "no frame draws the next one";
}

TEST_F(ViewerSettingsTest, MenuChoosesTheDrawStyle)
{
    viewer->getGuiViewer()->setSeekTime(0);
    viewer->setNumSamples(1);
    ASSERT_TRUE(action("viewerAsIs")->isChecked());
    const double filled = shareOf(viewer->grabImage(), Qt::green);
    choose("viewerWireframe");
    EXPECT_FALSE(action("viewerAsIs")->isChecked());
    const double wires = shareOf(viewer->grabImage(), Qt::green);
    EXPECT_LT(wires, filled / 4);
    EXPECT_GT(wires, 0.005);
    choose("viewerAsIs");
    EXPECT_NEAR(shareOf(viewer->grabImage(), Qt::green), filled, 0.01);

    action("viewerTop")->trigger();
    EXPECT_GT(camera().position.getValue()[1], 2);
    choose("viewerTurntable");
    EXPECT_TRUE(viewer->getGuiExaminerViewer()->isTurntable());
    choose("viewerModellingScheme");
    choose("viewerFixedClipping");
    EXPECT_FALSE(viewer->getGuiViewer()->isAutoClipping());
    choose("viewerAnaglyph");
    EXPECT_TRUE(viewer->getGuiViewer()->isStereo());
    EXPECT_GT(viewer->grabImage().width(), 0);
    EXPECT_TRUE(action("viewerSpin")->isChecked());
    action("viewerSpin")->trigger();
    EXPECT_FALSE(viewer->getGuiExaminerViewer()->isSpinningAllowed());
    // What a program sets shows in the menu.
    viewer->getGuiViewer()->setDrawStyle(SoGLRenderAction::POINTS);
    EXPECT_TRUE(action("viewerPoints")->isChecked());
}

TEST_F(ViewerSettingsTest, EdgesAreAsSmoothAsAskedFor)
{
    viewer->getGuiExaminerViewer()->orbitBy(0.4f, 0.3f);
    choose("viewerSamples1");
    const std::size_t rough = tones(viewer->grabImage());
    choose("viewerSamples8");
    EXPECT_EQ(viewer->getNumSamples(), 8);
    EXPECT_GT(tones(viewer->grabImage()), rough);
    EXPECT_LE(rough, 3u) << "object and background";
    // Whatever became of the widget, it goes on.
    const SbRotation before = orientation();
    drag(Qt::LeftButton, QPoint(30, 0));
    EXPECT_FALSE(orientation().equals(before, 0.01f));
    QTest::mousePress(surface(), Qt::RightButton, Qt::NoModifier, middle());
    EXPECT_TRUE(viewer->getWidget()->findChild<QMenu*>()->isVisible());
    viewer->getWidget()->findChild<QMenu*>()->close();
    EXPECT_EQ(viewer->getWidget()->focusProxy(), surface());
    viewer->setNumSamples(-3);
    EXPECT_EQ(viewer->getNumSamples(), 1);
}

TEST_F(ViewerSettingsTest, OneFingerTurnsAndTwoPanAndZoom)
{
    const QPoint from = middle();
    const SbRotation before = orientation();
    QTest::touchEvent(surface(), device()).press(0, from, surface());
    QTest::touchEvent(surface(), device()).move(0, from + QPoint(3, 0), surface());
    EXPECT_EQ(orientation(), before) << "it may yet be a tap";
    QTest::touchEvent(surface(), device()).move(0, from + QPoint(30, 0), surface());
    EXPECT_FALSE(orientation().equals(before, 0.01f));
    QTest::touchEvent(surface(), device()).release(0, from + QPoint(30, 0), surface());

    const SbRotation turned = orientation();
    const SbVec3f place = camera().position.getValue();
    const float distance = camera().focalDistance.getValue();
    QTest::touchEvent(surface(), device()).press(0, from - QPoint(20, 0), surface());
    QTest::touchEvent(surface(), device())
        .move(0, from - QPoint(20, 0), surface())
        .press(1, from + QPoint(20, 0), surface());
    QTest::touchEvent(surface(), device())
        .move(0, from - QPoint(10, 0), surface())
        .move(1, from + QPoint(30, 0), surface());
    EXPECT_EQ(orientation(), turned) << "two fingers do not turn";
    EXPECT_GT((camera().position.getValue() - place).length(), 0.05f) << "they pan";
    EXPECT_NEAR(camera().focalDistance.getValue(), distance, 1e-4f);
    QTest::touchEvent(surface(), device())
        .move(0, from - QPoint(30, 0), surface())
        .move(1, from + QPoint(50, 0), surface());
    EXPECT_LT(camera().focalDistance.getValue(), 0.8f * distance) << "and zoom";
    const SbVec3f end = camera().position.getValue();
    QTest::touchEvent(surface(), device())
        .move(0, from - QPoint(30, 0), surface())
        .release(1, from + QPoint(50, 0), surface());
    QTest::touchEvent(surface(), device()).move(0, from + QPoint(60, 40), surface());
    QTest::touchEvent(surface(), device()).release(0, from + QPoint(60, 40), surface());
    EXPECT_EQ(camera().position.getValue(), end) << "the finger that is left does nothing";
    EXPECT_EQ(orientation(), turned);
}

TEST_F(ViewerSettingsTest, TapsAndPensAreClicksAndDrags)
{
    int presses = 0, releases = 0;
    struct Counts {
        int* presses;
        int* releases;
    } counts{&presses, &releases};
    auto* callback = new SoEventCallback;
    callback->addEventCallback(
        SoMouseButtonEvent::getClassTypeId(),
        [](void* data, SoEventCallback* node) {
            auto* to = static_cast<Counts*>(data);
            const bool isPress =
                SoMouseButtonEvent::isPressEvent(node->getEvent(), SoMouseButtonEvent::BUTTON1);
            ++*(isPress ? to->presses : to->releases);
        },
        &counts);
    scene.root->insertChild(callback, 0);
    viewer->getGuiViewer()->setClickPicking(true);
    EXPECT_EQ(surface()->cursor().shape(), Qt::ArrowCursor);
    QTest::touchEvent(surface(), device()).press(0, middle(), surface());
    QTest::touchEvent(surface(), device()).release(0, middle(), surface());
    EXPECT_EQ(presses, 1);
    EXPECT_EQ(releases, 1);

    const auto pen = [this](QEvent::Type type, const QPoint& at, Qt::MouseButton button) {
        QTabletEvent event(type, at, surface()->mapToGlobal(at), QTabletEvent::Stylus,
                           QTabletEvent::Pen, 1, 0, 0, 0, 0, 0, Qt::NoModifier, 1, button,
                           Qt::LeftButton);
        QCoreApplication::sendEvent(surface(), &event);
        EXPECT_TRUE(event.isAccepted());
    };
    pen(QEvent::TabletPress, middle(), Qt::LeftButton);
    pen(QEvent::TabletRelease, middle(), Qt::LeftButton);
    EXPECT_EQ(presses, 2);
    const SbRotation before = orientation();
    pen(QEvent::TabletPress, middle(), Qt::LeftButton);
    pen(QEvent::TabletMove, middle() + QPoint(30, 0), Qt::NoButton);
    pen(QEvent::TabletRelease, middle() + QPoint(30, 0), Qt::LeftButton);
    EXPECT_FALSE(orientation().equals(before, 0.01f));
    EXPECT_EQ(presses, 2);
    scene.root->removeChild(callback);
}
