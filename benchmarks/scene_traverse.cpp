// Traversal of large graphs: plain visits, search, bounds from nothing and after one change.

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <benchmark/benchmark.h>

#include <map>
#include <random>

namespace {

/// Separators in a balanced tree; each of the lowest holds a transform, a material and a cube.
struct Tree {
    Tree(int numLeaves, int fanOut) : random(1)
    {
        SoDB::init();
        root = fill(numLeaves, fanOut);
    }
    SoSeparator* fill(int numLeaves, int fanOut)
    {
        auto* group = new SoSeparator;
        if (numLeaves <= 1) {
            auto* move = new SoTransform;
            move->translation = SbVec3f(place(random), place(random), place(random));
            moves.push_back(move);
            group->addChild(move);
            group->addChild(new SoMaterial);
            group->addChild(new SoCube);
            return group;
        }
        for (int i = 0; i < fanOut; ++i) {
            const int share = numLeaves / fanOut + (i < numLeaves % fanOut);
            if (share > 0)
                group->addChild(fill(share, fanOut));
        }
        return group;
    }
    std::mt19937 random;
    std::uniform_real_distribution<float> place{-1000, 1000};
    SoRef<SoSeparator> root;
    std::vector<SoTransform*> moves;
};

/// Argument of all but two: number of leaves; a tree of 30,000 takes 133,334 visits.
Tree& tree(std::int64_t numLeaves)
{
    static auto& s_trees = *new std::map<std::int64_t, Tree>; // nodes must not outlive the toolkit
    return s_trees.try_emplace(numLeaves, static_cast<int>(numLeaves), 10).first->second;
}

void sizes(benchmark::internal::Benchmark* b)
{
    b->Arg(3'000)->Arg(30'000)->Arg(300'000)->Unit(benchmark::kMillisecond);
}

void countVisits(benchmark::State& state, const SoAction& action)
{
    state.counters["visits"] = static_cast<double>(action.getNumVisits());
    state.counters["visits/s"] = benchmark::Counter(static_cast<double>(action.getNumVisits()),
                                                    benchmark::Counter::kIsIterationInvariantRate);
}

void visitEverything(benchmark::State& state)
{
    SoCallbackAction action;
    SoNode* root = tree(state.range(0)).root.get();
    for (auto _ : state)
        action.apply(root);
    countVisits(state, action);
}
BENCHMARK(visitEverything)->Apply(sizes);

void countPrimitives(benchmark::State& state)
{
    SoGetPrimitiveCountAction action;
    SoNode* root = tree(state.range(0)).root.get();
    for (auto _ : state)
        action.apply(root);
    state.counters["triangles"] = static_cast<double>(action.getTriangleCount());
}
BENCHMARK(countPrimitives)->Apply(sizes);

void callBackBeforeEachNode(benchmark::State& state)
{
    std::size_t nodes = 0;
    SoCallbackAction action;
    action.addPreCallback(SoNode::getClassTypeId(), [&](SoCallbackAction*, const SoNode*) {
        ++nodes;
        return SoCallbackAction::CONTINUE;
    });
    SoNode* root = tree(state.range(0)).root.get();
    for (auto _ : state)
        action.apply(root);
    benchmark::DoNotOptimize(nodes);
    countVisits(state, action);
}
BENCHMARK(callBackBeforeEachNode)->Apply(sizes);

void searchInVain(benchmark::State& state)
{
    SoSearchAction action;
    action.setType(SoSphere::getClassTypeId());
    action.setSearchingAll(true);
    SoNode* root = tree(state.range(0)).root.get();
    for (auto _ : state)
        action.apply(root);
    countVisits(state, action);
}
BENCHMARK(searchInVain)->Apply(sizes);

void measureWithoutCaches(benchmark::State& state)
{
    Tree t(static_cast<int>(state.range(0)), 10);
    SoGetBoundingBoxAction action{SbViewportRegion()};
    for (auto _ : state) {
        state.PauseTiming();
        for (SoTransform* move : t.moves)
            move->touch();
        state.ResumeTiming();
        action.apply(t.root.get());
    }
    countVisits(state, action);
}
BENCHMARK(measureWithoutCaches)->Apply(sizes)->Iterations(20);

/// Number of leaves, children of each group. The change with its notification, and the measuring.
void moveOneLeafAndMeasure(benchmark::State& state)
{
    Tree t(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    SoGetBoundingBoxAction action{SbViewportRegion()};
    action.apply(t.root.get());
    for (auto _ : state) {
        SoTransform* move = t.moves[t.random() % t.moves.size()];
        move->translation = SbVec3f(t.place(t.random), 0, 0);
        action.apply(t.root.get());
    }
    state.counters["visits"] = static_cast<double>(action.getNumVisits());
}
BENCHMARK(moveOneLeafAndMeasure)
    ->ArgsProduct({{10'000, 100'000, 1'000'000}, {10}})
    ->ArgsProduct({{100'000}, {2, 4, 50, 1000, 100'000}})
    ->Unit(benchmark::kMicrosecond);

void moveOneLeaf(benchmark::State& state)
{
    Tree t(static_cast<int>(state.range(0)), 10);
    for (auto _ : state) {
        SoTransform* move = t.moves[t.random() % t.moves.size()];
        move->translation = SbVec3f(t.place(t.random), 0, 0);
    }
}
BENCHMARK(moveOneLeaf)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);

/// Number of leaves, whether boxes are known beforehand.
void pickAmongMany(benchmark::State& state)
{
    if (state.range(1)) {
        SoGetBoundingBoxAction bounds{SbViewportRegion()};
        bounds.apply(tree(state.range(0)).root.get());
    }
    SoRayPickAction action{SbViewportRegion()};
    std::mt19937 random(2);
    std::uniform_real_distribution<float> place(-500, 500);
    for (auto _ : state) {
        action.setRay(SbVec3f(place(random), place(random), 2000), SbVec3f(0, 0, -1));
        action.apply(tree(state.range(0)).root.get());
    }
    state.counters["visits"] = static_cast<double>(action.getNumVisits());
}
BENCHMARK(pickAmongMany)
    ->ArgsProduct({{3'000, 30'000, 300'000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
