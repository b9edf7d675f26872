// Edits of the graph while the tree shows it. The time is what passes inside the call that makes
// the change, which is what the host feels; `settled_us` is what the event loop does afterwards.

#include "TreeBench.h"

#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/SoTreeViewItem.h"

#include <kalmyr/vrml/SoVRMLExtraNodes.h>

#include <QPaintEvent>

using namespace treebench;

namespace {

struct PaintCounter : QObject {
    bool eventFilter(QObject*, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
    int paints = 0;
};

/// Children added one at a time; `floor` is the same in a bare tree widget.
void appendOneByOne(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    std::vector<double> ours;
    std::vector<double> alone;
    std::vector<double> floor;
    const PlainNode node;
    for (auto _ : state) {
        const SoRef<SoGroup> unwatched(new SoGroup);
        alone.push_back(timed([&] {
            for (int i = 0; i < count; ++i)
                unwatched->addChild(new SoCube);
        }));
        Watched watched(new SoGroup);
        ours.push_back(timed([&] {
            for (int i = 0; i < count; ++i)
                watched.root->addChild(new SoCube);
        }));
        state.SetIterationTime(ours.back() / 1000);
        QTreeWidget widget;
        setUp(widget);
        auto* top = new PlainItem(&node);
        widget.addTopLevelItem(top);
        widget.expandItem(top);
        settle();
        floor.push_back(timed([&] {
            for (int i = 0; i < count; ++i)
                new PlainItem(top, &node);
        }));
    }
    state.counters["us/child"] = median(ours) * 1000 / count;
    state.counters["unwatched_ms"] = median(alone);
    state.counters["floor_ms"] = median(floor);
}

enum Edit { Add, Insert, Remove, Replace };
enum Opened { RootOpen, AllOpen };

/// Makes an edit at `at`, `old` being what stands there, and takes it back outside of the time.
double editOnce(SoGroup* group, Edit edit, int at, std::vector<double>* settled = nullptr)
{
    const SoRef<SoNode> child(new SoCube);
    const SoRef<SoNode> old(group->getChild(at));
    const double ms = timed([&] {
        if (edit == Add)
            group->addChild(child.get());
        else if (edit == Insert)
            group->insertChild(child.get(), at);
        else if (edit == Remove)
            group->removeChild(at);
        else
            group->replaceChild(at, child.get());
    });
    const double after = timed([] { settle(); });
    if (settled)
        settled->push_back(after);
    if (edit == Add)
        group->removeChild(group->getNumChildren() - 1);
    else if (edit == Insert)
        group->removeChild(at);
    else if (edit == Remove)
        group->insertChild(old.get(), at);
    else
        group->replaceChild(at, old.get());
    settle();
    return ms;
}

/// The same edit of the same rows in a bare tree widget, what it has open included.
class Floor {
public:
    Floor(int rows, Shape shape, Opened opened) : m_scene(rows, shape)
    {
        setUp(m_widget);
        m_top = new PlainItem(&m_scene.nodes.front());
        fillPlain(m_top, m_scene.nodes.front());
        m_widget.addTopLevelItem(m_top);
        m_widget.expandItem(m_top);
        m_opened = opened;
        open();
    }
    double editOnce(Edit edit, int at, bool leaf)
    {
        const PlainNode& node = *m_scene.nodes.front().children[static_cast<std::size_t>(at)];
        if (leaf)
            m_top->insertChild(at, new PlainItem(&m_single));
        open();
        const double ms = timed([&] {
            if (edit == Remove || edit == Replace)
                delete m_top->takeChild(at);
            if (edit != Remove)
                m_top->insertChild(edit == Add ? m_top->childCount() : at,
                                   new PlainItem(&m_single));
        });
        settle();
        if (edit != Remove)
            delete m_top->takeChild(edit == Add ? m_top->childCount() - 1 : at);
        const bool isGone = edit == Remove || edit == Replace;
        if (isGone && !leaf)
            restore(at, node);
        else if (!isGone && leaf)
            delete m_top->takeChild(at);
        settle(); // or its layout would be counted with the next edit of the other tree
        return ms;
    }

private:
    void open()
    {
        if (m_opened == AllOpen)
            m_widget.expandAll();
        settle();
    }
    void restore(int at, const PlainNode& node)
    {
        auto* item = new PlainItem(&node);
        fillPlain(item, node);
        m_top->insertChild(at, item);
    }

