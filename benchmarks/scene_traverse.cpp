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

/// 133,334 visits.
Tree& tree()
{
    static Tree s_tree(30000, 10);
    return s_tree;
}

void visitEverything(benchmark::State& state)
{
    SoCallbackAction action;
    for (auto _ : state)
        action.apply(tree().root.get());
    state.counters["visits"] = static_cast<double>(action.getNumVisits());
}
BENCHMARK(visitEverything)->Unit(benchmark::kMillisecond);

void countPrimitives(benchmark::State& state)
{
    SoGetPrimitiveCountAction action;
    for (auto _ : state)
        action.apply(tree().root.get());
    state.counters["triangles"] = static_cast<double>(action.getTriangleCount());
}
BENCHMARK(countPrimitives)->Unit(benchmark::kMillisecond);

void callBackBeforeEachNode(benchmark::State& state)
{
    std::size_t nodes = 0;
    SoCallbackAction action;
    action.addPreCallback(SoNode::getClassTypeId(), [&](SoCallbackAction*, const SoNode*) {
        ++nodes;
        return SoCallbackAction::CONTINUE;
    });
    for (auto _ : state)
        action.apply(tree().root.get());
    benchmark::DoNotOptimize(nodes);
}
BENCHMARK(callBackBeforeEachNode)->Unit(benchmark::kMillisecond);

void searchInVain(benchmark::State& state)
{
    SoSearchAction action;
    action.setType(SoSphere::getClassTypeId());
    action.setSearchingAll(true);
    for (auto _ : state)
        action.apply(tree().root.get());
}
BENCHMARK(searchInVain)->Unit(benchmark::kMillisecond);

void measureWithoutCaches(benchmark::State& state)
{
    static Tree s_tree(30000, 10);
    SoGetBoundingBoxAction action{SbViewportRegion()};
    for (auto _ : state) {
        state.PauseTiming();
        for (SoTransform* move : s_tree.moves)
            move->touch();
        state.ResumeTiming();
        action.apply(s_tree.root.get());
    }
}
BENCHMARK(measureWithoutCaches)->Unit(benchmark::kMillisecond)->Iterations(20);

/// The change with its notification, and the measuring.
void moveOneLeafAndMeasure(benchmark::State& state)
{
    Tree t(100000, static_cast<int>(state.range(0)));
    SoGetBoundingBoxAction action{SbViewportRegion()};
    action.apply(t.root.get());
    for (auto _ : state) {
        SoTransform* move = t.moves[t.random() % t.moves.size()];
        move->translation = SbVec3f(t.place(t.random), 0, 0);
        action.apply(t.root.get());
    }
    state.counters["visits"] = static_cast<double>(action.getNumVisits());
}
BENCHMARK(moveOneLeafAndMeasure)->Arg(2)->Arg(4)->Arg(10)->Arg(50)->Unit(benchmark::kMicrosecond);

void moveOneLeaf(benchmark::State& state)
{
    Tree t(100000, 10);
    for (auto _ : state) {
        SoTransform* move = t.moves[t.random() % t.moves.size()];
        move->translation = SbVec3f(t.place(t.random), 0, 0);
    }
}
BENCHMARK(moveOneLeaf)->Unit(benchmark::kMicrosecond);

void pickAmongMany(benchmark::State& state)
{
    if (state.range(0)) {
        SoGetBoundingBoxAction bounds{SbViewportRegion()};
        bounds.apply(tree().root.get());
    }
    SoRayPickAction action{SbViewportRegion()};
    std::mt19937 random(2);
    std::uniform_real_distribution<float> place(-500, 500);
    for (auto _ : state) {
        action.setRay(SbVec3f(place(random), place(random), 2000), SbVec3f(0, 0, -1));
        action.apply(tree().root.get());
    }
    state.counters["visits"] = static_cast<double>(action.getNumVisits());
}
BENCHMARK(pickAmongMany)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
