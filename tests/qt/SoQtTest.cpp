#include "QtTestTools.h"

#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/sensors/SoDelayQueueSensor.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/sensors/SoTimerSensor.h>

#include "support/Clock.h"
#include "support/ErrorGuard.h"
#include "support/Passes.h"

#include <QTimer>

#include <atomic>
#include <thread>

namespace {

struct Counter {
    int count = 0;
    static void add(void* data, SoSensor*) { ++static_cast<Counter*>(data)->count; }
};

} // namespace

TEST(SoQt, CountsItsInits)
{
    EXPECT_FALSE(SoQt::isInitialized());
    auto* top = new QWidget;
    SoQt::init(top);
    SoQt::init(nullptr);
    EXPECT_EQ(SoQt::getTopLevelWidget(), top);
    SoQt::finish();
    EXPECT_TRUE(SoQt::isInitialized());
    delete top;
    EXPECT_EQ(SoQt::getTopLevelWidget(), nullptr);
    SoQt::finish();
    EXPECT_FALSE(SoQt::isInitialized());
    SoQt::finish();
    EXPECT_FALSE(SoQt::isInitialized());
}

TEST(SoQt, ServesSensorsOfWhatOtherThreadsEdit)
{
    SoQt::init(nullptr);
    Counter changes;
    FlatCube scene;
    SoNodeSensor sensor(&Counter::add, &changes);
    sensor.attach(scene.root.get());
    std::atomic<bool> isDone{false};
    std::thread editor([&] {
        for (int i = 1; i <= 50; ++i) {
            const SoWriteLock lock;
            scene.cube->width.setValue(static_cast<float>(i));
            std::this_thread::yield();
        }
        isDone = true;
    });
    EXPECT_TRUE(support::passUntil([&] { return isDone && changes.count >= 1; }));
    editor.join();
    SoQt::finish();
}

TEST(SoQt, ServesSensorsInTheEventLoop)
{
    SoQt::init(nullptr);
    Counter changes;
    Counter ticks;
    Counter once;
    FlatCube scene;
    SoNodeSensor sensor(&Counter::add, &changes);
    sensor.attach(scene.root.get());
    for (int i = 1; i <= 10; ++i)
        scene.cube->width.setValue(static_cast<float>(i));
    EXPECT_EQ(changes.count, 0) << "the queue waits for the loop";
    EXPECT_TRUE(support::passUntil([&] { return changes.count > 0; }));
    support::flush();
    EXPECT_EQ(changes.count, 1) << "and coalesces";

    const support::Clock clock;
    SoTimerSensor timer(&Counter::add, &ticks);
    timer.setInterval(SbTime(0.005));
    timer.schedule();
    SoAlarmSensor alarm(&Counter::add, &once);
    alarm.setTimeFromNow(SbTime(0.01));
    alarm.schedule();
    EXPECT_TRUE(support::passUntil([&] {
        support::Clock::advance(0.002);
        return ticks.count >= 3 && once.count == 1;
    }));
    timer.unschedule();
    const int before = ticks.count;
    support::Clock::advance(1);
    SoQt::processSensors();
    support::flush();
    EXPECT_EQ(ticks.count, before);
    SoQt::finish();

    scene.cube->width.setValue(99);
    support::flush();
    EXPECT_EQ(changes.count, 1) << "nobody serves the queue after finish()";
    SoQt::init(nullptr);
    EXPECT_TRUE(support::passUntil([&] { return changes.count == 2; }));
    SoQt::finish();
}

TEST(SoQt, DoesNotServeSensorsFromWithinTheirOwnCallback)
{
    SoQt::init(nullptr);
    struct Nested {
        int depth = 0;
        int deepest = 0;
        int calls = 0;
        FlatCube scene;
    } nested;
    SoNodeSensor sensor(
        [](void* data, SoSensor*) {
            auto& n = *static_cast<Nested*>(data);
            n.deepest = std::max(n.deepest, ++n.depth);
            if (++n.calls < 3) {
                n.scene.cube->width.setValue(10.0f + static_cast<float>(n.calls));
                support::flush(); // as a dialog would
                SoQt::processSensors();
            }
            --n.depth;
        },
        &nested);
    sensor.attach(nested.scene.root.get());
    nested.scene.cube->width.setValue(7);
    EXPECT_TRUE(support::passUntil([&] { return nested.calls == 3; }));
    EXPECT_EQ(nested.deepest, 1);
    SoQt::finish();
}

TEST(SoQt, LetsASensorFinishTheBinding)
{
    SoQt::init(nullptr);
    FlatCube scene;
    SoNodeSensor sensor([](void*, SoSensor*) { SoQt::finish(); }, nullptr);
    sensor.attach(scene.root.get());
    scene.cube->width.setValue(3);
    EXPECT_TRUE(support::passUntil([] { return !SoQt::isInitialized(); }));
}
