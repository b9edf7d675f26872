// Threads that own graphs and take no lock, and how such graphs become the application's. The main
// thread of the test is the application.

#include "InThreads.h"
#include "support/ErrorGuard.h"
#include "TestClock.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/engines/SoCalculator.h>
#include <kalmyr/engines/SoElapsedTime.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoReadLock.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/sensors/SoRoute.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/sensors/SoTimerSensor.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLInterpolators.h>
#include <kalmyr/vrml/SoVRMLSensors.h>
#include <kalmyr/vrml/SoVRMLTransform.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr char kWorld[] = R"(#VRML V2.0 utf8
PROTO Slider [ eventIn SFVec3f to exposedField SFVec3f at 0 0 0 ]
{ Transform { set_translation IS to translation IS at } }
DEF NEAR Viewpoint { position 0 0 10 }
DEF FAR Viewpoint { position 0 0 100 }
Background { skyColor 1 0 0 }
Fog { visibilityRange 50 }
NavigationInfo { type "FLY" }
DEF CLOCK TimeSensor { loop TRUE cycleInterval 4 }
DEF PATH PositionInterpolator { key [ 0, 1 ] keyValue [ 0 0 0, 4 0 0 ] }
DEF COLORS ColorInterpolator { key [ 0, 1 ] keyValue [ 0 0 0, 1 1 1 ] }
DEF A Transform { children Shape { appearance Appearance { material DEF M Material { } }
                                  geometry Box { } } }
DEF B Transform { } DEF C Transform { } DEF S Slider { }
Script { url "javascript:" field SFNode other USE A eventIn SFTime now }
DEF TOUCH TouchSensor { }
ROUTE CLOCK.fraction_changed TO PATH.set_fraction
ROUTE CLOCK.fraction_changed TO COLORS.set_fraction
ROUTE PATH.value_changed TO A.set_translation
ROUTE COLORS.value_changed TO M.set_diffuseColor
ROUTE A.translation_changed TO B.set_translation
ROUTE B.translation_changed TO C.set_translation
ROUTE C.translation_changed TO A.set_translation
ROUTE C.translation_changed TO S.to
)";

constexpr char kScene[] = R"(#Kalmyr V1.0 ascii
ENGINE Sum Calculator { expression "oa = a + b" a 1 b 2 }
ENGINE Watch ElapsedTime { }
Separator {
    DEF part Cube { } DEF +1 Translation { } USE part
    ShapeKit { shape Sphere { } }
    DEF follower Cone { }
}
ROUTE Sum.oa TO follower.height
ROUTE Watch.timeOut TO follower.bottomRadius
)";

SoRef<SoSeparator> readText(const std::string& text)
{
    SoInput in;
    in.setBuffer(text.data(), text.size());
    return SoRef<SoSeparator>(SoDB::readAll(&in));
}

template <class Node>
Node* findFirst(SoNode* root)
{
    SoSearchAction search;
    search.setType(Node::getClassTypeId());
    search.setSearchingAll(true);
    search.apply(root);
    return search.getPath() ? static_cast<Node*>(search.getPath()->getTail()) : nullptr;
}

SoVRMLTransform* transformNamed(SoNode* root, const char* name)
{
    SoSearchAction search;
    search.setName(SbName(name));
    search.setSearchingAll(true);
    search.apply(root);
    return search.getPath() ? static_cast<SoVRMLTransform*>(search.getPath()->getTail()) : nullptr;
}

bool isLong()
{
    return std::getenv("MIRABO_FULL") != nullptr;
}

void serve()
{
    SoSensorManager::processTimerQueue();
    SoSensorManager::processDelayQueue(true);
}

class PrivateGraphs : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        SoDB::init();
        serve(); // we are the application
    }
    void TearDown() override { serve(); }

    TestClock clock;
};

/// Runs a worker step by step: each call goes to its thread, and returns when it is done.
class Worker {
public:
    Worker() : m_thread([this] { run(); }) {}
    ~Worker() { end(); }
    void operator()(std::function<void()> step)
    {
        std::packaged_task<void()> task(std::move(step));
        std::future<void> done = task.get_future();
        m_next.set_value(std::move(task));
        done.get();
    }
    void end()
    {
        if (!m_thread.joinable())
            return;
        m_next.set_value({});
        m_thread.join();
    }

private:
    void run()
    {
        for (;;) {
            std::packaged_task<void()> task = m_next.get_future().get();
            if (!task.valid())
                return;
            m_next = {}; // before the caller goes on
            task();
        }
    }

