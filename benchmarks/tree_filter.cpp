// The category filter of the tree: turning it on and off against the time that a bare tree widget
// needs to be filled with the same rows, and what edits cost while it is on.

#include "TreeBench.h"

#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeFinder.h"

#include <kalmyr/base/SbTime.h>

using namespace treebench;

namespace {

using mirabo::NodeCategory;

int without(NodeCategory category)
{
    return mirabo::kAllCategories & ~static_cast<int>(category);
}

/// Milliseconds until the rows of a filter are shown.
double filter(Watched& tree, int mask)
{
    return timed([&] {
        tree.view.setFilter(mask);
        settle();
    });
}

enum Opened { RootOpen, AllOpen };

/// Milliseconds for a bare widget to be filled with rows that were made outside of it, and to open
/// as many.
double fillFloor(const PlainScene& scene, Opened opened)
{
    QTreeWidget widget;
    setUp(widget);
    settle();
    return timed([&] {
        auto* top = new PlainItem(&scene.nodes.front());
        fillPlain(top, scene.nodes.front());
        widget.addTopLevelItem(top);
        if (opened == AllOpen)
            widget.expandAll();
        else
            widget.expandItem(top);
        settle();
    });
}

/// Hides the cubes, a third of the leaves, and shows them again.
void hideAndShow(benchmark::State& state, Shape shape, Opened opened)
{
    const int count = static_cast<int>(state.range(0));
    const PlainScene scene(count, shape);
    std::vector<double> off;
    std::vector<double> on;
    std::vector<double> floor;
    Watched watched(makeGraph(count, shape));
    if (opened == AllOpen)
        watched.view.expandAll();
    settle();
    warmMemory();
    for (auto _ : state) {
        floor.push_back(fillFloor(scene, opened));
        on.push_back(filter(watched, without(NodeCategory::Shape)));
        off.push_back(filter(watched, mirabo::kAllCategories));
        state.SetIterationTime(on.back() / 1000);
    }
    state.counters["off_ms"] = median(off);
    state.counters["floor_ms"] = median(floor);
    state.counters["ratio"] = std::max(median(on), median(off)) / median(floor);
}

/// Taking single children among `count` siblings out and in while a third of them is hidden.
void edit(benchmark::State& state, int mask, bool hidden)
{
    const int count = static_cast<int>(state.range(0));
    Watched watched(makeGraph(count, Flat));
    filter(watched, mask);
    SoGroup* root = watched.root.get();
    int at = count / 2;
    while ((at % 3 == 1) != hidden) // see makeNode(); children count from 0, nodes from 1
        ++at;
    std::vector<double> remove;
    std::vector<double> insert;
    std::vector<double> after;
    const auto inside = [](auto f) { // short enough to go by the clock
        const SbTime start = SbTime::monotonic();
        f();
        return (SbTime::monotonic() - start).getValue() * 1e6;
    };
    for (auto _ : state) {
        const SoRef<SoNode> child(root->getChild(at));
        remove.push_back(inside([&] { root->removeChild(at); }));
        after.push_back(timed([] { settle(); }));
        insert.push_back(inside([&] { root->insertChild(child.get(), at); }));
        settle();
        state.SetIterationTime(insert.back() / 1e6);
    }
    state.counters["insert_us"] = median(insert);
    state.counters["remove_us"] = median(remove);
    state.counters["settled_ms"] = median(after);
}

/// A search for what is not there walks through hidden rows as well.
void find(benchmark::State& state, int mask)
{
    Watched watched(makeGraph(static_cast<int>(state.range(0)), Balanced));
    filter(watched, mask);
    for (auto _ : state) {
        mirabo::TreeFinder finder(watched.view, {mirabo::TreeFinder::ByName, "nowhere", 0},
                                  watched.view.rootItem());
        state.SetIterationTime(timed([&] { finder.look(INT_MAX); }) / 1000);
    }
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(100000)->Arg(1000000);
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(0.5);
}

void siblings(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(100000)->Iterations(200)->UseManualTime()->Unit(benchmark::kMicrosecond);
}

BENCHMARK_CAPTURE(hideAndShow, balanced, Balanced, RootOpen)->Apply(sizes);
BENCHMARK_CAPTURE(hideAndShow, balanced_all_open, Balanced, AllOpen)->Apply(sizes);
BENCHMARK_CAPTURE(hideAndShow, wide, Wide, RootOpen)->Apply(sizes);
BENCHMARK_CAPTURE(hideAndShow, flat, Flat, RootOpen)->Apply(sizes);
BENCHMARK_CAPTURE(edit, unfiltered, mirabo::kAllCategories, false)->Apply(siblings);
BENCHMARK_CAPTURE(edit, shown_among_hidden, without(NodeCategory::Shape), false)->Apply(siblings);
BENCHMARK_CAPTURE(edit, hidden, without(NodeCategory::Shape), true)->Apply(siblings);
BENCHMARK_CAPTURE(find, unfiltered, mirabo::kAllCategories)->Apply(sizes);
BENCHMARK_CAPTURE(find, filtered, without(NodeCategory::Shape))->Apply(sizes);

} // namespace

int main(int argc, char** argv)
{
    return run(argc, argv);
}
