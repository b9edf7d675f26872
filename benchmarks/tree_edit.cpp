// Edits through the rows of the tree, as commands: what passes until the call returns, and what the
// event loop does afterwards.

#include "TreeBench.h"

#include "mirabo/core/CommandOwner.h"
#include "mirabo/core/UndoStack.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeEditCommand.h"
#include "mirabo/tree/TreeEditor.h"

using namespace treebench;

namespace {

constexpr int kBranch = 100000;

enum Opened { RootOpen, AllOpen };

/// A tree of `count` rows, of which the first child of the root has 100,000 below it.
struct Edited {
    explicit Edited(int count)
        : root(new SoSeparator),
          branch(makeGraph(kBranch - 1, Balanced)),
          owner(stack, [this](MrbCommand* command) { return stack.add(command); })
    {
        root->addChild(branch);
        if (count > kBranch)
            root->addChild(makeGraph(count - kBranch, Balanced));
        view.resize(600, 800);
        view.show();
        view.setSceneGraph(root.get());
        editor = new mirabo::TreeEditor(&view, {stack, owner, {}, {}}); // the view's
        stack.clear();
        settle();
    }

    SoRef<SoGroup> root;
    SoGroup* branch;
    SoMiraboTreeView view;
    mirabo::UndoStack stack;
    mirabo::CommandOwner owner;
    mirabo::TreeEditor* editor;
};

/// Deletes the branch and undoes that; all_open: every row is expanded.
void deleteBranch(benchmark::State& state)
{
    Edited edited(static_cast<int>(state.range(0)));
    if (state.range(1) == AllOpen)
        edited.view.expandBelow(nullptr);
    settle();
    std::vector<double> deletions;
    std::vector<double> afterwards;
    std::vector<double> undos;
    std::vector<double> afterUndo;
    for (auto _ : state) {
        edited.view.setCurrentItem(edited.view.rootItem()->childItem(0));
        settle();
        deletions.push_back(timed([&] { edited.editor->deleteCurrent(); }));
        afterwards.push_back(timed(settle));
        undos.push_back(timed([&] { edited.stack.undo(); }));
        afterUndo.push_back(timed(settle));
        state.SetIterationTime((deletions.back() + undos.back()) / 1000);
        if (edited.view.getCurrentNode() != edited.branch)
            state.SkipWithError("the undone branch is not the current row");
    }
    state.counters["delete_ms"] = median(deletions);
    state.counters["delete_settled_ms"] = median(afterwards);
    state.counters["undo_ms"] = median(undos);
    state.counters["undo_settled_ms"] = median(afterUndo);
}

PlainItem* makePlain(const PlainScene& scene)
{
    auto* item = new PlainItem(&scene.nodes.front());
    fillPlain(item, scene.nodes.front());
    return item;
}

/// The floor of it: the same rows in a bare widget, destroyed, and made and put in again.
void bareBranch(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    const PlainScene branch(kBranch - 1, Balanced);
    const PlainScene rest(std::max(1, count - kBranch), Balanced);
    QTreeWidget widget;
    setUp(widget);
    auto* root = new PlainItem(&rest.nodes.front());
    root->addChild(makePlain(branch));
    root->addChild(makePlain(rest));
    widget.addTopLevelItem(root);
    std::vector<double> deletions;
    std::vector<double> afterwards;
    std::vector<double> undos;
    std::vector<double> afterUndo;
    for (auto _ : state) {
        widget.expandItem(root);
        if (state.range(1) == AllOpen)
            widget.expandAll();
        settle();
        deletions.push_back(timed([&] { delete root->takeChild(0); }));
        afterwards.push_back(timed(settle));
        undos.push_back(timed([&] { root->insertChild(0, makePlain(branch)); }));
        afterUndo.push_back(timed(settle));
        state.SetIterationTime((deletions.back() + undos.back()) / 1000);
    }
    state.counters["delete_ms"] = median(deletions);
    state.counters["delete_settled_ms"] = median(afterwards);
    state.counters["undo_ms"] = median(undos);
    state.counters["undo_settled_ms"] = median(afterUndo);
}

/// One of 100,000 siblings.
void deleteSibling(benchmark::State& state)
{
    Edited edited(kBranch);
    for (int i = 0; i < kBranch; ++i)
        edited.root->addChild(new SoCube);
    settle();
    std::vector<double> deletions;
    std::vector<double> undos;
    for (auto _ : state) {
        edited.view.setCurrentItem(edited.view.rootItem()->childItem(kBranch / 2));
        settle();
        deletions.push_back(timed([&] { edited.editor->deleteCurrent(); }));
        settle();
        undos.push_back(timed([&] { edited.stack.undo(); }));
        settle();
        state.SetIterationTime((deletions.back() + undos.back()) / 1000);
    }
    state.counters["delete_us"] = median(deletions) * 1000;
    state.counters["undo_us"] = median(undos) * 1000;
}

void branches(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgNames({"rows", "all_open"})
        ->ArgsProduct({{100000, 1000000}, {RootOpen, AllOpen}})
        ->Iterations(5)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

BENCHMARK(deleteBranch)->Apply(branches);
BENCHMARK(bareBranch)->Apply(branches);
BENCHMARK(deleteSibling)->Iterations(20)->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    return run(argc, argv);
}
