// What a change costs on its way up.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/shapes/SoCube.h>

#include <cstdint>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

/// A cube below a number of separators, one in the other.
SoRef<SoSeparator> makeLine(int levels, SoCube* leaf)
{
    SoRef<SoSeparator> top(new SoSeparator);
    top->addChild(leaf);
    for (int i = 1; i < levels; ++i) {
        SoRef<SoSeparator> above(new SoSeparator);
        above->addChild(top.get());
        top = above;
    }
    return top;
}

void change(benchmark::State& state, SoCube* leaf, double levels)
{
    float value = 0;
    for (auto _ : state)
        leaf->width.setValue(value += 1);
    state.counters["ns_per_level"] = benchmark::Counter(
        levels * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// Argument: levels above the leaf. No sensor.
void leafBelowLevels(benchmark::State& state)
{
    SoDB::init();
    auto* leaf = new SoCube;
    const auto root = makeLine(static_cast<int>(state.range(0)), leaf);
    change(state, leaf, static_cast<double>(state.range(0)));
}

void withImmediateSensor(benchmark::State& state)
{
    SoDB::init();
    auto* leaf = new SoCube;
    const auto root = makeLine(static_cast<int>(state.range(0)), leaf);
    int calls = 0;
    SoNodeSensor sensor([](void* data, SoSensor*) { ++*static_cast<int*>(data); }, &calls);
    sensor.setPriority(0);
    sensor.setTriggerPathFlag(state.range(1) != 0);
    sensor.attach(root.get());
    change(state, leaf, static_cast<double>(state.range(0)));
    if (calls == 0)
        state.SkipWithError("the sensor was not called");
}

/// Argument: children that one callback of an immediate sensor adds below the node that it watches;
/// each is reported to it.
void addedInsideCallback(benchmark::State& state)
{
    SoDB::init();
    struct Run {
        SoRef<SoSeparator> root;
        std::int64_t left;
        std::int64_t calls;
    } run;
    SoNodeSensor sensor(
        [](void* data, SoSensor*) {
            auto* r = static_cast<Run*>(data);
            ++r->calls;
            for (; r->left > 0; --r->left)
                r->root->addChild(new SoSeparator);
        },
        &run);
    sensor.setPriority(0);
    for (auto _ : state) {
        run = {SoRef<SoSeparator>(new SoSeparator), state.range(0), 0};
        sensor.attach(run.root.get());
        run.root->touch();
        if (run.calls != state.range(0) + 1)
            state.SkipWithError("not every child was reported");
        sensor.detach();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Argument: sensors of one priority that are taken out of the delay queue again, after another
/// priority was set.
void unscheduledAfterPriority(benchmark::State& state)
{
    SoDB::init();
    std::vector<std::unique_ptr<SoOneShotSensor>> sensors;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        sensors.push_back(std::make_unique<SoOneShotSensor>());
    for (auto _ : state) {
        for (const auto& sensor : sensors) {
            sensor->setPriority(100);
            sensor->schedule();
        }
        for (const auto& sensor : sensors) {
            sensor->setPriority(50);
            sensor->unschedule();
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Argument: occurrences. All of them are through ten groups below one root, a tenth of the
/// occurrences each: the ancestors stay eleven.
void sharedByFewAncestors(benchmark::State& state)
{
    SoDB::init();
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* leaf = new SoCube;
    for (int g = 0; g < 10; ++g) {
        auto* group = new SoSeparator;
        for (std::int64_t i = 0; i < state.range(0) / 10; ++i)
            group->addChild(leaf);
        root->addChild(group);
    }
    change(state, leaf, 11);
}

/// Argument: distinct parents, so the cost grows with it.
void sharedByManyParents(benchmark::State& state)
{
    SoDB::init();
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* leaf = new SoCube;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        auto* group = new SoSeparator;
        group->addChild(leaf);
        root->addChild(group);
    }
    change(state, leaf, static_cast<double>(state.range(0)) + 1);
}

/// Argument: rungs of a ladder, each node held twice by the one above: 2^n ways up.
void ladder(benchmark::State& state)
{
    SoDB::init();
    auto* leaf = new SoCube;
    SoRef<SoNode> below(leaf);
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        const SoRef<SoSeparator> left(new SoSeparator), right(new SoSeparator),
            top(new SoSeparator);
        left->addChild(below.get());
        right->addChild(below.get());
        top->addChild(left.get());
        top->addChild(right.get());
        below = top.get();
    }
    change(state, leaf, 3.0 * static_cast<double>(state.range(0)));
}

BENCHMARK(leafBelowLevels)->Arg(5)->Arg(20)->Arg(80);
BENCHMARK(withImmediateSensor)->Args({20, 0})->Args({20, 1});
BENCHMARK(addedInsideCallback)
    ->Arg(10'000)
    ->Arg(40'000)
    ->Arg(160'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(unscheduledAfterPriority)->Arg(1'000)->Arg(16'000);
BENCHMARK(sharedByFewAncestors)->Arg(100)->Arg(1'000)->Arg(10'000);
BENCHMARK(sharedByManyParents)->Arg(100)->Arg(1'000)->Arg(10'000);
BENCHMARK(ladder)->Arg(5)->Arg(20)->Arg(80);

} // namespace

BENCHMARK_MAIN();