    std::promise<std::packaged_task<void()>> m_next;
    std::thread m_thread;
};

/// Counts its calls, and in which threads they came.
struct Calls {
    std::thread::id thread;
    int count = 0;

    static void add(void* data, SoSensor*)
    {
        auto* calls = static_cast<Calls*>(data);
        calls->thread = std::this_thread::get_id();
        ++calls->count;
    }
};

/// What one thread does with graphs of its own, many kinds of parts together.
class Life {
public:
    explicit Life(int number) : m_number(number) {}

    void live(int turn)
    {
        const SoRef<SoSeparator> world = readText(kWorld);
        ASSERT_TRUE(world);
        bindAndAnimate(world.get());
        const SoRef<SoSeparator> scene = readText(kScene);
        ASSERT_TRUE(scene);
        editAndListen(scene.get(), turn);
        writeAndCopy(world.get());
        writeAndCopy(scene.get());
        endWithScheduledSensors(scene.get());
    }

private:
    void bindAndAnimate(SoSeparator* world)
    {
        SoVRMLBindable::bindFirst(world);
        SoVRMLBindable* bound = SoVRMLBindable::getBound(world, SoVRMLViewpoint::getClassTypeId());
        ASSERT_TRUE(bound);
        EXPECT_EQ(bound->getName(), SbName("NEAR"));
        auto* clock = findFirst<SoVRMLTimeSensor>(world);
        clock->fraction_changed = 0.5f;
        for (const char* name : {"A", "B", "C"})
            EXPECT_EQ(transformNamed(world, name)->translation.getValue(), SbVec3f(2, 0, 0));
        bound->set_bind = false;
        EXPECT_EQ(SoVRMLBindable::getBound(world, SoVRMLViewpoint::getClassTypeId()), nullptr);
        bound->set_bind = true;
    }

    void editAndListen(SoSeparator* scene, int turn)
    {
        Calls atOnce, later;
        SoNodeSensor immediate(&Calls::add, &atOnce), queued(&Calls::add, &later);
        immediate.setPriority(0);
        immediate.attach(scene);
        queued.attach(scene);
        auto* cube = findFirst<SoCube>(scene);
        const SoRef<SoCalculator> sum(new SoCalculator);
        sum->expression.setValue(SbString("oa = a * 2"));
        cube->width.connectFrom(&sum->oa);
        const int before = atOnce.count;
        for (int i = 1; i <= 20; ++i) {
            sum->a = static_cast<float>(i + turn);
            EXPECT_EQ(cube->width.getValue(), static_cast<float>(2 * (i + turn)));
        }
        EXPECT_EQ(atOnce.count - before, 20);
        EXPECT_EQ(atOnce.thread, std::this_thread::get_id());
        EXPECT_EQ(later.count, 0);
        EXPECT_TRUE(queued.isScheduled());
        auto* shift = new SoTranslation;
        scene->addChild(shift);
        shift->setNetName(SbName("net" + std::to_string(m_number)));
        SoRoute::add(&cube->height, &cube->depth);
        cube->height = 7;
        EXPECT_EQ(cube->depth.getValue(), 7.0f);
        SoInput::addDirectoryFirst(SbString("/nowhere"));
        SoInput::removeDirectory(SbString("/nowhere"));
    }

    static void writeAndCopy(SoSeparator* graph)
    {
        const SoRef<SoNode> copy(graph->copy(true));
        SoOutput out;
        out.setBuffer();
        SoWriteAction(&out).apply(copy.get());
        EXPECT_GT(out.getText().size(), 100u);
        SoGetBoundingBoxAction box(SbViewportRegion(10, 10));
        box.apply(copy.get());
        EXPECT_FALSE(box.getBoundingBox().isEmpty());
    }

