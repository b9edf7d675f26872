// Showing a whole scene: the tree against the same rows in a bare tree widget, in turns within one
// run. `ratio` is to rows filled in place, `detached` to rows made outside of the view.

#include "TreeBench.h"

using namespace treebench;

namespace {

struct Cost {
    std::vector<double> ms;
    std::vector<double> bytes;

    template <class F>
    void add(F f)
    {
        const double before = heapBytes();
        ms.push_back(timed(f));
        bytes.push_back(heapBytes() - before);
    }
};

void present(QTreeWidget& widget)
{
    widget.setCurrentItem(widget.topLevelItem(0));
    widget.expandItem(widget.topLevelItem(0));
    for (int column = 0; column < 5; ++column)
        widget.resizeColumnToContents(column);
    settle();
}

void addFloor(Cost& cost, const PlainScene& scene, bool detached)
{
    QTreeWidget widget;
    setUp(widget);
    settle();
    cost.add([&] {
        auto* top = new PlainItem(&scene.nodes.front());
        if (!detached)
            widget.addTopLevelItem(top);
        fillPlain(top, scene.nodes.front());
        if (detached)
            widget.addTopLevelItem(top);
        present(widget);
    });
}

void addOurs(Cost& cost, SoGroup* root, benchmark::State& state)
{
    SoMiraboTreeView view;
    view.resize(600, 800);
    view.show();
    settle();
    cost.add([&] {
        view.setSceneGraph(root);
        settle();
    });
    state.counters["rows"] = static_cast<double>(view.context().index.itemCount());
}

void compare(benchmark::State& state, SoGroup* graph, const PlainScene& scene)
{
    const SoRef<SoGroup> root(graph);
    Cost ours;
    Cost floor;
    Cost detached;
    warmMemory();
    for (auto _ : state) {
        addFloor(floor, scene, false);
        addFloor(detached, scene, true);
        addOurs(ours, root.get(), state);
        state.SetIterationTime(ours.ms.back() / 1000);
    }
    const auto count = static_cast<double>(scene.nodes.size());
    state.counters["ratio"] = median(ours.ms) / median(floor.ms);
    state.counters["detached"] = median(ours.ms) / median(detached.ms);
    state.counters["floor_ms"] = median(floor.ms);
    state.counters["B/row"] = median(ours.bytes) / count;
    state.counters["floorB/row"] = median(floor.bytes) / count;
}

void showScene(benchmark::State& state, Shape shape)
{
    const int count = static_cast<int>(state.range(0));
    compare(state, makeGraph(count, shape), PlainScene(count, shape));
}

/// A thousand rows for every node.
void showSharedNodes(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    compare(state, makeSharedGraph(count), PlainScene(count, Wide));
}

/// Taking the scene away again.
void dropScene(benchmark::State& state)
{
    const SoRef<SoGroup> root(makeGraph(static_cast<int>(state.range(0)), Balanced));
    SoMiraboTreeView view;
    view.show();
    for (auto _ : state) {
        view.setSceneGraph(root.get());
        settle();
        state.SetIterationTime(timed([&] { view.setSceneGraph(nullptr); }) / 1000);
    }
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(10000)->Arg(100000)->Arg(1000000);
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1);
}

BENCHMARK_CAPTURE(showScene, balanced, Balanced)->Apply(sizes);
BENCHMARK_CAPTURE(showScene, wide, Wide)->Apply(sizes);
BENCHMARK(showSharedNodes)->Apply(sizes);
BENCHMARK(dropScene)->Apply(sizes);

} // namespace

int main(int argc, char** argv)
{
    return run(argc, argv);
}
