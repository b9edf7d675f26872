// Writing U3D models: a mesh of its own, growing, and one mesh that occurs many times.
#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoShapeHints.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/plotrel/SoToU3DAction.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoIndexedFaceSet.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

/// A hill of about that many triangles.
SoRef<SoSeparator> hill(std::int64_t triangles, bool smooth)
{
    const auto side = static_cast<int>(std::lround(std::sqrt(static_cast<double>(triangles) / 2)));
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* hints = new SoShapeHints;
    hints->creaseAngle = smooth ? 3.0f : 0.0f;
    root->addChild(hints);
    std::vector<SbVec3f> points;
    std::vector<std::int32_t> indices;
    for (int y = 0; y <= side; ++y) {
        for (int x = 0; x <= side; ++x) {
            const float u = static_cast<float>(x) / static_cast<float>(side);
            const float v = static_cast<float>(y) / static_cast<float>(side);
            points.emplace_back(u, v, 0.2f * std::sin(9 * u) * std::cos(7 * v));
            const int at = y * (side + 1) + x;
            if (x < side && y < side)
                indices.insert(indices.end(), {at, at + 1, at + side + 2, -1, at, at + side + 2,
                                               at + side + 1, -1});
        }
    }
    auto* coordinates = new SoCoordinate3;
    coordinates->point.setValues(0, points);
    root->addChild(coordinates);
    auto* faces = new SoIndexedFaceSet;
    faces->coordIndex.setValues(0, indices);
    root->addChild(faces);
    return root;
}

SoRef<SoSeparator> cubes(std::int64_t count)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* cube = new SoCube;
    for (std::int64_t i = 0; i < count; ++i) {
        auto* place = new SoSeparator;
        auto* step = new SoTranslation;
        step->translation = SbVec3f(static_cast<float>(3 * i), 0, 0);
        place->addChild(step);
        place->addChild(cube);
        root->addChild(place);
    }
    return root;
}

void write(benchmark::State& state, const SoRef<SoSeparator>& root, double items, bool compressed)
{
    SoToU3DAction action;
    action.setCompression(compressed);
    std::string bytes;
    action.writeToMemory(root.get(), bytes); // geometry is made once, as for the screen
    for (auto _ : state)
        benchmark::DoNotOptimize(action.writeToMemory(root.get(), bytes));
    state.counters["bytes"] = static_cast<double>(bytes.size()) / items;
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
    state.SetComplexityN(state.range(0));
}

/// Bytes and items are of triangles.
void mesh(benchmark::State& state)
{
    write(state, hill(state.range(0), true), static_cast<double>(state.range(0)), false);
}

void meshFlat(benchmark::State& state)
{
    write(state, hill(state.range(0), false), static_cast<double>(state.range(0)), false);
}

void meshCompressed(benchmark::State& state)
{
    write(state, hill(state.range(0), true), static_cast<double>(state.range(0)), true);
}

/// Bytes and items are of occurrences.
void occurrences(benchmark::State& state)
{
    write(state, cubes(state.range(0)), static_cast<double>(state.range(0)), false);
}

void atGrowingSizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->RangeMultiplier(10)
        ->Range(10'000, 1'000'000)
        ->Unit(benchmark::kMillisecond)
        ->Complexity();
}

} // namespace

BENCHMARK(mesh)->Apply(atGrowingSizes);
BENCHMARK(meshFlat)->Apply(atGrowingSizes);
BENCHMARK(meshCompressed)->Apply(atGrowingSizes);
BENCHMARK(occurrences)
    ->RangeMultiplier(10)
    ->Range(1'000, 100'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

int main(int argc, char** argv)
{
    SoDB::init();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
