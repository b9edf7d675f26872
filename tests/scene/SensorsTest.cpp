#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/sensors/SoPathSensor.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/sensors/SoTimerSensor.h>
#include <kalmyr/shapes/SoCube.h>

#include "support/Clock.h"
#include "support/ErrorGuard.h"

#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// A sensor whose callback is whatever the test says.
template <class Sensor>
class Calling {
public:
    explicit Calling(std::uint32_t priority = 100) : sensor(std::make_unique<Sensor>(&call, this))
    {
        if constexpr (std::is_base_of_v<SoDelayQueueSensor, Sensor>)
            sensor->setPriority(priority);
    }
    int take() { return std::exchange(calls, 0); }

    std::unique_ptr<Sensor> sensor;
    std::function<void(Sensor&)> action;
    int calls = 0;

private:
    static void call(void* data, SoSensor* sensor)
    {
        auto* self = static_cast<Calling*>(data);
        ++self->calls;
        if (self->action)
            self->action(*static_cast<Sensor*>(sensor));
    }
};

class Sensors : public testing::Test {
protected:
    static void SetUpTestSuite() { SoDB::init(); }
    void SetUp() override
    {
        root = new SoSeparator;
        cube = new SoCube;
        root->addChild(cube.get());
    }
    void TearDown() override { process(); }
    static void process() { SoSensorManager::processDelayQueue(true); }

    SoRef<SoSeparator> root;
    SoRef<SoCube> cube;
};

TEST_F(Sensors, QueuedOnesReportOnceAndTheLastChange)
{
    Calling<SoNodeSensor> watch;
    watch.sensor->attach(root.get());
    cube->width = 3;
    cube->height = 4;
    EXPECT_EQ(watch.take(), 0);
    watch.action = [this](SoNodeSensor& s) { EXPECT_EQ(s.getTriggerField(), &cube->height); };
    process();
    EXPECT_EQ(watch.take(), 1);
    process();
    EXPECT_EQ(watch.take(), 0);
}

TEST_F(Sensors, ImmediateOnesReportEveryEditWithKindChildAndIndex)
{
    Calling<SoNodeSensor> watch(0);
    std::string seen;
    watch.action = [&seen](SoNodeSensor& s) {
        seen += std::to_string(s.getTriggerOperation()) + ':'
                + (s.getTriggerChild() ? s.getTriggerChild()->getName().getString() : "-") + ':'
                + std::to_string(s.getTriggerIndex()) + ' ';
    };
    watch.sensor->attach(root.get());
    for (const char* name : {"a", "b", "c"}) {
        auto* node = new SoCube;
        node->setName(name);
        root->insertChild(node, *name == 'b' ? 0 : root->getNumChildren());
    }
    root->replaceChild(1, root->getChild(0));
    root->removeChild(0);
    root->removeAllChildren();
    EXPECT_EQ(seen, "1:a:1 2:b:0 1:c:3 3:b:1 4:b:0 5:-:-1 ");
}

TEST_F(Sensors, TellThePathToTheChange)
{
    auto* inner = new SoSeparator;
    auto* leaf = new SoCube;
    inner->addChild(new SoTranslation);
    inner->addChild(leaf);
    root->addChild(inner);
    Calling<SoNodeSensor> watch(0);
    watch.sensor->setTriggerPathFlag(true);
    watch.action = [&](SoNodeSensor& s) {
        const SoPath* path = s.getTriggerPath();
        ASSERT_TRUE(path);
        ASSERT_EQ(path->getLength(), 3);
        EXPECT_EQ(path->getTail(), leaf);
        EXPECT_EQ(path->getIndex(1), 1);
        EXPECT_EQ(path->getIndex(2), 1);
    };
    watch.sensor->attach(root.get());
    leaf->width = 1;
    EXPECT_EQ(watch.take(), 1);
}

