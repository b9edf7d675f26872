// Making and releasing small nodes: time and memory of a mix of separator, transform, material and
// cube, beside what the allocator alone takes for blocks of the same sizes.

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodekits/SoSceneKit.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <benchmark/benchmark.h>

#include <malloc.h>

namespace {

/// Four nodes in each group.
SoSeparator* makeScene(int groups)
{
    auto* root = new SoSeparator(groups);
    for (int i = 0; i < groups; ++i) {
        auto* part = new SoSeparator;
        auto* transform = new SoTransform;
        transform->translation.setValue(static_cast<float>(i), 0, 0);
        auto* material = new SoMaterial;
        material->diffuseColor.setValue(1, 0, 0);
        part->addChild(transform);
        part->addChild(material);
        part->addChild(new SoCube);
        root->addChild(part);
    }
    return root;
}

/// Argument of all: number of groups.
void constructMix(benchmark::State& state)
{
    SoDB::init();
    const auto groups = static_cast<int>(state.range(0));
    SoRef<SoSeparator>(makeScene(groups))
        .reset(); // memory that was idle for long costs more at its first touch
    double bytes = 0;
    for (auto _ : state) {
        const std::size_t before = mallinfo2().uordblks;
        SoSeparator* root = makeScene(groups);
        root->ref();
        bytes = static_cast<double>(mallinfo2().uordblks - before);
        benchmark::DoNotOptimize(root);
        state.PauseTiming();
        root->unref();
        state.ResumeTiming();
    }
    state.counters["bytes/node"] = bytes / (4.0 * groups);
    state.counters["nodes/s"] = benchmark::Counter(
        4.0 * groups * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["separator"] = sizeof(SoSeparator);
    state.counters["transform"] = sizeof(SoTransform);
    state.counters["material"] = sizeof(SoMaterial);
    state.counters["cube"] = sizeof(SoCube);
}

void releaseMix(benchmark::State& state)
{
    SoDB::init();
    const auto groups = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        SoSeparator* root = makeScene(groups);
        root->ref();
        state.ResumeTiming();
        root->unref();
    }
}

void allocatorFloor(benchmark::State& state)
{
    const std::size_t sizes[] = {sizeof(SoSeparator), sizeof(SoTransform), sizeof(SoMaterial),
                                 sizeof(SoCube)};
    std::vector<void*> blocks(4 * static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            blocks[i] = std::calloc(1, sizes[i % 4]);
            benchmark::DoNotOptimize(blocks[i]);
        }
        state.PauseTiming();
        for (void* block : blocks)
            std::free(block);
        state.ResumeTiming();
    }
}

void copyMix(benchmark::State& state)
{
    SoDB::init();
    const auto groups = static_cast<int>(state.range(0));
    const SoRef<SoSeparator> root(makeScene(groups));
    for (auto _ : state) {
        SoNode* copy = root->copy();
        copy->ref();
        state.PauseTiming();
        copy->unref();
        state.ResumeTiming();
    }
}

/// Kits with a transform and a material, in one list; each is asked for its name there.
void constructKits(benchmark::State& state)
{
    SoDB::init();
    const auto count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        SoRef<SoSceneKit> scene(new SoSceneKit);
        auto* list = static_cast<SoNodeKitListPart*>(scene->getPart("childList"));
        for (int i = 0; i < count; ++i) {
            auto* kit = new SoShapeKit;
            kit->getPart("transform");
            kit->getPart("appearance.material");
            list->addChild(kit);
        }
        for (int i = 0; i < count; ++i)
            benchmark::DoNotOptimize(scene->getPartString(list->getChild(i)));
        state.PauseTiming();
        scene = nullptr;
        state.ResumeTiming();
    }
    state.counters["kits/s"] =
        benchmark::Counter(static_cast<double>(count) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate);
}

/// Every place of a node found, and held while one child after the other is taken out.
void editUnderHeldPaths(benchmark::State& state)
{
    SoDB::init();
    const auto count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        const SoRef<SoSeparator> root(makeScene(count));
        SoSearchAction search;
        search.setType(SoCube::getClassTypeId());
        search.setInterest(SoSearchAction::ALL);
        state.ResumeTiming();
        search.apply(root.get());
        for (int i = 0; i < count; ++i)
            static_cast<SoGroup*>(root->getChild(i))->removeChild(0);
    }
}

enum Order { TOP_DOWN, BOTTOM_UP };

/// Groups one inside the other. Each edit is told to all groups above it: from the top down that is
/// all that exist.
template <class Group>
void constructChain(benchmark::State& state)
{
    SoDB::init();
    for (auto _ : state) {
        SoRef<Group> at(new Group);
        SoRef<Group> top = at;
        for (std::int64_t i = 1; i < state.range(0); ++i) {
            const SoRef<Group> next(new Group);
            if (state.range(1) == TOP_DOWN) {
                at->addChild(next.get());
            } else {
                next->addChild(at.get());
                top = next;
            }
            at = next;
        }
        state.PauseTiming();
        at.reset();
        top.reset();
        state.ResumeTiming();
    }
}

/// A node with many parents loses them in the order in which it got them.
void shareAndPart(benchmark::State& state)
{
    SoDB::init();
    const SoRef<SoMaterial> shared(new SoMaterial);
    for (auto _ : state) {
        std::vector<SoRef<SoSeparator>> parents(static_cast<std::size_t>(state.range(0)));
        for (auto& parent : parents) {
            parent = new SoSeparator;
            parent->addChild(shared.get());
        }
        for (auto& parent : parents)
            parent.reset();
    }
}

} // namespace

BENCHMARK(constructChain<SoGroup>)
    ->Unit(benchmark::kMillisecond)
    ->ArgsProduct({{1000, 3000, 10000}, {TOP_DOWN, BOTTOM_UP}});
BENCHMARK(constructChain<SoVRMLGroup>)
    ->Unit(benchmark::kMillisecond)
    ->ArgsProduct({{1000, 3000, 10000}, {TOP_DOWN, BOTTOM_UP}});
BENCHMARK(shareAndPart)->Unit(benchmark::kMillisecond)->Arg(10000)->Arg(100000)->Arg(1000000);
BENCHMARK(constructMix)->Unit(benchmark::kMillisecond)->Arg(2500)->Arg(25000)->Arg(250000);
BENCHMARK(releaseMix)->Unit(benchmark::kMillisecond)->Arg(2500)->Arg(25000)->Arg(250000);
BENCHMARK(copyMix)->Unit(benchmark::kMillisecond)->Arg(2500)->Arg(25000)->Arg(250000);
BENCHMARK(allocatorFloor)->Unit(benchmark::kMillisecond)->Arg(2500)->Arg(25000)->Arg(250000);
BENCHMARK(constructKits)->Unit(benchmark::kMillisecond)->Arg(1000)->Arg(10000)->Arg(50000);
BENCHMARK(editUnderHeldPaths)->Unit(benchmark::kMillisecond)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK_MAIN();
