#include "ActionTestNodes.h"
#include "AllocationCount.h"

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/nodes/SoSwitch.h>

#include <gtest/gtest.h>

using namespace actiontest;

namespace {

class SoSearchActionTest : public testing::Test {
protected:
    static void SetUpTestSuite() { actiontest::init(); }
};

/// All ways to nodes that satisfy a condition, found the plain way.
template <class Condition>
void enumerate(SoPath& path, Condition condition, std::vector<SoRef<SoPath>>& found)
{
    if (condition(path.getTail()))
        found.emplace_back(path.copy());
    const SoChildList* children = path.getTail()->getChildren();
    for (int i = 0; children && i < children->getLength(); ++i) {
        path.append(i);
        enumerate(path, condition, found);
        path.pop();
    }
}

template <class Condition>
void expectAll(SoSearchAction& search, SoNode* root, Condition condition)
{
    SoRef<SoPath> way(new SoPath(root));
    std::vector<SoRef<SoPath>> expected;
    enumerate(*way, condition, expected);
    ASSERT_FALSE(expected.empty());
    search.setInterest(SoSearchAction::ALL);
    search.apply(root);
    ASSERT_EQ(search.getPaths().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_TRUE(*search.getPaths()[i] == *expected[i]);
    search.setInterest(SoSearchAction::FIRST);
    search.apply(root);
    ASSERT_TRUE(search.isFound());
    EXPECT_TRUE(*search.getPath() == *expected.front());
    search.setInterest(SoSearchAction::LAST);
    search.apply(root);
    ASSERT_EQ(search.getPaths().size(), 1u);
    EXPECT_TRUE(*search.getPath() == *expected.back());
}

TEST_F(SoSearchActionTest, FindsTheSamePlacesAsAPlainWalk)
{
    for (unsigned seed = 1; seed <= 5; ++seed) {
        RandomGraph graph(seed, 25);
        SoNode* wanted = graph.groups[static_cast<std::size_t>(graph.pick(graph.groups.size()))];
        SoSearchAction search;
        search.setNode(wanted);
        expectAll(search, graph.root.get(), [&](SoNode* n) { return n == wanted; });

        search.reset();
        search.setType(SoGroup::getClassTypeId());
        expectAll(search, graph.root.get(),
                  [](SoNode* n) { return n->isOfType(SoGroup::getClassTypeId()); });
        search.setType(SoGroup::getClassTypeId(), false);
        expectAll(search, graph.root.get(),
                  [](SoNode* n) { return n->getTypeId() == SoGroup::getClassTypeId(); });

        graph.leaves[3]->setName("wanted");
        graph.leaves[7]->setName("wanted");
        graph.movers[5]->setName("wanted");
        search.reset();
        search.setName("wanted");
        expectAll(search, graph.root.get(), [](SoNode* n) { return n->getName() == "wanted"; });
        search.setType(Leaf::getClassTypeId());
        expectAll(search, graph.root.get(), [](SoNode* n) {
            return n->getName() == "wanted" && n->getTypeId() == Leaf::getClassTypeId();
        });
    }
}

TEST_F(SoSearchActionTest, NothingToFindLeavesNoOldResult)
{
    RandomGraph graph(3, 5);
    SoSearchAction search;
    search.setNode(graph.root.get());
    search.apply(graph.root.get());
    ASSERT_TRUE(search.isFound());
    EXPECT_EQ(search.getPath()->getLength(), 1);
    search.setFind(0);
    search.apply(graph.root.get());
    EXPECT_FALSE(search.isFound());
    search.setName("a name that nothing ever had");
    search.apply(graph.root.get());
    EXPECT_EQ(search.getPath(), nullptr);
}

TEST_F(SoSearchActionTest, SwitchesHideUnlessSearchingAll)
{
    auto* hidden = new Leaf;
    auto* shown = new Leaf;
    SoRef<SoSwitch> choice(new SoSwitch);
    choice->addChild(hidden);
    choice->addChild(shown);
    choice->whichChild = 1;
    const auto count = [&](bool all) {
        SoSearchAction search;
        search.setType(Leaf::getClassTypeId());
        search.setInterest(SoSearchAction::ALL);
        search.setSearchingAll(all);
        search.apply(choice.get());
        return search.getPaths().size();
    };
    EXPECT_EQ(count(false), 1u);
    EXPECT_EQ(count(true), 2u);
    choice->whichChild = SO_SWITCH_ALL;
    EXPECT_EQ(count(false), 2u);
    choice->whichChild = SO_SWITCH_NONE;
    EXPECT_EQ(count(false), 0u);
}

TEST_F(SoSearchActionTest, FollowsFieldsThatHoldNodes)
{
    SoRef<SoSeparator> root(new SoSeparator);
    auto* outer = new Mover;
    auto* inner = new Mover;
    auto* leaf = new Leaf;
    root->addChild(new Leaf);
    root->addChild(outer);
    outer->held = inner;
    inner->held = leaf;
    SoSearchAction search;
    search.setNode(leaf);
    search.apply(root.get());
    ASSERT_TRUE(search.isFound());
    const SoPath* path = search.getPath();
    ASSERT_EQ(path->getLength(), 4);
    EXPECT_EQ(path->getIndex(1), 1);
    EXPECT_EQ(path->getNode(2), inner);
    EXPECT_EQ(path->getIndex(2), -1);
    EXPECT_EQ(path->getIndex(3), -1);
}

TEST_F(SoSearchActionTest, APathLimitsTheSearch)
{
    SoRef<SoSeparator> root(new SoSeparator);
    auto* beside = new SoGroup;
    beside->addChild(new Mover);
    auto* tail = new SoGroup;
    tail->addChild(new Mover);
    root->addChild(beside);
    root->addChild(new Mover);
    root->addChild(tail);
    SoRef<SoPath> path(new SoPath(root.get()));
    path->append(2);
    SoSearchAction search;
    search.setType(Mover::getClassTypeId());
    search.setInterest(SoSearchAction::ALL);
    search.apply(path.get());
    ASSERT_EQ(search.getPaths().size(), 1u);
    EXPECT_EQ(search.getPath()->getNode(1), tail);
}

TEST_F(SoSearchActionTest, LooksOnceIntoWhatOccursWithoutEnd)
{
    SoRef<SoGroup> below(new SoGroup);
    SoRef<Leaf> wanted(new Leaf), stranger(new Leaf);
    below->addChild(wanted.get());
    for (int level = 0; level < 60; ++level) {
        const SoRef<SoGroup> above(new SoGroup);
        above->addChild(below.get());
        above->addChild(below.get());
        below = above;
    }
    SoSearchAction search;
    search.setNode(stranger.get());
    search.apply(below.get());
    EXPECT_FALSE(search.isFound());
    below->addChild(stranger.get()); // behind all of it
    search.apply(below.get());
    ASSERT_TRUE(search.isFound());
    EXPECT_EQ(search.getPath()->getLength(), 2);
    search.setNode(wanted.get());
    search.apply(below.get());
    EXPECT_TRUE(search.isFound());
}

TEST_F(SoSearchActionTest, VisitsAllocateNothing)
{
    RandomGraph graph(11, 200);
    SoRef<Leaf> stranger(new Leaf);
    SoSearchAction search;
    search.setNode(stranger.get());
    search.apply(graph.root.get()); // the stack grows, tables fill
    const long before = countAllocations();
    search.apply(graph.root.get());
    EXPECT_EQ(countAllocations(), before);
    EXPECT_GT(search.getNumVisits(), 1000u);
}

} // namespace
