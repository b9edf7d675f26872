// Work that must not grow with what is beside, above or below it.

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLShape.h>

#include <benchmark/benchmark.h>

namespace {

SoRef<SoSeparator> makeRow(std::int64_t count)
{
    SoRef<SoSeparator> root(new SoSeparator(static_cast<int>(count)));
    for (std::int64_t i = 0; i < count; ++i)
        root->addChild(new SoCube);
    return root;
}

/// A list makes its index after some searches, and that takes about the time that they took.
void searchUntilIndexed(const SoGroup& group)
{
    for (int i = 0; i < 100; ++i)
        benchmark::DoNotOptimize(group.findChild(group.getChild(group.getNumChildren() - 1)));
}

/// Argument: siblings. Each of them changes once in a while, under a sensor that wants the path.
void triggerPathAmongSiblings(benchmark::State& state)
{
    SoDB::init();
    const auto root = makeRow(state.range(0));
    int calls = 0;
    SoNodeSensor sensor([](void* data, SoSensor*) { ++*static_cast<int*>(data); }, &calls);
    sensor.setPriority(0);
    sensor.setTriggerPathFlag(true);
    sensor.attach(root.get());
    searchUntilIndexed(*root);
    constexpr std::int64_t kStride = 7919;
    std::int64_t at = 0;
    for (auto _ : state) {
        at = (at + kStride) % state.range(0);
        static_cast<SoCube*>(root->getChild(static_cast<int>(at)))->width.setValue(2);
    }
    if (calls == 0)
        state.SkipWithError("the sensor was not called");
}

enum Work { FIND = 1, EDIT = 2, BOTH = 3 };

/// Arguments: siblings; work. A child comes and goes at the front, and others are looked for.
void findWhileTheFrontIsEdited(benchmark::State& state)
{
    SoDB::init();
    const auto root = makeRow(state.range(0));
    searchUntilIndexed(*root);
    const SoRef<SoCube> guest(new SoCube);
    constexpr std::int64_t kStride = 7919;
    std::int64_t at = 0;
    for (auto _ : state) {
        at = (at + kStride) % state.range(0);
        SoNode* wanted = root->getChild(static_cast<int>(at));
        if (state.range(1) & EDIT)
            root->insertChild(guest.get(), 0);
        if (state.range(1) & FIND)
            benchmark::DoNotOptimize(root->findChild(wanted));
        if (state.range(1) & EDIT)
            root->removeChild(0);
    }
}

/// Shapes, each of them the geometry of the one above: levels that only fields make.
SoRef<SoVRMLShape> makeFieldChain(std::int64_t levels)
{
    SoRef<SoVRMLShape> top(new SoVRMLShape);
    for (std::int64_t i = 1; i < levels; ++i) {
        const SoRef<SoVRMLShape> above(new SoVRMLShape);
        above->geometry.setValue(top.get());
        top = above;
    }
    return top;
}

void searchThroughFields(benchmark::State& state)
{
    SoDB::init();
    const auto top = makeFieldChain(state.range(0));
    SoSearchAction search;
    search.setType(SoCube::getClassTypeId());
    for (auto _ : state)
        search.apply(top.get());
    if (search.getNumVisits() < static_cast<std::uint64_t>(state.range(0)))
        state.SkipWithError("not all were visited");
}

void writeThroughFields(benchmark::State& state)
{
    SoDB::init();
    const auto top = makeFieldChain(state.range(0));
    for (auto _ : state) {
        SoOutput out;
        out.setBuffer();
        SoWriteAction(&out).apply(top.get());
    }
}

/// Argument: edits, one by one: a list in a field is filled, half of it replaced, and emptied.
void editListInField(benchmark::State& state)
{
    SoDB::init();
    const auto count = static_cast<int>(state.range(0));
    const auto row = makeRow(count);
    for (auto _ : state) {
        const SoRef<SoVRMLGroup> holder(new SoVRMLGroup);
        SoMFNode list;
        for (int i = 0; i < count; ++i)
            list.insertNode(row->getChild(i), i / 2);
        for (int i = 0; i < count; i += 2)
            list.set1Value(i, row->getChild(i));
        while (list.getNum() > 0)
            list.removeNode(list.getNum() / 2);
    }
}

enum Listening { NOBODY, AT_THE_ROOT };

/// Groups one below the other, from the top down.
template <class Group>
void chainFromTheTop(benchmark::State& state)
{
    SoDB::init();
    int calls = 0;
    for (auto _ : state) {
        const SoRef<Group> top(new Group);
        SoNodeSensor sensor([](void* data, SoSensor*) { ++*static_cast<int*>(data); }, &calls);
        sensor.setPriority(0);
        if (state.range(1) == AT_THE_ROOT)
            sensor.attach(top.get());
        Group* at = top.get();
        for (std::int64_t i = 1; i < state.range(0); ++i) {
            auto* next = new Group;
            at->addChild(next);
            at = next;
        }
        state.PauseTiming();
        sensor.detach();
        state.ResumeTiming();
    }
}

/// Argument: children. One more comes, and the box is asked for again.
void boxAfterAnAddition(benchmark::State& state)
{
    SoDB::init();
    const SoRef<SoSeparator> root(new SoSeparator);
    const auto addPart = [&root] {
        auto* part = new SoSeparator;
        part->addChild(new SoCube);
        root->addChild(part);
    };
    for (std::int64_t i = 0; i < state.range(0); ++i)
        addPart();
    SoGetBoundingBoxAction box(SbViewportRegion(100, 100));
    for (int warm = 0; warm < 3; ++warm) {
        box.apply(root.get());
        addPart();
    }
    for (auto _ : state) {
        addPart();
        box.apply(root.get());
    }
}

BENCHMARK(triggerPathAmongSiblings)->RangeMultiplier(10)->Range(1000, 1'000'000);
BENCHMARK(findWhileTheFrontIsEdited)->ArgsProduct({{1000, 100'000, 1'000'000}, {FIND, EDIT, BOTH}});
BENCHMARK(searchThroughFields)->Unit(benchmark::kMillisecond)->Arg(3000)->Arg(30'000);
BENCHMARK(writeThroughFields)->Unit(benchmark::kMillisecond)->Arg(3000)->Arg(30'000);
BENCHMARK(editListInField)->Unit(benchmark::kMillisecond)->Arg(1000)->Arg(10'000);
BENCHMARK(chainFromTheTop<SoGroup>)
    ->Unit(benchmark::kMillisecond)
    ->ArgsProduct({{1000, 10'000}, {NOBODY, AT_THE_ROOT}});
BENCHMARK(chainFromTheTop<SoVRMLGroup>)
    ->Unit(benchmark::kMillisecond)
    ->ArgsProduct({{1000, 10'000}, {NOBODY, AT_THE_ROOT}});
BENCHMARK(boxAfterAnAddition)->Arg(1000)->Arg(10'000)->Arg(100'000);

} // namespace

BENCHMARK_MAIN();
