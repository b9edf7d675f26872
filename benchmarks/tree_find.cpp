// Finding rows again among a million: searches, bookmarks, branches, and the catalogue of node
// types. The floor is a bare walk over a bare tree widget that compares the text of each row.

#include "TreeBench.h"

#include "mirabo/tree/SoMiraboAddDialog.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeFinder.h"

#include <QTreeWidgetItemIterator>

#include <limits>
#include <string>

using namespace treebench;
using mirabo::TreeFinder;

namespace {

constexpr int kRows = 1000000;

/// A scene of a million rows with a name for every second node, and the same rows in a bare widget.
struct Million {
    Million() : graph(makeGraph(kRows, Wide))
    {
        view.resize(600, 800);
        view.show();
        view.setSceneGraph(graph.get());
        settle();
        int i = 0;
        for (QTreeWidgetItemIterator at(&view); *at; ++at, ++i)
            if (i % 2)
                static_cast<SoTreeViewItem*>(*at)->getNode()->setName(
                    ("node_" + std::to_string(i)).c_str());
        settle();
    }
    /// Made on first use; never destroyed, since the application goes first.
    static Million& get()
    {
        static Million& million = *new Million;
        return million;
    }
    SoTreeViewItem* start() { return view.rootItem()->childItem(500); }

    SoRef<SoGroup> graph;
    SoMiraboTreeView view;
};

double floorMs()
{
    static const double ms = [] {
        const PlainScene scene(kRows, Wide);
        QTreeWidget widget;
        setUp(widget);
        auto* top = new PlainItem(&scene.nodes.front());
        fillPlain(top, scene.nodes.front());
        widget.addTopLevelItem(top);
        std::vector<double> times;
        for (int i = 0; i < 3; ++i)
            times.push_back(timed([&] {
                for (QTreeWidgetItemIterator at(&widget); *at; ++at)
                    if ((*at)->text(1).contains("nowhere", Qt::CaseInsensitive))
                        std::abort();
            }));
        return median(times);
    }();
    return ms;
}

/// A search that finds nothing: every row is looked at.
void search(benchmark::State& state, int kind, const char* text, unsigned options)
{
    Million& million = Million::get();
    for (auto _ : state) {
        TreeFinder finder(million.view, {kind, text, options}, million.start());
        state.SetIterationTime(timed([&] { finder.look(std::numeric_limits<int>::max()); }) / 1000);
        if (finder.found())
            state.SkipWithError("found");
    }
    state.counters["floor_ms"] = floorMs();
}

/// One slice of a search while the user types: what a key may have to wait for.
void slice(benchmark::State& state)
{
    Million& million = Million::get();
    for (auto _ : state) {
        TreeFinder finder(million.view, {TreeFinder::ByName, "nowhere", 0}, million.start());
        state.SetIterationTime(timed([&] { finder.look(20000); }) / 1000);
    }
}

/// To the next of so many bookmarks, spread evenly, and around the end.
void walkBookmarks(benchmark::State& state)
{
    Million& million = Million::get();
    const auto count = static_cast<int>(state.range(0));
    int i = 0;
    for (QTreeWidgetItemIterator at(&million.view); *at; ++at, ++i)
        if (i % (kRows / count) == 0)
            static_cast<SoTreeViewItem*>(*at)->setBookmarked(true);
    SoTreeViewItem* at = million.start();
    for (auto _ : state)
        state.SetIterationTime(
            timed([&] { at = million.view.context().bookmarks.walkOn(million.view, at, false); })
            / 1000);
    state.counters["clear_ms"] = timed([&] { million.view.context().bookmarks.clear(); });
}

/// "Explore all" from the root of the closed tree, and what telling whether it would do something
/// costs each pass.
void exploreAll(benchmark::State& state)
{
    Million& million = Million::get();
    million.view.setCurrentItem(million.view.rootItem());
    std::vector<double> asked;
    for (auto _ : state) {
        million.view.collapseAll();
        settle();
        int closed = 0;
        state.SetIterationTime(timed([&] {
                                   closed = million.view.exploreAll();
                                   settle();
                               })
                               / 1000);
        state.counters["closed"] = closed;
        asked.push_back(timed([&] { benchmark::DoNotOptimize(million.view.canExploreAll()); }));
    }
    state.counters["ask_ms"] = median(asked);
}

/// The dialog with all types, and more than 400.
void openCatalogue(benchmark::State& state)
{
    const SoType base = SoNode::getClassTypeId();
    const auto make = [](int i) {
        return SoType::createType(SoType::fromName("Cube"),
                                  ("CatalogueType" + std::to_string(i)).c_str(),
                                  []() -> void* { return new SoCube; });
    };
    for (int i = 0; SoType::getAllDerivedFrom(base).size() < 500; ++i)
        make(i);
    std::vector<double> shown;
    for (auto _ : state) {
        SoMiraboAddDialog* dialog = nullptr;
        state.SetIterationTime(timed([&] { dialog = new SoMiraboAddDialog; }) / 1000);
        shown.push_back(timed([&] {
            dialog->show();
            settle();
        }));
        delete dialog;
    }
    state.counters["show_ms"] = median(shown);
    int listed = 0;
    for (const SoType type : SoType::getAllDerivedFrom(base))
        listed += type.canCreateInstance();
    state.counters["types"] = listed;
}

void milliseconds(benchmark::internal::Benchmark* benchmark)
{
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(search, type, TreeFinder::ByType, "nowhere", 0u)->Apply(milliseconds);
BENCHMARK_CAPTURE(search, name, TreeFinder::ByName, "nowhere", 0u)->Apply(milliseconds);
BENCHMARK_CAPTURE(search, name_backward, TreeFinder::ByName, "nowhere",
                  unsigned(TreeFinder::Backward))
    ->Apply(milliseconds);
BENCHMARK_CAPTURE(search, address, TreeFinder::ByAddress, "nowhere", 0u)->Apply(milliseconds);
BENCHMARK_CAPTURE(search, id, TreeFinder::ById, "nowhere", 0u)->Apply(milliseconds);
BENCHMARK(slice)->Apply(milliseconds);
BENCHMARK(walkBookmarks)->Arg(1)->Arg(1000)->Arg(100000)->Apply(milliseconds);
BENCHMARK(exploreAll)->Apply(milliseconds);
BENCHMARK(openCatalogue)->Apply(milliseconds)->Iterations(20);

} // namespace

int main(int argc, char** argv)
{
    return run(argc, argv);
}
