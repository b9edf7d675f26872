#include "TreeTestScene.h"

#include "support/ErrorGuard.h"

#include "mirabo/tree/SoGraphTopologyManager.h"
#include "support/Passes.h"

#include <kalmyr/nodes/SoFile.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInline.h>

#include <QSignalSpy>

namespace {

/// A group with a cube, held once by whoever takes it.
SoGroup* makePair()
{
    auto* group = new SoGroup;
    group->addChild(new SoCube);
    return group;
}

} // namespace

TEST_F(TreeTest, FollowsEveryKindOfEditUnderEveryOccurrence)
{
    auto* shared = new SoSeparator;
    for (int i = 0; i < 3; ++i) {
        auto* holder = new SoGroup;
        root->addChild(holder);
        holder->addChild(shared);
    }
    ASSERT_EQ(rowsOf(shared), 3);

    SoGroup* first = makePair();
    shared->addChild(first);
    EXPECT_EQ(rowsOf(first), 3);
    EXPECT_EQ(rowsOf(first->getChild(0)), 3);

    shared->insertChild(new SoMaterial, 0);
    EXPECT_EQ(row(first)->childIndexValue(), 1);
    SoGroup* second = makePair();
    shared->replaceChild(1, second);
    EXPECT_EQ(rowsOf(first), 0);
    EXPECT_EQ(rowsOf(second), 3);
    EXPECT_EQ(check(), "");

    shared->removeChild(0);
    EXPECT_EQ(row(second)->childIndexValue(), 0);
    shared->removeAllChildren();
    EXPECT_EQ(row(shared)->childCount(), 0);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, KeepsTheSameChildTwiceApart)
{
    const SoRef<SoGroup> child(makePair());
    root->addChild(child.get());
    root->addChild(new SoMaterial);
    root->addChild(child.get());
    EXPECT_EQ(rowsOf(child.get()), 2);
    EXPECT_EQ(check(), "");
    root->insertChild(child.get(), 0);
    root->removeChild(3);
    EXPECT_EQ(check(), "");
    root->replaceChild(2, child.get());
    EXPECT_EQ(rowsOf(child.get()), 3);
    EXPECT_EQ(check(), "");
    root->replaceChild(2, child.get());
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, StaysAsItIsWhenAMoveBelowItselfIsRefused)
{
    auto* group = new SoGroup;
    auto* inner = makePair();
    group->addChild(inner);
    root->addChild(group);
    const auto errors = support::expectErrors();
    inner->addChild(group);
    inner->insertChild(root.get(), 0);
    inner->replaceChild(0, inner);
    EXPECT_EQ(errors.count(), 3u);
    EXPECT_EQ(view.context().index.itemCount(), 4u);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, ReadsAReplacedListAgainAndKeepsWhatStays)
{
    std::vector<SoNode*> nodes;
    for (int i = 0; i < 100; ++i)
        nodes.push_back(makePair());
    ASSERT_TRUE(root->setChildren(nodes));
    row(nodes[7])->setExpanded(true);
    view.setCurrentItem(row(nodes[7])->child(0));
    pass();
    const SoTreeViewItem* kept = row(nodes[7]);

    std::reverse(nodes.begin(), nodes.end());
    nodes[0] = makePair();
    ASSERT_TRUE(root->setChildren(nodes));
    EXPECT_EQ(check(), "");
    EXPECT_EQ(row(nodes[92]), kept);
    EXPECT_TRUE(kept->isExpanded());
    EXPECT_EQ(view.currentItem(), kept->child(0));

    root->setChildren({nodes.begin() + 60, nodes.end()});
    EXPECT_EQ(check(), "");
    EXPECT_EQ(view.currentItem(), kept->child(0));
}