    static void endWithScheduledSensors(SoSeparator* scene)
    {
        SoTimerSensor timer;
        timer.schedule();
        SoIdleSensor idle;
        idle.schedule();
        SbTime next;
        EXPECT_TRUE(SoSensorManager::isTimerSensorPending(next));
        EXPECT_TRUE(SoSensorManager::isIdleSensorPending());
        SoFieldSensor onTime;
        onTime.attach(SoGlobalField::find("realTime"));
        scene->removeAllChildren();
    }

    int m_number;
};

TEST_F(PrivateGraphs, OfAllKindsLiveInSeveralThreads)
{
    const int turns = isLong() ? 3000 : 30;
    std::atomic<int> ended{0};
    inThreads(5, [&](int me) {
        if (me == 0) { // a graph that is edited and served beside them
            Life life(me);
            while (ended < 4) {
                life.live(0);
                serve();
            }
            return;
        }
        Life life(me);
        for (int i = 0; i < turns; ++i)
            life.live(i);
        ++ended;
    });
    EXPECT_EQ(ended, 4);
}

TEST_F(PrivateGraphs, ClocksRunOnceTheirGraphIsHandedOverUnderTheLock)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    SoRef<SoSeparator> world;
    const auto position = [&] { return transformNamed(world.get(), "A")->translation.getValue(); };
    Worker worker;
    worker([&] { world = readText(kWorld); });
    clock.advance(1);
    serve();
    worker([&] { EXPECT_EQ(position(), SbVec3f(0, 0, 0)); });
    SbTime next;
    EXPECT_FALSE(SoSensorManager::isTimerSensorPending(next));
    worker([&] {
        const SoWriteLock lock;
        ASSERT_TRUE(lock);
        root->addChild(world.get());
    });
    EXPECT_TRUE(SoSensorManager::isTimerSensorPending(next));
    clock.advance(1);
    serve();
    EXPECT_GT(position()[0], 0);
    // What is bound is found by all who read.
    worker([&] {
        const SoWriteLock lock;
        SoVRMLBindable::bindFirst(root.get());
    });
    EXPECT_TRUE(SoVRMLBindable::getBound(root.get(), SoVRMLViewpoint::getClassTypeId()));
}

TEST_F(PrivateGraphs, SensorsOfAThreadThatEndsPassToTheApplication)
{
    SoRef<SoSeparator> world;
    Calls calls;
    std::unique_ptr<SoOneShotSensor> sensor;
    std::thread([&] {
        world = readText(kWorld);
        sensor = std::make_unique<SoOneShotSensor>(&Calls::add, &calls);
        sensor->schedule();
    }).join();
    EXPECT_EQ(calls.count, 0);
    clock.advance(1);
    serve();
    EXPECT_EQ(calls.count, 1);
    EXPECT_EQ(calls.thread, std::this_thread::get_id());
    EXPECT_TRUE(findFirst<SoVRMLTimeSensor>(world.get())->isActive.getValue());
}

TEST_F(PrivateGraphs, AThreadThatServesItsQueuesKeepsItsSensors)
{
    Calls calls;
    std::unique_ptr<SoTimerSensor> timer;
    SoRef<SoSeparator> world;
    std::thread::id id;
    const auto isActive = [&] {
        return findFirst<SoVRMLTimeSensor>(world.get())->isActive.getValue();
    };
    Worker worker;
    worker([&] {
        id = std::this_thread::get_id();
        serve();
        timer = std::make_unique<SoTimerSensor>(&Calls::add, &calls);
        timer->schedule();
        world = readText(kWorld);
        const SoWriteLock lock;
    });
    clock.advance(1);
    serve();
    EXPECT_EQ(calls.count, 0);
    worker([&] {
        serve();
        EXPECT_EQ(calls.count, 1);
        EXPECT_EQ(calls.thread, id);
        EXPECT_TRUE(isActive());
        SoSensorManager::handOver();
    });
    clock.advance(1);
    worker([&] { serve(); });
    EXPECT_EQ(calls.count, 1);
    serve();
    EXPECT_EQ(calls.count, 2);
    EXPECT_EQ(calls.thread, std::this_thread::get_id());
    clock.advance(1);
    worker([&] { serve(); }); // and not its own again with the next turn
    EXPECT_EQ(calls.count, 2);
    timer.reset();
}

