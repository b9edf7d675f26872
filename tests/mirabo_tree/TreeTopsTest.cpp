// Further top-level rows: the other children of a container that holds the root.

#include "TreeEditScene.h"

#include "mirabo/tree/MovePlan.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/RememberedRows.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/TreeFinder.h"

#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <QSignalSpy>

#include <climits>
#include <thread>

using mirabo::MoveStep;
using mirabo::TreeFinder;

namespace {

/// container
///   root (cube)
///   pasted (material, sphere)
class TreeTops : public TreeTest {
protected:
    TreeTops() : container(new SoSeparator)
    {
        root->addChild(cube = new SoCube);
        pasted->addChild(material = new SoMaterial);
        pasted->addChild(sphere = new SoSphere);
        container->addChild(root.get());
        container->addChild(pasted.get());
        view.setContainer(container.get());
        pass();
    }

    SoTreeViewItem* top(int at) const { return asRow(view.topLevelItem(at)); }
    /// The nodes of the top-level rows, when these are in order.
    std::vector<const SoNode*> tops() const
    {
        EXPECT_EQ(check(), "");
        std::vector<const SoNode*> nodes;
        for (int i = 0; i < view.topLevelItemCount(); ++i)
            nodes.push_back(top(i)->getNode());
        return nodes;
    }
    using Nodes = std::vector<const SoNode*>;

    static void elsewhere(const std::function<void()>& edit)
    {
        std::thread([&] {
            const SoWriteLock lock;
            edit();
        }).join();
    }

    SoRef<SoSeparator> container;
    SoRef<SoSeparator> pasted{new SoSeparator};
    SoCube* cube;
    SoMaterial* material;
    SoSphere* sphere;
};

} // namespace

TEST_F(TreeTops, FollowTheContainersList)
{
    QSignalSpy roots(&view, &SoMiraboTreeView::rootChanged);
    QSignalSpy changes(&view, &SoMiraboTreeView::outsideStructureChange);
    EXPECT_EQ(tops(), (Nodes{root.get(), pasted.get()}));
    EXPECT_EQ(view.getContainer(), container.get());
    EXPECT_EQ(rowsOf(container.get()), 0);
    EXPECT_EQ(top(1)->childIndexValue(), 1);

    auto* third = new SoSeparator;
    container->addChild(third);
    EXPECT_EQ(changes.size(), 1);
    container->insertChild(pasted.get(), 1); // a second row for the same node
    container->insertChild(root.get(), 3);   // the root occurs once more
    EXPECT_EQ(tops(), (Nodes{root.get(), pasted.get(), pasted.get(), root.get(), third}));
    EXPECT_EQ(view.rootItem(), top(0));
    third->addChild(cube); // below one of them, shared with the root
    root->addChild(pasted.get());
    EXPECT_EQ(rowsOf(sphere), 4);
    EXPECT_EQ(rowsOf(cube), 3);
    container->replaceChild(1, new SoCube);
    container->removeChild(3);
    container->setChildren({root.get(), third, pasted.get()});
    EXPECT_EQ(tops(), (Nodes{root.get(), third, pasted.get()}));
    container->insertChild(new SoCube, 0);
    EXPECT_EQ(view.rootItem(), top(1));
    container->removeChild(0);
    EXPECT_EQ(roots.size(), 0);

    view.setContainer(nullptr);
    EXPECT_EQ(tops(), Nodes{root.get()});
    container->removeChild(1);
    root->removeChild(1);
    EXPECT_EQ(tops(), Nodes{root.get()});
    view.setContainer(container.get());
    EXPECT_EQ(tops(), (Nodes{root.get(), pasted.get()}));
}