TEST_F(Sensors, AreToldOnceHoweverManyWaysLeadUp)
{
    for (int i = 0; i < 20; ++i) {
        auto* group = new SoSeparator;
        group->addChild(cube.get());
        group->addChild(cube.get());
        root->addChild(group);
    }
    Calling<SoNodeSensor> watch(0);
    watch.sensor->attach(root.get());
    cube->width = 9;
    EXPECT_EQ(watch.take(), 1);
}

TEST_F(Sensors, MayDoAnythingInTheirCallback)
{
    for (const std::uint32_t priority : {0u, 100u}) {
        SCOPED_TRACE(priority);
        Calling<SoNodeSensor> detaching(priority), deleting(priority), moving(priority);
        Calling<SoNodeSensor> other(priority);
        detaching.action = [](SoNodeSensor& s) { s.detach(); };
        deleting.action = [&](SoNodeSensor&) {
            other.sensor.reset(); // may still wait for its turn
            deleting.sensor.reset();
        };
        const SoRef<SoCube> elsewhere(new SoCube);
        moving.action = [&](SoNodeSensor& s) { s.attach(elsewhere.get()); };
        for (auto* c : {&detaching, &deleting, &moving, &other})
            c->sensor->attach(root.get());
        for (int i = 0; i < 3; ++i) {
            cube->width = static_cast<float>(i + 1);
            process();
        }
        EXPECT_EQ(detaching.calls, 1);
        EXPECT_EQ(deleting.calls, 1);
        EXPECT_EQ(moving.calls, 1);
        EXPECT_LE(other.calls, 1);
        elsewhere->width = 7;
        process();
        EXPECT_EQ(moving.calls, 2);
    }
}

TEST_F(Sensors, HearOfTheEditsOfTheirOwnCallbackAfterwards)
{
    Calling<SoNodeSensor> watch(0);
    std::vector<SoField*> seen;
    bool inside = false;
    watch.action = [&](SoNodeSensor& s) {
        EXPECT_FALSE(inside) << "no callback inside a callback";
        inside = true;
        seen.push_back(s.getTriggerField());
        if (seen.size() == 1) {
            cube->height = 5;
            cube->depth = 6;
        }
        inside = false;
    };
    watch.sensor->attach(root.get());
    cube->width = 4;
    EXPECT_EQ(seen, (std::vector<SoField*>{&cube->width, &cube->height, &cube->depth}));
}

TEST_F(Sensors, KeepWhatTheyWillReportAlive)
{
    Calling<SoNodeSensor> first(0), second(0);
    // The first one takes away what the second one is still to report.
    first.action = [&](SoNodeSensor& s) {
        if (s.getTriggerOperation() == SoNotification::CHILD_ADDED)
            root->removeChild(root->getNumChildren() - 1);
    };
    int reported = 0;
    second.action = [&](SoNodeSensor& s) {
        if (s.getTriggerChild()) {
            EXPECT_EQ(s.getTriggerChild()->getTypeId(), SoCube::getClassTypeId());
            ++reported;
        }
    };
    second.sensor->attach(root.get());
    first.sensor->attach(root.get());
    root->addChild(new SoCube);
    EXPECT_EQ(reported, 2);
    Calling<SoNodeSensor> queued;
    queued.sensor->attach(root.get());
    queued.action = [](SoNodeSensor& s) {
        EXPECT_EQ(s.getTriggerChild()->getTypeId(), SoCube::getClassTypeId());
    };
    first.sensor->detach();
    root->addChild(new SoCube);
    root->removeChild(root->getNumChildren() - 1);
    process();
    EXPECT_EQ(queued.take(), 1);
}