TEST_F(PrivateGraphs, SensorsOfTheApplicationWaitForItWhoeverEdits)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    Calls atOnce, later, redraw;
    SoOneShotSensor oneShot(&Calls::add, &redraw);
    SoNodeSensor immediate(&Calls::add, &atOnce), queued(&Calls::add, &later);
    immediate.setPriority(0);
    immediate.attach(root.get());
    queued.attach(root.get());
    std::atomic<int> woken{0};
    SoSensorManager::setChangedCallback([](void* w) { ++*static_cast<std::atomic<int>*>(w); },
                                        &woken);
    std::thread::id id;
    Worker worker;
    worker([&] {
        id = std::this_thread::get_id();
        serve(); // it has queues of its own that it serves
        {
            const SoWriteLock lock;
            ASSERT_TRUE(lock);
            root->addChild(new SoCube);
            oneShot.schedule();
            root->addChild(new SoCube);
        }
        serve();
    });
    EXPECT_EQ(atOnce.count, 2);
    EXPECT_EQ(atOnce.thread, id);
    EXPECT_EQ(later.count + redraw.count, 0);
    EXPECT_EQ(woken, 2);
    serve();
    EXPECT_EQ(later.count, 1);
    EXPECT_EQ(redraw.count, 1);
    EXPECT_EQ(later.thread, std::this_thread::get_id());
    SoSensorManager::setChangedCallback(nullptr, nullptr);
}

TEST_F(PrivateGraphs, FollowTheTimeOfTheirThreadUntilHandedOver)
{
    const SoRef<SoCube> cube(new SoCube); // the application's
    const SoRef<SoElapsedTime> watch(new SoElapsedTime);
    cube->width.connectFrom(&watch->timeOut);
    SoRef<SoCube> theirs, copied;
    Worker worker;
    worker([&] {
        theirs = new SoCube;
        const SoRef<SoElapsedTime> own(new SoElapsedTime);
        EXPECT_EQ(own->timeIn.getConnectedField(), SoGlobalField::find("realTime"));
        EXPECT_NE(own->timeIn.getConnectedField(), watch->timeIn.getConnectedField());
        theirs->width.connectFrom(&own->timeOut);
        const SoReadLock lock;
        const SoRef<SoEngine> copy(watch->copy());
        EXPECT_EQ(static_cast<SoElapsedTime*>(copy.get())->timeIn.getConnectedField(),
                  own->timeIn.getConnectedField());
    });
    clock.advance(2);
    serve();
    EXPECT_EQ(cube->width.getValue(), 2.0f);
    worker([&] {
        EXPECT_EQ(theirs->width.getValue(), 0.0f);
        const SoWriteLock lock;
        ASSERT_TRUE(lock);
    });
    clock.advance(3);
    serve();
    EXPECT_EQ(cube->width.getValue(), 5.0f);
    EXPECT_EQ(theirs->width.getValue(), 5.0f);
    SoOutput out;
    out.setBuffer();
    const SoRef<SoSeparator> both(new SoSeparator);
    both->addChild(cube.get());
    both->addChild(theirs.get());
    SoWriteAction(&out).apply(both.get());
    const std::string text(out.getText());
    const std::size_t global = text.find("GLOBAL");
    ASSERT_NE(global, std::string::npos);
    EXPECT_EQ(text.find("GLOBAL", global + 1), std::string::npos) << text;
}

TEST_F(PrivateGraphs, ThatAreBoundTellOnlyThoseWhomTheyConcern)
{
    struct Told {
        std::vector<SoVRMLBindable*> nodes;
        std::thread::id thread;
        static void add(void* data, SoVRMLBindable* node)
        {
            auto* told = static_cast<Told*>(data);
            told->nodes.push_back(node);
            told->thread = std::this_thread::get_id();
        }
    } told;
    SoVRMLBindable::addBoundCallback(&Told::add, &told);
    const SoRef<SoSeparator> root(new SoSeparator);
    const SoRef<SoVRMLViewpoint> shared(new SoVRMLViewpoint);
    root->addChild(shared.get());
    Worker worker;
    worker([&] {
        const SoRef<SoVRMLViewpoint> own(new SoVRMLViewpoint);
        own->set_bind = true;
        EXPECT_TRUE(own->isBound.getValue());
        const SoWriteLock lock;
        ASSERT_TRUE(lock);
        shared->set_bind = true;
    });
    EXPECT_TRUE(told.nodes.empty());
    serve();
    ASSERT_EQ(told.nodes.size(), 1u);
    EXPECT_EQ(told.nodes[0], shared.get());
    EXPECT_EQ(told.thread, std::this_thread::get_id());
    SoVRMLBindable::removeBoundCallback(&Told::add, &told);
}