TEST_F(TreeTest, ShowsNodesOfFieldsBehindChildrenAndFollowsThem)
{
    auto* holder = new FieldHolder;
    root->addChild(holder);
    root->addChild(holder);
    SoGroup* inner = makePair();
    holder->one = inner;
    EXPECT_EQ(rowsOf(inner->getChild(0)), 2);
    EXPECT_TRUE(row(inner)->isDirectlyFromField());
    EXPECT_FALSE(row(inner->getChild(0))->isDirectlyFromField());
    EXPECT_TRUE(row(inner->getChild(0))->isFromField());

    holder->many.setNum(3); // three times nothing
    holder->many.set1Value(1, new SoCube);
    holder->many.addNode(inner);
    EXPECT_EQ(row(holder)->childCount(), 3);
    EXPECT_EQ(check(), "");
    holder->one = static_cast<SoNode*>(nullptr);
    holder->many.removeNode(1);
    EXPECT_EQ(row(holder)->childCount(), 1);
    EXPECT_EQ(check(), "");

    root->addChild(inner); // by a field and as a child
    EXPECT_EQ(rowsOf(inner), 3);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, FollowsEditsOfNodeListsInFields)
{
    auto* holder = new FieldHolder;
    root->addChild(holder);
    root->addChild(holder);
    holder->one = new SoMaterial;
    for (int i = 0; i < 5; ++i)
        holder->many.addNode(new SoCube);
    const SoTreeViewItem* last = row(holder->many[4]);
    holder->many.insertNode(makePair(), 0);
    holder->many.insertNode(makePair(), 3);
    holder->many.removeNode(1);
    holder->many.set1Value(2, makePair());
    holder->many.set1Value(2, holder->many[2]);
    EXPECT_EQ(check(), "");
    EXPECT_EQ(row(holder->many[5]), last); // rows that stay are kept
    holder->many.insertNode(nullptr, 1);
    holder->many.insertNode(makePair(), 2);
    holder->many.removeNode(3);
    holder->many.set1Value(1, new SoCube);
    EXPECT_EQ(check(), "");
    holder->enableNotify(false);
    holder->many.removeNode(0);
    holder->many.addNode(new SoCube);
    holder->enableNotify(true);
    holder->many.set1Value(4, new SoCube);
    EXPECT_EQ(check(), "");
    holder->many.removeAllNodes();
    holder->many.addNode(makePair());
    holder->one = static_cast<SoNode*>(nullptr);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, FindsUnreportedChangesWithTheNextReport)
{
    auto* group = new SoGroup;
    root->addChild(group);
    group->addChild(new SoCube);
    group->addChild(new SoMaterial);
    group->enableNotify(false);
    group->removeChild(0);
    group->insertChild(makePair(), 0);
    group->addChild(new SoCube);
    group->enableNotify(true);
    group->addChild(new SoMaterial);
    EXPECT_EQ(check(), "");

    group->enableNotify(false);
    group->removeAllChildren();
    group->enableNotify(true);
    group->touch();
    EXPECT_EQ(row(group)->childCount(), 0);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, PaintsAndChoosesNoNodeThatDiedUnreported)
{
    view.show();
    auto* group = new SoGroup;
    root->addChild(group);
    for (int i = 0; i < 3; ++i)
        group->addChild(makePair());
    view.expandAll();
    pass();
    const auto vanish = [group](int index) {
        group->enableNotify(false);
        group->removeChild(index);
        group->enableNotify(true);
    };
    vanish(1);
    view.grab();
    EXPECT_EQ(check(), "");

    SoTreeViewItem* dead = row(group->getChild(1))->childItem(0);
    vanish(1);
    int chosen = 0;
    QObject::connect(&view, &SoMiraboTreeView::itemChosen, &view, [&](SoTreeViewItem* item) {
        ++chosen;
        EXPECT_NE(item, dead);
    });
    view.setCurrentItem(dead);
    pass();
    EXPECT_EQ(check(), "");
    EXPECT_LE(chosen, 1);
}

TEST_F(TreeTest, AppliesEveryEditMadeInOtherSensorsCallbacks)
{
    struct Host {
        SoGroup* root;
        SoGroup* group;
        int edits = 0;
    } host{root.get(), new SoGroup};
    root->addChild(host.group);
    SoNodeSensor sensor(
        [](void* data, SoSensor*) {
            auto& h = *static_cast<Host*>(data);
            if (++h.edits > 3)
                return;
            h.group->insertChild(makePair(), 0);
            h.root->addChild(new SoCube);
            if (h.edits == 2)
                h.group->removeChild(1);
        },
        &host);
    sensor.setPriority(0);
    sensor.attach(root.get());
    root->addChild(makePair());
    EXPECT_GT(host.edits, 1);
    EXPECT_EQ(check(), "");
    host.group->removeAllChildren();
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, TakesAChildOfAContainerForANewScene)
{
    const SoRef<SoGroup> container(new SoGroup);
    view.setSceneGraph(nullptr);
    view.topologyManager().attach(container.get());
    QSignalSpy roots(&view, &SoMiraboTreeView::rootChanged);
    const SoRef<SoGroup> scene(makePair());
    container->addChild(scene.get());
    EXPECT_EQ(view.getRoot(), scene.get());
    scene->addChild(new SoCube);
    EXPECT_EQ(check(), "");
    container->removeAllChildren();
    EXPECT_EQ(view.topLevelItemCount(), 0);
    container->addChild(root.get());
    EXPECT_EQ(view.getRoot(), root.get());
    EXPECT_EQ(roots.size(), 3);

    view.setSceneGraph(scene.get()); // not of this container
    container->addChild(new SoCube);
    EXPECT_EQ(view.getRoot(), scene.get());
    scene->addChild(new SoCube);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, IsEmptiedByTheDeathOfItsRoot)
{
    root->addChild(makePair());
    view.show();
    pass();
    QSignalSpy roots(&view, &SoMiraboTreeView::rootChanged);
    root.reset();
    EXPECT_EQ(view.topLevelItemCount(), 0);
    EXPECT_EQ(roots.size(), 1);
    view.grab();
    pass();
    EXPECT_EQ(view.getCurrentNode(), nullptr);
}