TEST_F(TreeTops, GoWithTheRootAndComeWithTheNextOne)
{
    QSignalSpy roots(&view, &SoMiraboTreeView::rootChanged);
    const SoRef<SoGroup> next(new SoGroup);
    container->replaceChild(0, next.get());
    EXPECT_EQ(view.getRoot(), next.get());
    EXPECT_EQ(tops(), (Nodes{next.get(), pasted.get()}));
    EXPECT_TRUE(view.rootItem() == view.currentItem());
    container->removeChild(0);
    EXPECT_EQ(view.topLevelItemCount(), 0);
    EXPECT_EQ(view.getContainer(), nullptr);
    container->addChild(root.get());
    EXPECT_EQ(view.getRoot(), root.get());
    EXPECT_EQ(tops(), (Nodes{pasted.get(), root.get()}));
    EXPECT_EQ(roots.size(), 3);

    // A root that the container does not hold stands alone.
    view.setSceneGraph(next.get());
    container->addChild(new SoCube);
    next->addChild(new SoCube);
    EXPECT_EQ(tops(), Nodes{next.get()});
    view.setSceneGraph(root.get());
    EXPECT_EQ(view.topLevelItemCount(), 3);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTops, FollowOtherThreads)
{
    QSignalSpy changes(&view, &SoMiraboTreeView::outsideStructureChange);
    const SoRef<SoSeparator> third(new SoSeparator);
    const auto edit = [&](const std::function<void()>& change) {
        elsewhere(change);
        view.grab();
        pass();
        for (int i = 0; view.context().changedElsewhere && i < 10000; ++i)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    };
    edit([&] { container->insertChild(third.get(), 1); });
    EXPECT_EQ(tops(), (Nodes{root.get(), third.get(), pasted.get()}));
    edit([&] { third->addChild(new SoCube); });
    EXPECT_EQ(top(1)->rowCount(), 1);
    edit([&] {
        container->enableNotify(false);
        container->removeChild(1);
        container->enableNotify(true);
        pasted->addChild(new SoCube); // tells of it
    });
    EXPECT_EQ(tops(), (Nodes{root.get(), pasted.get()}));
    EXPECT_EQ(top(1)->rowCount(), 3);
    EXPECT_EQ(changes.size(), 3);
    edit([&] { container->removeChild(0); });
    EXPECT_EQ(view.topLevelItemCount(), 0); // what is left is no scene by itself
    edit([&] { container->insertChild(root.get(), 0); });
    EXPECT_EQ(tops(), (Nodes{root.get(), pasted.get()}));
}

TEST_F(TreeTops, AreFoundAgainAfterSilence)
{
    view.show();
    const auto inSilence = [this](const std::function<void()>& edit) {
        container->enableNotify(false);
        edit();
        container->enableNotify(true);
    };
    SoNode* dying = new SoSeparator;
    container->addChild(dying);
    inSilence([&] { container->removeChild(2); }); // and the node dies
    EXPECT_TRUE(top(2)->isDead());
    view.grab();
    EXPECT_EQ(tops(), (Nodes{root.get(), pasted.get()}));
    inSilence([&] {
        container->removeChild(1);
        container->addChild(new SoCube);
    });
    EXPECT_FALSE(view.verify(row(sphere)));
    EXPECT_EQ(tops().size(), 2u);
    inSilence([&] { container->addChild(pasted.get()); });
    cube->width = 3; // the next notification that passes
    EXPECT_EQ(tops().size(), 3u);
    inSilence([&] { container->replaceChild(0, pasted.get()); });
    container->touch();
    EXPECT_EQ(view.topLevelItemCount(), 0);
}

TEST_F(TreeTops, EndWithTheirContainer)
{
    const auto end = [this](bool isElsewhere, const std::function<void()>& how) {
        isElsewhere ? elsewhere(how) : how();
        view.grab();
        pass();
        for (int i = 0; view.context().changedElsewhere && i < 10000; ++i)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    };
    for (const bool isElsewhere : {false, true}) {
        ASSERT_EQ(tops().size(), 2u);
        end(isElsewhere, [&] { container.reset(); });
        EXPECT_EQ(view.getRoot(), root.get());
        EXPECT_EQ(tops(), Nodes{root.get()});
        EXPECT_EQ(view.getContainer(), nullptr);
        root->addChild(new SoCube); // the root is watched by itself now
        EXPECT_EQ(check(), "");
        container = new SoSeparator;
        container->addChild(root.get());
        container->addChild(pasted.get());
        view.setContainer(container.get());
    }
    for (const bool isElsewhere : {false, true}) { // with all that it holds
        end(isElsewhere, [&] {
            pasted.reset();
            root.reset();
            container.reset();
        });
        EXPECT_EQ(view.topLevelItemCount(), 0);
        EXPECT_EQ(view.topologyManager().getAttachedNode(), nullptr);
        EXPECT_EQ(check(), "");
        root = new SoGroup;
        container = new SoSeparator;
        container->addChild(root.get());
        container->addChild(new SoCube);
        view.setContainer(container.get());
        view.setSceneGraph(root.get());
        EXPECT_EQ(tops().size(), 2u);
    }
}