    PlainScene m_scene;
    PlainNode m_single;
    QTreeWidget m_widget;
    PlainItem* m_top;
    Opened m_opened;
};

/// One edit in the middle of the root's children, in a tree of 100,000 rows. `leaf`: the child
/// there is a single node, else it has a tenth of the tree below it (or is one of 100,000).
void singleEdit(benchmark::State& state, Shape shape, Edit edit, Opened opened, bool leaf = false)
{
    constexpr int kRows = 100000;
    Watched watched(makeGraph(kRows, shape));
    const SoRef<SoGroup> alone(makeGraph(kRows, shape));
    const int middle = watched.root->getNumChildren() / 2;
    if (leaf)
        for (SoGroup* group : {watched.root.get(), alone.get()})
            group->insertChild(new SoCube, middle);
    if (opened == AllOpen)
        watched.view.expandAll();
    settle();
    Floor bare(kRows, shape, opened);
    std::vector<double> unwatched;
    std::vector<double> floor;
    std::vector<double> settled;
    for (auto _ : state) {
        state.SetIterationTime(editOnce(watched.root.get(), edit, middle, &settled) / 1000);
        unwatched.push_back(editOnce(alone.get(), edit, middle));
        floor.push_back(bare.editOnce(edit, middle, leaf));
    }
    state.counters["unwatched_us"] = median(unwatched) * 1000;
    state.counters["floor_us"] = median(floor) * 1000;
    state.counters["settled_us"] = median(settled) * 1000;
}

/// Edits of a list of nodes in a field, at its front.
void editFieldList(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        auto* root = new SoGroup;
        auto* holder = new SoVRMLMultiTexture;
        root->addChild(holder);
        Watched watched(root);
        state.SetIterationTime(timed([&] {
                                   for (int i = 0; i < count; ++i)
                                       holder->texture.insertNode(new SoCube, 0);
                                   for (int i = 0; i < count; ++i)
                                       holder->texture.removeNode(0);
                               })
                               / 1000);
    }
}

/// Children added behind, and in front of, the grey row of a disabled one.
void addBesideDisabled(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        Watched watched(makeGraph(10, Flat));
        SoNode* node = watched.root->getChild(5);
        const auto saved = mirabo::disableNode(watched.view, node);
        state.SetIterationTime(timed([&] {
                                   for (int i = 0; i < count / 2; ++i)
                                       watched.root->addChild(new SoCube);
                                   for (int i = 0; i < count / 2; ++i)
                                       watched.root->insertChild(new SoCube, 0);
                               })
                               / 1000);
    }
}

/// Taking all rows of a wide group; `floor` is the same in a bare tree widget.
void removeAll(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    std::vector<double> floor;
    const PlainScene scene(count, Flat);
    for (auto _ : state) {
        Watched watched(makeGraph(count, Flat));
        state.SetIterationTime(timed([&] { watched.root->removeAllChildren(); }) / 1000);
        settle();
        QTreeWidget widget;
        setUp(widget);
        auto* top = new PlainItem(&scene.nodes.front());
        widget.addTopLevelItem(top);
        fillPlain(top, scene.nodes.front());
        widget.expandItem(top);
        settle();
        floor.push_back(timed([&] { qDeleteAll(top->takeChildren()); }));
    }
    state.counters["floor_ms"] = median(floor);
}

/// Single removals from the front while many branches are open.
void removeOneByOneAmongOpenBranches(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        SoGroup* root = new SoGroup;
        for (int i = 0; i < count; ++i) {
            auto* pair = new SoGroup;
            pair->addChild(new SoCube);
            root->addChild(pair);
        }
        Watched watched(root);
        watched.view.expandAll();
        settle();
        state.SetIterationTime(timed([&] {
                                   for (int i = 0; i < count; ++i)
                                       root->removeChild(0);
                               })
                               / 1000);
    }
}

/// A node with many parents gets a child.
void addBelowSharedNode(benchmark::State& state)
{
    const auto parents = static_cast<int>(state.range(0));
    auto* root = new SoGroup;
    auto* shared = new SoSeparator;
    for (int i = 0; i < parents; ++i) {
        auto* parent = new SoGroup;
        parent->addChild(shared);
        root->addChild(parent);
    }
    Watched watched(root);
    for (auto _ : state) {
        state.SetIterationTime(timed([&] { shared->addChild(new SoCube); }) / 1000);
        settle();
        shared->removeAllChildren();
        settle();
    }
}

/// Field changes of a node at the bottom of a tree, with and without the tree watching.
void changeFields(benchmark::State& state)
{
    const auto changes = static_cast<int>(state.range(0));
    Watched watched(makeGraph(100000, Balanced));
    auto* material = new SoMaterial;
    static_cast<SoGroup*>(watched.root->getChild(0))->addChild(material);
    watched.view.expandAll();
    settle();
    PaintCounter counter;
    watched.view.viewport()->installEventFilter(&counter);
    const auto storm = [&] {
        for (int i = 0; i < changes; ++i)
            material->shininess.set1Value(0, static_cast<float>(i % 100) / 100);
    };
    std::vector<double> alone;
    std::vector<double> shown;
    double paints = 0;
    for (auto _ : state) {
        counter.paints = 0;
        shown.push_back(timed(storm));
        settle();
        paints += counter.paints;
        watched.view.topologyManager().attach(nullptr);
        alone.push_back(timed(storm));
        watched.view.topologyManager().attach(watched.root.get());
        settle();
        state.SetIterationTime(shown.back() / 1000);
    }
    state.counters["us/change"] = (median(shown) - median(alone)) * 1000 / changes;
    state.counters["paints"] = paints / static_cast<double>(state.iterations());
}