TEST_F(TreeTest, ShowsInlinesWithoutTheirBoxAndNotAtAllInAVrmlWorld)
{
    auto* link = new SoVRMLInline;
    root->addChild(link);
    auto* world = new SoVRMLGroup;
    world->addChild(new SoCube);
    link->setChildData(world);
    EXPECT_EQ(rowsOf(world), 1);
    EXPECT_EQ(row(link)->childCount(), 1);
    EXPECT_EQ(check(), "");
    world->children.addNode(new SoCube); // the field and the child list are one
    EXPECT_EQ(row(world)->childCount(), 2);
    EXPECT_EQ(check(), "");

    const SoRef<SoVRMLGroup> vrmlRoot(new SoVRMLGroup);
    vrmlRoot->addChild(link);
    view.setSceneGraph(vrmlRoot.get());
    EXPECT_EQ(row(link)->childCount(), 0);
    EXPECT_EQ(check(), "");
}

/// A world below a group of another kind, as a viewer's.
TEST_F(TreeTest, KnowsAVrmlWorldByTheGroupsInIt)
{
    auto* file = new SoFile;
    auto* world = new SoVRMLGroup;
    file->setChildData(world);
    const SoRef<SoSeparator> scene(new SoSeparator);
    scene->addChild(file);
    view.setSceneGraph(scene.get());
    EXPECT_EQ(row(file)->childCount(), 1) << "what the file holds is not the scene's own";

    auto* above = new SoSeparator;
    above->addChild(new SoVRMLGroup);
    scene->addChild(above);
    file->setChildData(new SoCube);
    EXPECT_EQ(row(file)->childCount(), 1) << "the scene stays what it was";
    view.setSceneGraph(scene.get());
    EXPECT_EQ(row(file)->childCount(), 0);
    EXPECT_EQ(check(), "");

    scene->removeChild(above);
    view.setSceneGraph(scene.get());
    EXPECT_EQ(row(file)->childCount(), 1);
    view.setSceneGraph(nullptr);
}

TEST_F(TreeTest, ShowsWhatFilesAndInlinesHoldAndFollowsIt)
{
    view.topologyManager().recentChanges().setQuietTime(0);
    auto* file = new SoFile;
    auto* web = new SoWWWInline;
    for (SoNode* node : {static_cast<SoNode*>(file), static_cast<SoNode*>(web)}) {
        root->addChild(node);
        root->addChild(node);
    }
    QSignalSpy refreshes(&view, &SoMiraboTreeView::overviewRefreshRequested);
    const auto expectBoth = [&](SoNode* content) {
        file->setChildData(content);
        web->setChildData(content);
        for (const SoTreeViewItem* item : view.itemsOf(file))
            EXPECT_EQ(item->childCount(), content ? 1 : 0);
        for (const SoTreeViewItem* item : view.itemsOf(web))
            EXPECT_EQ(item->childCount(), content ? 1 : 0); // and never the box
        EXPECT_EQ(check(), "");
        pass();
    };
    const SoRef<SoGroup> first(makePair());
    expectBoth(first.get());
    EXPECT_EQ(rowsOf(first->getChild(0)), 4);
    EXPECT_EQ(row(first.get())->childIndexValue(), 0);
    first->addChild(new SoMaterial);
    EXPECT_EQ(row(first.get())->childCount(), 2);
    expectBoth(makePair());
    EXPECT_EQ(rowsOf(first.get()), 0);
    expectBoth(nullptr);
    EXPECT_GE(refreshes.size(), 6);
    EXPECT_EQ(view.getCurrentNode(), web); // content that went is gone to
}

namespace {

/// A host that fetches the content of inlines; `content` null: it fails.
struct Fetcher {
    Fetcher() { SoWWWInline::setFetchURLCallBack(fetch, this); }
    ~Fetcher() { SoWWWInline::setFetchURLCallBack(nullptr, nullptr); }
    static void fetch(const SbString&, void* data, SoWWWInline* link)
    {
        auto* self = static_cast<Fetcher*>(data);
        ++self->calls;
        if (self->content)
            link->setChildData(self->content.get());
        else
            link->touch(); // tells of its failure
    }
    SoRef<SoNode> content;
    int calls = 0;
};

} // namespace