TEST_F(TreeTops, AreEditedLikeOtherRows)
{
    EditedTree edited(view);
    edited.container = container;
    mirabo::TreeEditor& editor = edited.editor;
    top(1)->setExpanded(true);
    view.setCurrentItem(row(sphere));
    const std::string text = textOf(container.get());
    std::string look = lookOf(view);
    const auto undoAll = [&] {
        while (edited.stack.canUndo())
            edited.stack.undo();
        EXPECT_EQ(textOf(container.get()), text);
        EXPECT_EQ(lookOf(view), look);
        EXPECT_EQ(check(), "");
    };

    const mirabo::NodeSlot slot = mirabo::NodeSlot::of(top(1));
    EXPECT_EQ(slot.container(), container.get());
    EXPECT_EQ(slot.index(), 1);
    EXPECT_TRUE(mirabo::NodeSlot::of(top(0)).isRoot());

    ASSERT_TRUE(editor.deleteRow(top(1)));
    EXPECT_EQ(tops(), Nodes{root.get()});
    EXPECT_EQ(view.currentItem(), top(0));
    undoAll();
    edited.stack.redo();
    EXPECT_EQ(container->getNumChildren(), 1);
    undoAll();

    ASSERT_TRUE(editor.pasteTopLevel(new SoCube));
    EXPECT_EQ(view.currentItem(), top(2));
    ASSERT_TRUE(editor.addNode(new SoSphere)); // the cube keeps no list: behind it
    EXPECT_EQ(view.topLevelItemCount(), 4);
    ASSERT_TRUE(editor.moveRow(row(material), top(3), true));
    EXPECT_EQ(tops().back(), material);
    ASSERT_TRUE(editor.moveRow(top(1), top(0), false));
    EXPECT_EQ(root->getNumChildren(), 2);
    undoAll();

    view.setCurrentItem(top(1));
    EXPECT_FALSE(editor.canStepCurrent(MoveStep::Up)); // the root stays first
    EXPECT_FALSE(editor.canStepCurrent(MoveStep::OutOfParent));
    EXPECT_FALSE(editor.canStepCurrent(MoveStep::Down));
    EXPECT_FALSE(view.canIgnoreOrEnable());
    view.setCurrentItem(row(material));
    look = lookOf(view);
    ASSERT_TRUE(editor.stepCurrent(MoveStep::OutOfParent)); // a row beside its parent
    EXPECT_EQ(tops(), (Nodes{root.get(), pasted.get(), material}));
    ASSERT_TRUE(editor.stepCurrent(MoveStep::Up));
    EXPECT_EQ(tops(), (Nodes{root.get(), material, pasted.get()}));
    ASSERT_TRUE(editor.stepCurrent(MoveStep::IntoPrevious));
    EXPECT_EQ(root->getChild(1), material);
    EXPECT_FALSE(mirabo::planStep(row(cube), MoveStep::OutOfParent).isPossible());
    EXPECT_FALSE(mirabo::planMove(top(0), top(1), false).isPossible());
    EXPECT_FALSE(mirabo::planMove(row(sphere), top(0), true).isPossible());
    undoAll();

    // Without the root nothing is shown; it comes back with the others.
    ASSERT_TRUE(editor.deleteRow(top(0)));
    EXPECT_EQ(view.topLevelItemCount(), 0);
    EXPECT_EQ(container->getNumChildren(), 0);
    undoAll();
    EXPECT_EQ(edited.box(), "");

    view.setContainer(nullptr);
    EXPECT_FALSE(editor.pasteTopLevel(new SoCube));
    EXPECT_EQ(edited.box(), "Paste node: Can not paste this node");
}