/// Making any row current, until it is drawn.
void selectRow(benchmark::State& state, Opened opened)
{
    Watched watched(makeGraph(1000000, Wide));
    if (opened == AllOpen)
        watched.view.expandAll();
    settle();
    unsigned random = 1;
    for (auto _ : state) {
        SoTreeViewItem* item = watched.view.rootItem();
        while (item->childCount() > 0) {
            random = random * 1664525u + 1013904223u;
            item = item->childItem(static_cast<int>((random >> 8) % unsigned(item->childCount())));
        }
        state.SetIterationTime(timed([&] {
                                   watched.view.showItem(item);
                                   settle();
                               })
                               / 1000);
    }
}

void openAll(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    const PlainScene scene(count, Balanced);
    Watched watched(makeGraph(count, Balanced));
    std::vector<double> ours;
    std::vector<double> floor;
    for (auto _ : state) {
        watched.view.collapseAll();
        settle();
        ours.push_back(timed([&] {
            watched.view.expandBelow(nullptr);
            settle();
        }));
        state.SetIterationTime(ours.back() / 1000);
        QTreeWidget widget;
        setUp(widget);
        auto* top = new PlainItem(&scene.nodes.front());
        widget.addTopLevelItem(top);
        fillPlain(top, scene.nodes.front());
        settle();
        floor.push_back(timed([&] {
            widget.expandAll();
            settle();
        }));
    }
    state.counters["ratio"] = median(ours) / median(floor);
    state.counters["floor_ms"] = median(floor);
}

void milliseconds(benchmark::internal::Benchmark* benchmark)
{
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond);
}

void microseconds(benchmark::internal::Benchmark* benchmark)
{
    benchmark->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(20);
}

BENCHMARK(appendOneByOne)->Arg(1000)->Arg(10000)->Arg(100000)->Apply(milliseconds);
BENCHMARK_CAPTURE(singleEdit, add_balanced, Balanced, Add, RootOpen)->Apply(microseconds);
BENCHMARK_CAPTURE(singleEdit, insert_balanced, Balanced, Insert, RootOpen)->Apply(microseconds);
BENCHMARK_CAPTURE(singleEdit, remove_balanced, Balanced, Remove, RootOpen, true)
    ->Apply(microseconds);
BENCHMARK_CAPTURE(singleEdit, replace_balanced, Balanced, Replace, RootOpen, true)
    ->Apply(microseconds);
BENCHMARK_CAPTURE(singleEdit, remove_branch, Balanced, Remove, RootOpen)->Apply(microseconds);
BENCHMARK_CAPTURE(singleEdit, add_flat, Flat, Add, RootOpen)->Apply(microseconds);
BENCHMARK_CAPTURE(singleEdit, insert_flat, Flat, Insert, RootOpen)->Apply(microseconds);
BENCHMARK_CAPTURE(singleEdit, remove_flat, Flat, Remove, RootOpen)->Apply(microseconds);
BENCHMARK_CAPTURE(singleEdit, replace_flat, Flat, Replace, RootOpen)->Apply(microseconds);
BENCHMARK_CAPTURE(singleEdit, remove_all_open, Balanced, Remove, AllOpen)->Apply(microseconds);
BENCHMARK_CAPTURE(singleEdit, insert_all_open, Balanced, Insert, AllOpen)->Apply(microseconds);
BENCHMARK(editFieldList)->Arg(1000)->Arg(10000)->Arg(40000)->Apply(milliseconds);
BENCHMARK(addBesideDisabled)->Arg(1000)->Arg(10000)->Arg(40000)->Apply(milliseconds);
BENCHMARK(removeAll)->Arg(100000)->Apply(milliseconds);
BENCHMARK(removeOneByOneAmongOpenBranches)->Arg(1000)->Arg(4000)->Apply(milliseconds);
BENCHMARK(addBelowSharedNode)->Arg(1000)->Arg(10000)->Apply(milliseconds);
BENCHMARK(changeFields)->Arg(100000)->Apply(milliseconds);
BENCHMARK_CAPTURE(selectRow, root_open, RootOpen)->Apply(milliseconds);
BENCHMARK_CAPTURE(selectRow, all_open, AllOpen)->Apply(milliseconds);
BENCHMARK(openAll)->Arg(10000)->Arg(100000)->Apply(milliseconds);

} // namespace

int main(int argc, char** argv)
{
    return run(argc, argv);
}