TEST_F(TreeTest, FetchesInlinesThatWereToldToHaveChangedOnce)
{
    Fetcher host;
    auto* link = new SoWWWInline;
    root->addChild(link);
    link->name = "http://host/scene"; // a field is no word of new content
    pass();
    EXPECT_EQ(host.calls, 0);
    link->touch();
    EXPECT_EQ(host.calls, 0); // never inside the change
    support::flush();
    EXPECT_EQ(host.calls, 1); // a failure is not tried again
    EXPECT_EQ(row(link)->childCount(), 0);

    host.content = makePair();
    link->touch();
    pass();
    EXPECT_EQ(host.calls, 2);
    EXPECT_EQ(rowsOf(host.content.get()), 1);
    link->touch();
    pass();
    EXPECT_EQ(host.calls, 2); // it has what it shows
    EXPECT_EQ(check(), "");

    link->setChildData(nullptr);
    link->touch();
    root->removeChild(0); // gone before its turn comes
    pass();
    EXPECT_EQ(check(), "");

    link = new SoWWWInline;
    root->addChild(link);
    link->name = "no_such_scene.wrl";
    const auto errors = support::expectErrors();
    link->touch();
    pass();
    EXPECT_TRUE(errors.contains("no_such_scene.wrl"));
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, GivesAChildToEveryRowOfANodeWithTenThousandParents)
{
    constexpr int kParents = 10000;
    auto* shared = new SoSeparator;
    std::vector<SoNode*> parents;
    for (int i = 0; i < kParents; ++i) {
        auto* parent = new SoGroup;
        parent->addChild(shared);
        parents.push_back(parent);
    }
    root->setChildren(parents);
    auto* child = new SoCube;
    shared->addChild(child);
    shared->insertChild(new SoMaterial, 0);
    EXPECT_EQ(rowsOf(child), kParents);
    for (const SoTreeViewItem* item : view.itemsOf(child))
        ASSERT_EQ(item->childIndexValue(), 1);
    shared->removeChild(1);
    EXPECT_EQ(view.context().index.itemCount(), 3u * kParents + 1);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, TellsStructureChangesOnlyAndOnlyOnce)
{
    auto* holder = new FieldHolder;
    root->addChild(holder);
    QSignalSpy structure(&view, &SoMiraboTreeView::outsideStructureChange);
    for (int i = 0; i < 100; ++i)
        holder->number = static_cast<float>(i);
    pass();
    EXPECT_EQ(structure.size(), 0);
    root->addChild(makePair());
    EXPECT_EQ(structure.size(), 1); // inside the change
    holder->one = new SoCube;
    EXPECT_EQ(structure.size(), 2);
    pass();
    EXPECT_EQ(structure.size(), 2);
}

TEST_F(TreeTest, KeepsBranchesOpenThroughManyRemovals)
{
    constexpr int kPairs = 3000; // enough for the view to lose patience
    std::vector<SoNode*> nodes;
    for (int i = 0; i < kPairs; ++i)
        nodes.push_back(makePair());
    root->setChildren(nodes);
    view.show();
    view.expandAll();
    row(nodes[1000])->setExpanded(false);
    pass();
    for (int i = 0; i < 900; ++i)
        root->removeChild(0);
    root->removeChild(root->getNumChildren() - 1);
    std::reverse(nodes.begin() + 950, nodes.begin() + 1100);
    root->setChildren({nodes.begin() + 950, nodes.begin() + 1100});
    view.grab();
    for (int i = 950; i < 1100; ++i) {
        SoNode* node = nodes[static_cast<std::size_t>(i)];
        EXPECT_EQ(row(node)->isExpanded(), i != 1049) << i; // 1000 before the turn
    }
    EXPECT_EQ(check(), "");
}

TEST_F(TreeTest, ManagesDepthBeyondTheCallStackOfRecursion)
{
    // Deep enough to overflow a recursion of small frames; the toolkit's own limits are elsewhere.
    constexpr int kDepth = 3000;
    SoGroup* at = root.get();
    for (int i = 0; i < kDepth; ++i) {
        auto* next = new SoGroup;
        at->addChild(next);
        at = next;
    }
    EXPECT_EQ(rowsOf(at), 1);
    view.setSceneGraph(nullptr);
    view.setSceneGraph(root.get());
    EXPECT_EQ(view.context().index.itemCount(), static_cast<std::size_t>(kDepth) + 1);
    EXPECT_TRUE(view.revealNode(at));
    root->removeChild(0);
    EXPECT_EQ(check(), "");
}