TEST_F(Sensors, TellThatWhatTheyWatchDied)
{
    struct Deaths {
        int count = 0;
        static void add(void* data, SoSensor*) { ++static_cast<Deaths*>(data)->count; }
    } deaths;
    Calling<SoNodeSensor> onNode;
    Calling<SoFieldSensor> onField;
    Calling<SoPathSensor> onPath;
    SoRef<SoPath> path(new SoPath(root.get()));
    path->append(0);
    auto* node = new SoCube;
    root->addChild(node);
    onNode.sensor->attach(node);
    onField.sensor->attach(&node->width);
    onPath.sensor->attach(path.get());
    onNode.sensor->setDeleteCallback(&Deaths::add, &deaths);
    onField.sensor->setDeleteCallback(&Deaths::add, &deaths);
    onPath.sensor->setDeleteCallback(&Deaths::add, &deaths);
    node->width = 8;
    root->removeChild(1);
    path.reset();
    EXPECT_EQ(deaths.count, 3);
    EXPECT_EQ(onNode.sensor->getAttachedNode(), nullptr);
    EXPECT_EQ(onField.sensor->getAttachedField(), nullptr);
    EXPECT_EQ(onPath.sensor->getAttachedPath(), nullptr);
    process();
    EXPECT_EQ(onNode.calls + onField.calls, 0) << "nothing left to report";
}

TEST_F(Sensors, RunInOrderOfPriority)
{
    std::string order;
    std::vector<std::unique_ptr<Calling<SoOneShotSensor>>> all;
    for (const char name : std::string("dbeac")) {
        all.push_back(std::make_unique<Calling<SoOneShotSensor>>(
            static_cast<std::uint32_t>(10 * (name - 'a' + 1))));
        all.back()->action = [&order, name](SoOneShotSensor&) { order += name; };
        all.back()->sensor->schedule();
        all.back()->sensor->schedule();
    }
    Calling<SoIdleSensor> idle;
    idle.action = [&order](SoIdleSensor&) { order += '!'; };
    idle.sensor->schedule();
    EXPECT_TRUE(SoSensorManager::isIdleSensorPending());
    all[1]->sensor->unschedule(); // b
    SoSensorManager::processDelayQueue(false);
    EXPECT_EQ(order, "acde");
    process();
    EXPECT_EQ(order, "acde!");
}

TEST_F(Sensors, ThatScheduleThemselvesWaitForTheNextTurn)
{
    Calling<SoOneShotSensor> again;
    again.action = [](SoOneShotSensor& s) { s.schedule(); };
    again.sensor->schedule();
    process();
    EXPECT_EQ(again.calls, 1);
    process();
    EXPECT_EQ(again.calls, 2);
    again.action = nullptr;
}

TEST_F(Sensors, HearNothingWhileNotificationIsOff)
{
    Calling<SoNodeSensor> watch(0);
    watch.sensor->attach(root.get());
    EXPECT_TRUE(cube->enableNotify(false));
    cube->width = 3;
    cube->height = 3;
    EXPECT_EQ(watch.take(), 0);
    EXPECT_FALSE(cube->enableNotify(true));
    cube->touch();
    EXPECT_EQ(watch.take(), 1);
    cube->width.enableNotify(false);
    cube->width = 5;
    EXPECT_EQ(watch.take(), 0);
    cube->depth = 5;
    EXPECT_EQ(watch.take(), 1);
    cube->width.enableNotify(true);
    cube->width.touch();
    EXPECT_EQ(watch.take(), 1);
}

TEST_F(Sensors, OfTimeFireWhenTheirTimeHasCome)
{
    const support::Clock clock;
    Calling<SoAlarmSensor> past, future;
    Calling<SoTimerSensor> timer;
    past.sensor->setTime(SbTime::getTimeOfDay() - SbTime(5));
    past.sensor->schedule();
    future.sensor->setTimeFromNow(SbTime(1000));
    future.sensor->schedule();
    timer.sensor->setInterval(SbTime(0.002));
    timer.sensor->schedule();
    const auto run = [](double seconds) {
        support::Clock::advance(seconds);
        SoSensorManager::processTimerQueue();
    };
    run(0.0015);
    EXPECT_EQ(timer.calls, 0);
    for (int i = 0; i < 3; ++i)
        run(0.002);
    EXPECT_EQ(past.calls, 1);
    EXPECT_FALSE(past.sensor->isScheduled());
    EXPECT_EQ(future.calls, 0);
    EXPECT_EQ(timer.calls, 3);
    timer.action = [&timer](SoTimerSensor&) { timer.sensor.reset(); };
    run(0.002);
    EXPECT_FALSE(timer.sensor);
    future.sensor->unschedule();
}