TEST_F(TreeTops, AreFilteredFoundAndRemembered)
{
    sphere->setName("ball");
    container->addChild(new SoCube);
    const int all = mirabo::kAllCategories;
    const int separators = static_cast<int>(mirabo::NodeCategory::Separator);
    view.setFilter(all & ~separators);
    EXPECT_EQ(check(), "");
    EXPECT_TRUE(top(1)->isHidden());
    EXPECT_EQ(top(2)->childIndexValue(), 1);
    container->insertChild(new SoSeparator, 2); // comes hidden
    EXPECT_EQ(check(), "");
    container->removeChild(2);
    view.goToItem(row(sphere)); // is shown against the filter
    EXPECT_FALSE(top(1)->isHidden());
    EXPECT_EQ(check(), "");
    view.setFilter(all);
    EXPECT_FALSE(top(1)->isHidden());
    EXPECT_EQ(check(), "");

    TreeFinder finder(view, {TreeFinder::ByName, "ball", 0}, top(0));
    ASSERT_EQ(finder.look(INT_MAX), TreeFinder::State::Found);
    EXPECT_EQ(finder.found(), row(sphere));
    row(sphere)->setBookmarked(true);
    top(2)->setBookmarked(true);
    const auto& bookmarks = view.context().bookmarks;
    EXPECT_EQ(bookmarks.walk(view, top(0), false), row(sphere));
    EXPECT_EQ(bookmarks.walkOn(view, row(sphere), false), top(2));
    EXPECT_EQ(bookmarks.walkOn(view, top(0), true), top(2));

    view.show();
    view.collapseItem(top(0));
    view.expandItem(top(1));
    view.setCurrentItem(row(sphere));
    pass();
    const mirabo::RememberedRows memory(view);
    const std::string look = lookOf(view);
    view.setSceneGraph(root.get()); // all rows are made anew
    EXPECT_NE(lookOf(view), look);
    memory.restore(view);
    pass();
    EXPECT_EQ(lookOf(view), look);
}

TEST_F(TreeTops, AreLedToAndOutlinedByPaths)
{
    container->addChild(pasted.get());
    std::vector<SoRef<SoPath>> outlined;
    QObject::connect(&view, &SoMiraboTreeView::highlightRequested, &view, [&](const SoPath* path) {
        outlined.push_back(path ? path->copy() : nullptr);
    });
    const auto pathTo = [&](int index) {
        SoRef<SoPath> path(new SoPath(container.get()));
        path->append(index);
        path->append(1);
        return path;
    };
    for (const int index : {2, 1}) { // two occurrences of one node
        const SoRef<SoPath> path = pathTo(index);
        ASSERT_TRUE(view.revealPath(*path));
        EXPECT_EQ(view.currentItem(), top(index)->rowAt(1));
        ASSERT_TRUE(outlined.back());
        EXPECT_EQ(outlined.back()->getHead(), pasted.get());
        EXPECT_EQ(outlined.back()->getTail(), sphere);
        EXPECT_EQ(outlined.back()->getLength(), 2);
    }
    const SoRef<SoPath> below(new SoPath(pasted.get())); // without the container
    below->append(0);
    EXPECT_TRUE(view.revealPath(*below));
    EXPECT_EQ(view.getCurrentNode(), material);
    const SoRef<SoSeparator> stranger(new SoSeparator);
    const SoRef<SoPath> foreign(new SoPath(stranger.get()));
    EXPECT_FALSE(view.revealPath(*foreign));
}

/// Nearly all rows stand below the root's: taking that out would cost as much as a new tree.
TEST_F(TreeTops, LetTheRootsRowAloneWhenTheyChange)
{
    QSignalSpy removals(view.model(), &QAbstractItemModel::rowsAboutToBeRemoved);
    top(1)->setExpanded(true);
    view.setCurrentItem(row(sphere));
    container->setChildren({root.get(), new SoCube, new SoCube, pasted.get()});
    container->setChildren({root.get(), pasted.get(), new SoSphere});
    container->setChildren({root.get(), new SoCube, new SoSphere, pasted.get(), new SoCube});
    container->removeChild(1);
    EXPECT_EQ(tops().size(), 4u);
    EXPECT_EQ(view.currentItem(), row(sphere));
    EXPECT_TRUE(top(2)->isExpanded());
    EXPECT_FALSE(removals.empty());
    for (const QList<QVariant>& removal : removals)
        EXPECT_TRUE(removal[0].toModelIndex().isValid() || removal[1].toInt() > 0);
}
