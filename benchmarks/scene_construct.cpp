// Making and releasing small nodes: time and memory of a mix of separator, transform, material and
// cube, beside what the allocator alone takes for blocks of the same sizes.

#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>

#include <benchmark/benchmark.h>

#include <malloc.h>

namespace {

constexpr int kGroups = 25000; // four nodes each

SoSeparator* makeScene()
{
    auto* root = new SoSeparator(kGroups);
    for (int i = 0; i < kGroups; ++i) {
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

void constructMix(benchmark::State& state)
{
    SoDB::init();
    double bytes = 0;
    for (auto _ : state) {
        const std::size_t before = mallinfo2().uordblks;
        SoSeparator* root = makeScene();
        root->ref();
        bytes = static_cast<double>(mallinfo2().uordblks - before);
        benchmark::DoNotOptimize(root);
        state.PauseTiming();
        root->unref();
        state.ResumeTiming();
    }
    state.counters["bytes/node"] = bytes / (4.0 * kGroups);
    state.counters["separator"] = sizeof(SoSeparator);
    state.counters["transform"] = sizeof(SoTransform);
    state.counters["material"] = sizeof(SoMaterial);
    state.counters["cube"] = sizeof(SoCube);
}

void releaseMix(benchmark::State& state)
{
    SoDB::init();
    for (auto _ : state) {
        state.PauseTiming();
        SoSeparator* root = makeScene();
        root->ref();
        state.ResumeTiming();
        root->unref();
    }
}

void allocatorFloor(benchmark::State& state)
{
    const std::size_t sizes[] = {sizeof(SoSeparator), sizeof(SoTransform), sizeof(SoMaterial),
                                 sizeof(SoCube)};
    std::vector<void*> blocks(4 * kGroups);
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

} // namespace

BENCHMARK(constructMix)->Unit(benchmark::kMillisecond);
BENCHMARK(releaseMix)->Unit(benchmark::kMillisecond);
BENCHMARK(allocatorFloor)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