TEST_F(Sensors, OnPathsHearWhatConcernsThePath)
{
    auto* before = new SoTranslation;
    auto* shielded = new SoSeparator;
    auto* inShield = new SoTranslation;
    auto* inner = new SoSeparator;
    auto* leaf = new SoCube;
    auto* after = new SoTranslation;
    shielded->addChild(inShield);
    inner->addChild(leaf);
    for (SoNode* node : {static_cast<SoNode*>(before), static_cast<SoNode*>(shielded),
                         static_cast<SoNode*>(inner), static_cast<SoNode*>(after)})
        root->addChild(node);
    const SoRef<SoPath> path(new SoPath(root.get()));
    path->append(3);
    path->append(0);
    ASSERT_EQ(path->getTail(), leaf);
    Calling<SoPathSensor> watch(0);
    watch.sensor->attach(path.get());
    leaf->width = 3;
    EXPECT_EQ(watch.take(), 1);
    before->translation.setValue(1, 0, 0);
    EXPECT_EQ(watch.take(), 1);
    after->translation.setValue(1, 0, 0);
    inShield->translation.setValue(1, 0, 0);
    EXPECT_EQ(watch.take(), 0);
    root->insertChild(new SoCube, 0);
    EXPECT_EQ(watch.take(), 1) << "a node of the path has another child";
    inner->removeChild(0);
    EXPECT_EQ(watch.take(), 1);
    EXPECT_EQ(path->getLength(), 2);
    inner->addChild(new SoCube);
    EXPECT_EQ(watch.take(), 1) << "below its new end";
}

TEST_F(Sensors, LetGoOfWhatTheyHaveReported)
{
    for (const std::uint32_t priority : {0u, 100u}) {
        Calling<SoNodeSensor> watch(priority);
        watch.sensor->setTriggerPathFlag(true);
        watch.sensor->attach(root.get());
        const SoRef<SoSeparator> group(new SoSeparator);
        const SoRef<SoCube> child(new SoCube);
        root->addChild(group.get());
        group->addChild(child.get());
        watch.action = [&](SoNodeSensor& self) {
            if (self.getTriggerNode() == group.get()) {
                EXPECT_EQ(self.getTriggerChild(), child.get());
                EXPECT_EQ(self.getTriggerPath()->getTail(), group.get());
            }
        };
        group->removeChild(0);
        process();
        EXPECT_GE(watch.calls, 1);
        EXPECT_EQ(watch.sensor->getTriggerContainer(), nullptr);
        EXPECT_EQ(watch.sensor->getTriggerChild(), nullptr);
        EXPECT_EQ(watch.sensor->getTriggerPath(), nullptr);
        root->removeChild(group.get());
        watch.action = nullptr;
        process();
        EXPECT_EQ(child->getRefCount(), 1);
        EXPECT_EQ(group->getRefCount(), 1);
    }
}

TEST_F(Sensors, ReportInOrderWhatTheirCallbackChanges)
{
    // Each report finds its own change, inner ones theirs, whatever the callback does meanwhile.
    Calling<SoNodeSensor> watch(0);
    watch.sensor->attach(root.get());
    std::vector<int> seen;
    watch.action = [&](SoNodeSensor& self) {
        if (seen.empty())
            for (int i = 0; i < 1000; ++i)
                root->addChild(new SoCube);
        seen.push_back(self.getTriggerIndex());
    };
    root->addChild(new SoCube);
    ASSERT_EQ(seen.size(), 1001u);
    for (int i = 0; i <= 1000; ++i)
        EXPECT_EQ(seen[static_cast<std::size_t>(i)], i + 1);
}

