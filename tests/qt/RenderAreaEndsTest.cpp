// Render areas that die inside their own scene, and whose scene another thread edits.

#include "QtTestTools.h"
#include "support/Passes.h"

#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodes/SoCallback.h>
#include <kalmyr/nodes/SoEventCallback.h>

#include <QPointer>

#include <atomic>
#include <functional>
#include <latch>
#include <thread>

namespace {

/// An area whose scene calls back once, when it is drawn or gets an event.
class RenderAreaEnds : public testing::Test {
public:
    void hit()
    {
        if (const auto now = std::exchange(act, {}))
            now();
    }

protected:
    void SetUp() override
    {
        SoQt::init(nullptr);
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << SoOffscreenContext::shared().getError();
        auto* drawn = new SoCallback;
        drawn->setCallback([](void* data, SoAction*) { static_cast<RenderAreaEnds*>(data)->hit(); },
                           this);
        auto* handled = new SoEventCallback;
        handled->addEventCallback(
            SoEvent::getClassTypeId(),
            [](void* data, SoEventCallback* node) {
                auto* self = static_cast<RenderAreaEnds*>(data);
                ++(node->getEvent()->isOfType(SoLocation2Event::getClassTypeId()) ? self->motions
                                                                                  : self->buttons);
                self->hit();
            },
            this);
        scene.root->addChild(drawn);
        scene.root->addChild(handled);
        open();
    }
    void TearDown() override
    {
        area.reset();
        SoQt::finish();
    }
    void open()
    {
        area = std::make_unique<SoQtRenderArea>(nullptr, "area");
        area->setSceneGraph(scene.root.get());
        area->getWidget()->resize(40, 30);
        area->show();
        ASSERT_TRUE(support::passUntilExposed(area->getWidget()));
        ASSERT_TRUE(area->redraw());
    }
    void expectDeathOf(const std::function<void()>& deed)
    {
        const QPointer<QWidget> widget = area->getWidget();
        act = [this] { area.reset(); };
        deed();
        EXPECT_FALSE(area);
        ASSERT_TRUE(support::passUntil([&] { return !widget; }));
        open();
    }

    FlatCube scene;
    std::unique_ptr<SoQtRenderArea> area;
    std::function<void()> act;
    int motions = 0;
    int buttons = 0;
};

} // namespace

TEST_F(RenderAreaEnds, DiesWhileItDrawsOrHandlesAnEvent)
{
    expectDeathOf([this] { EXPECT_FALSE(area->redraw()); });
    expectDeathOf([this] { EXPECT_TRUE(area->grabImage().isNull()); });
    expectDeathOf([this] {
        area->scheduleRedraw();
        EXPECT_TRUE(support::passUntil([this] { return !area; }));
    });
    expectDeathOf([this] { QTest::mouseClick(area->getRenderWidget(), Qt::LeftButton); });
    expectDeathOf([this] { QTest::keyClick(area->getRenderWidget(), Qt::Key_A); });
    // The host takes the window away instead.
    auto* window = new QWidget;
    area->getWidget()->setParent(window);
    act = [window] { delete window; };
    EXPECT_FALSE(area->redraw());
    EXPECT_EQ(area->getWidget(), nullptr);
    area.reset();
    open();
    window = new QWidget;
    area->getWidget()->setParent(window);
    act = [window] { window->deleteLater(); };
    EXPECT_TRUE(area->redraw());
    EXPECT_TRUE(support::passUntil([this] { return !area->getWidget(); }));
}

TEST_F(RenderAreaEnds, WaitsForAnotherThreadThatEdits)
{
    const QImage before = area->grabImage();
    std::latch began{1};
    std::latch end{1};
    std::thread editor([&] {
        const SoWriteLock lock;
        scene.material->diffuseColor.setValue(SbColor(0, 0, 1));
        began.count_down();
        end.wait();
    });
    began.wait();
    motions = buttons = 0;
    EXPECT_FALSE(area->redraw());
    EXPECT_GT(shareOf(area->getWidget()->grab().toImage(), Qt::green), 0.9) << "the last picture";
    QTest::mouseClick(area->getRenderWidget(), Qt::LeftButton);
    QMouseEvent move(QEvent::MouseMove, QPoint(3, 3), Qt::NoButton, Qt::NoButton, {});
    QCoreApplication::sendEvent(area->getRenderWidget(), &move);
    EXPECT_EQ(motions + buttons, 0);
    end.count_down();
    editor.join();
    ASSERT_TRUE(support::passUntil([this] { return buttons == 2; }));
    ASSERT_TRUE(support::passUntil([this] { return !area->isRedrawPending(); }));
    EXPECT_GT(shareOf(area->getWidget()->grab().toImage(), Qt::blue), 0.9);
}

TEST_F(RenderAreaEnds, DrawsAndIsUsedWhileAnotherThreadEditsAllTheTime)
{
    std::atomic<bool> done{false};
    std::thread host([&] {
        for (int i = 0; i < 3000; ++i) {
            const SoWriteLock lock;
            scene.material->diffuseColor.setValue(SbColor(0, i % 2 ? 1.0f : 0.5f, 0));
            if (i % 2)
                scene.root->addChild(new SoCube);
            else if (scene.root->getNumChildren() > 6)
                scene.root->removeChild(5);
        }
        scene.material->diffuseColor.setValue(SbColor(0, 0, 1));
        done = true;
    });
    while (!done) {
        QTest::mouseClick(area->getRenderWidget(), Qt::LeftButton);
        area->redraw();
        QCoreApplication::processEvents();
    }
    host.join();
    ASSERT_TRUE(support::passUntil([this] { return !area->isRedrawPending(); }));
    EXPECT_GT(shareOf(area->getWidget()->grab().toImage(), Qt::blue), 0.9);
}