TEST_F(PrivateGraphs, AreNotLookedAtByThreadsThatBindInOthers)
{
    // Each thread puts its bound node under ever new roots: walks up from a node of another thread
    // would meet them half made.
    inThreads(3, [&](int) {
        const SoRef<SoVRMLViewpoint> own(new SoVRMLViewpoint);
        own->set_bind = true;
        SoRef<SoSeparator> top(new SoSeparator);
        top->addChild(own.get());
        for (int i = 0; i < (isLong() ? 5000 : 300); ++i) {
            if (i % 8 == 7) {
                top = new SoSeparator; // the old ones are gone
                top->addChild(own.get());
            } else {
                const SoRef<SoSeparator> above(new SoSeparator);
                above->addChild(top.get());
                top = above;
            }
            ASSERT_EQ(SoVRMLBindable::getBound(top.get(), SoVRMLViewpoint::getClassTypeId()),
                      own.get());
        }
    });
}

TEST_F(PrivateGraphs, TheApplicationTicksWhenNobodyReads)
{
    const SoRef<SoSeparator> world = readText(kWorld);
    SoVRMLTransform* moved = transformNamed(world.get(), "A");
    clock.advance(1);
    serve();
    const SbVec3f first = moved->translation.getValue();
    Worker reader;
    reader([] { SoDB::readlock(); });
    clock.advance(1);
    serve();
    EXPECT_EQ(moved->translation.getValue(), first);
    reader([] { SoDB::readunlock(); });
    clock.advance(1);
    serve();
    EXPECT_NE(moved->translation.getValue(), first);
}

TEST_F(PrivateGraphs, ARefusedUpgradeLeavesTheGraphAlone)
{
    // Two readers want to edit: the second is refused, and the first edits as soon as it has left.
    const SoRef<SoSeparator> root(new SoSeparator);
    std::atomic<int> reading{0}, edits{0}, refused{0};
    support::ErrorScope errors;
    inThreads(2, [&](int) {
        const SoReadLock read;
        ++reading;
        while (reading < 2)
            std::this_thread::yield();
        const SoWriteLock write;
        if (!write) {
            ++refused;
            return;
        }
        root->addChild(new SoCube);
        ++edits;
    });
    EXPECT_EQ(edits, 1);
    EXPECT_EQ(refused, 1);
    EXPECT_EQ(root->getNumChildren(), 1);
    EXPECT_TRUE(errors.contains("refused"));
}

TEST_F(PrivateGraphs, PassToOneApplicationThatServesThemMeanwhile)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    std::atomic<int> loading{3};
    const int files = isLong() ? 2000 : 20;
    const auto load = [&] {
        for (int i = 0; i < files; ++i) {
            SoRef<SoSeparator> world = readText(i % 2 ? kScene : kWorld);
            const SoWriteLock lock;
            ASSERT_TRUE(lock);
            root->addChild(world.get());
            world.reset(); // the application may take it away
        }
        --loading;
    };
    std::thread loaders[] = {std::thread(load), std::thread(load), std::thread(load)};
    int given = 0;
    while (loading > 0) {
        clock.advance(0.1);
        {
            const SoReadLock lock;
            serve();
        }
        const SoWriteLock lock;
        ASSERT_TRUE(lock);
        while (root->getNumChildren() > 4) {
            root->removeChild(0);
            ++given;
        }
    }
    for (std::thread& loader : loaders)
        loader.join();
    EXPECT_EQ(given + root->getNumChildren(), 3 * files);
    root->addChild(readText(kWorld).get());
    clock.advance(1);
    serve();
    EXPECT_TRUE(findFirst<SoVRMLTimeSensor>(root.get())->isActive.getValue());
}

} // namespace