TEST_F(Sensors, OfTimeRefuseIntervalsThatNeverPass)
{
    const bool stopped = kalmyr::setContractsStop(false);
    Calling<SoTimerSensor> timer;
    Calling<SoAlarmSensor> alarm;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    auto errors = support::expectErrors();
    timer.sensor->setInterval(SbTime(5));
    for (const double interval : {0.0, -1.0, nan})
        timer.sensor->setInterval(SbTime(interval));
    EXPECT_EQ(errors.count(), 3u);
    EXPECT_EQ(timer.sensor->getInterval(), SbTime(5));
    alarm.sensor->setTime(SbTime(nan));
    alarm.sensor->schedule();
    EXPECT_EQ(errors.count(), 4u);
    EXPECT_FALSE(alarm.sensor->isScheduled());
    // One that vanishes beside the time of day, and an alarm that is set in the past again and
    // again, come once in each processing.
    timer.sensor->setInterval(SbTime(1e-300));
    timer.sensor->schedule();
    alarm.action = [](SoAlarmSensor& self) { self.schedule(); };
    alarm.sensor->setTime(SbTime());
    alarm.sensor->schedule();
    SbTime::setSource([] { return SbTime(4e9); });
    SoSensorManager::processTimerQueue();
    SoSensorManager::processTimerQueue();
    SbTime::setSource(nullptr);
    EXPECT_EQ(alarm.calls, 2);
    EXPECT_EQ(timer.calls, 1);
    alarm.sensor->unschedule();
    timer.sensor->unschedule();
    kalmyr::setContractsStop(stopped);
}

TEST_F(Sensors, LeaveTheQueueWithThePriorityThatTheyWaitWith)
{
    Calling<SoOneShotSensor> first(3), second(3);
    Calling<SoIdleSensor> idle;
    idle.sensor->schedule();
    idle.sensor.reset();
    first.sensor->schedule();
    second.sensor->schedule();
    first.sensor->setPriority(50);
    second.sensor->setPriority(0);
    first.sensor->unschedule();
    second.sensor.reset();
    process();
    EXPECT_EQ(first.calls + second.calls + idle.calls, 0);
}

TEST_F(Sensors, SurviveRandomEditsInCallbacks)
{
    // Twenty sensors that edit, detach, attach and delete one another at random while nodes come
    // and go; what must hold is that nothing is touched that is gone, which sanitizers see.
    int calls = 0;
    for (unsigned seed = 1; seed <= 10; ++seed) {
        std::mt19937 random(seed);
        std::vector<SoRef<SoSeparator>> groups;
        for (int i = 0; i < 6; ++i)
            groups.emplace_back(new SoSeparator);
        std::vector<std::unique_ptr<Calling<SoNodeSensor>>> all;
        int depth = 0;
        const auto edit = [&] {
            SoSeparator* group = groups[random() % groups.size()].get();
            const int num = group->getNumChildren();
            switch (random() % 4) {
            case 0:
                if (num > 0)
                    group->removeChild(static_cast<int>(random() % static_cast<unsigned>(num)));
                break;
            case 1:
                groups[random() % groups.size()] = new SoSeparator;
                break;
            default:
                group->addChild(new SoCube);
            }
        };
        for (int i = 0; i < 20; ++i) {
            all.push_back(std::make_unique<Calling<SoNodeSensor>>(i % 2 ? 0 : 100));
            all.back()->sensor->setTriggerPathFlag(i % 3 == 0);
            all.back()->sensor->attach(groups[random() % groups.size()].get());
            all.back()->action = [&](SoNodeSensor& self) {
                ++calls;
                if (self.getTriggerChild())
                    self.getTriggerChild()->touch(); // alive
                if (++depth < 4) {
                    auto& other = *all[random() % all.size()];
                    const unsigned what = random() % 8;
                    if (what == 0)
                        other.sensor.reset();
                    else if (what == 1 && other.sensor)
                        other.sensor->detach();
                    else if (what == 2 && other.sensor)
                        other.sensor->attach(groups[random() % groups.size()].get());
                    else if (what < 6)
                        edit();
                }
                --depth;
            };
        }
        for (int i = 0; i < 200; ++i) {
            edit();
            if (i % 7 == 0)
                process();
        }
    }
    EXPECT_GT(calls, 200);
}

} // namespace
