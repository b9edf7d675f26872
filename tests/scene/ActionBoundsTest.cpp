#include "ActionTestNodes.h"

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoResetTransform.h>
#include <kalmyr/nodes/SoRotation.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoPointSet.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

using namespace actiontest;

namespace {

class SoGetBoundingBoxActionTest : public testing::Test {
protected:
    static void SetUpTestSuite() { actiontest::init(); }

    template <class Target>
    static SbBox3f bounds(Target* target)
    {
        SoGetBoundingBoxAction action{SbViewportRegion()};
        action.apply(target);
        return action.getBoundingBox();
    }
};

/// The boxes of all leaves, moved by what stands before them; no matrices, no caches.
SbVec3f addLeaves(SoNode* node, SbVec3f at, SbBox3f& box)
{
    if (node->isOfType(Leaf::getClassTypeId())) {
        box.extendBy(at - SbVec3f(0.5f, 0.5f, 0.5f));
        box.extendBy(at + SbVec3f(0.5f, 0.5f, 0.5f));
    }
    if (node->isOfType(Mover::getClassTypeId()))
        at += static_cast<Mover*>(node)->by.getValue();
    SbVec3f inside = at;
    if (const SoChildList* children = node->getChildren()) {
        for (SoNode* child : children->getNodes())
            inside = addLeaves(child, inside, box);
    }
    return node->isOfType(SoSeparator::getClassTypeId()) ? at : inside;
}

SbBox3f plainBounds(SoNode* root)
{
    SbBox3f box;
    addLeaves(root, SbVec3f(), box);
    return box;
}

/// One random edit of a random place.
void edit(RandomGraph& graph)
{
    SoGroup* group = graph.groups[static_cast<std::size_t>(graph.pick(graph.groups.size()))];
    const int child = graph.pick(static_cast<std::size_t>(group->getNumChildren()));
    const auto coordinate = [&] { return static_cast<float>(graph.pick(81) - 40); };
    switch (graph.pick(4)) {
    case 0:
        group->insertChild(new Leaf, child);
        break;
    case 1:
        if (!group->getChild(child)->isOfType(SoGroup::getClassTypeId())
            && group->getNumChildren() > 3)
            group->removeChild(child);
        break;
    default:
        for (int i = 0; i < group->getNumChildren(); ++i) {
            if (auto* mover = group->getChild(i); mover->isOfType(Mover::getClassTypeId())) {
                static_cast<Mover*>(mover)->by = SbVec3f(coordinate(), coordinate(), coordinate());
                break;
            }
        }
    }
}

TEST_F(SoGetBoundingBoxActionTest, RememberedBoxesFollowEveryEdit)
{
    for (unsigned seed = 1; seed <= 8; ++seed) {
        RandomGraph graph(seed, 30);
        SoGetBoundingBoxAction action{SbViewportRegion()};
        for (int step = 0; step < 60; ++step) {
            action.apply(graph.root.get());
            ASSERT_EQ(action.getBoundingBox(), plainBounds(graph.root.get()))
                << seed << ' ' << step;
            edit(graph);
        }
    }
}

/// Many children in one list, among them one that stands there twice and two that share a mover.
struct FlatGraph {
    explicit FlatGraph(unsigned seed) : random(seed)
    {
        auto* shared = new Mover(SbVec3f(1, 2, 3));
        movers.push_back(shared);
        for (int i = 0; i < 150; ++i)
            root->addChild(i % 50 == 7 ? part(shared) : part(new Mover(place())));
        root->addChild(root->getChild(20));
    }

    int pick(int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); }
    float coordinate() { return static_cast<float>(pick(81) - 40); }
    SbVec3f place() { return SbVec3f(coordinate(), coordinate(), coordinate()); }

    SoSeparator* part(Mover* mover)
    {
        auto* part = new SoSeparator;
        part->addChild(mover);
        for (int n = 0; n < 3; ++n)
            part->addChild(new Leaf);
        movers.push_back(mover);
        return part;
    }

    void moveSome(int count)
    {
        for (; count > 0; --count)
            movers[static_cast<std::size_t>(pick(150))]->by = place();
    }

    void edit()
    {
        const int at = pick(root->getNumChildren());
        switch (pick(16)) {
        case 0:
            root->insertChild(part(new Mover(place())), at);
            break;
        case 1:
            root->removeChild(at);
            break;
        case 2:
            root->replaceChild(at, part(new Mover(place())));
            break;
        case 3: // one that moves all behind it comes or goes
            if (root->getChild(10)->isOfType(Mover::getClassTypeId()))
                root->removeChild(10);
            else
                root->insertChild(new Mover(place()), 10);
            break;
        case 4:
            moveSome(2000);
            break;
        case 5:
        case 6:
        case 7: // several in a row, one of them there already
            for (int i = pick(20); i > 0; --i)
                root->addChild(i == 3 ? root->getChild(at) : part(new Mover(place())));
            break;
        case 8: // the last one moves those that come later
            if (pick(4) == 0)
                root->addChild(new Mover(place()));
            break;
        default:
            moveSome(1 + pick(3));
        }
    }

    std::mt19937 random;
    SoRef<SoSeparator> root{new SoSeparator};
    std::vector<SoRef<Mover>> movers;
};

TEST_F(SoGetBoundingBoxActionTest, ChangedOnesAmongManyChildrenAreFound)
{
    for (unsigned seed = 1; seed <= 4; ++seed) {
        FlatGraph graph(seed);
        SoGetBoundingBoxAction action{SbViewportRegion()};
        for (int step = 0; step < 150; ++step) {
            action.apply(graph.root.get());
            ASSERT_EQ(action.getBoundingBox(), plainBounds(graph.root.get()))
                << seed << ' ' << step;
            graph.edit();
        }
    }
}

TEST_F(SoGetBoundingBoxActionTest, UnchangedSeparatorsAreNotEntered)
{
    SoRef<SoSeparator> root(new SoSeparator);
    Mover* moved = nullptr;
    for (int i = 0; i < 50; ++i) {
        auto* part = new SoSeparator;
        part->addChild(moved = new Mover(SbVec3f(static_cast<float>(i), 0, 0)));
        for (int n = 0; n < 50; ++n)
            part->addChild(new Leaf);
        root->addChild(part);
    }
    SoGetBoundingBoxAction action{SbViewportRegion()};
    action.apply(root.get());
    EXPECT_EQ(action.getNumVisits(), 1 + 50 * 52u);
    action.apply(root.get());
    EXPECT_EQ(action.getNumVisits(), 1u);
    moved->by = SbVec3f(100, 0, 0);
    action.apply(root.get());
    EXPECT_EQ(action.getNumVisits(), 1 + 1 + 51u);
    EXPECT_EQ(action.getBoundingBox(), SbBox3f(-0.5f, -0.5f, -0.5f, 100.5f, 0.5f, 0.5f));
}

class InheritedBoundsTest : public SoGetBoundingBoxActionTest,
                            public testing::WithParamInterface<bool> {};

INSTANTIATE_TEST_SUITE_P(GroupAndSeparator, InheritedBoundsTest, testing::Bool());

TEST_P(InheritedBoundsTest, CoordinatesAreNotRememberedWrongly)
{
    // The same separator twice below different coordinates; only its inside is remembered, by
    // itself and by a separator around it.
    SoRef<SoGroup> root(GetParam() ? new SoSeparator : new SoGroup);
    auto* shared = new SoSeparator;
    shared->addChild(new SoPointSet);
    for (int n = 0; n < 10; ++n)
        shared->addChild(new Mover);
    auto* a = new SoCoordinate3;
    auto* b = new SoCoordinate3;
    a->point.setValue(SbVec3f(1, 0, 0));
    b->point.setValue(SbVec3f(0, 2, 0));
    for (SoNode* node : std::initializer_list<SoNode*>{a, shared, b, shared})
        root->addChild(node);
    const SbBox3f both(0, 0, 0, 1, 2, 0);
    EXPECT_EQ(bounds(root.get()), both);
    EXPECT_EQ(bounds(root.get()), both);
    b->point.setValue(SbVec3f(0, 7, 0));
    EXPECT_EQ(bounds(root.get()), SbBox3f(0, 0, 0, 1, 7, 0));
}

TEST_F(SoGetBoundingBoxActionTest, ASingleShapeStaysTightUnderNestedRotations)
{
    const auto eighth = [] {
        auto* r = new SoRotation;
        r->rotation = SbRotation(SbVec3f(0, 0, 1), std::numbers::pi_v<float> / 4);
        return r;
    };
    SoRef<SoSeparator> root(new SoSeparator);
    auto* inner = new SoSeparator;
    root->addChild(eighth());
    root->addChild(inner);
    inner->addChild(eighth());
    for (int n = 0; n < 10; ++n)
        inner->addChild(new Mover);
    inner->addChild(new SoCube);
    for (int round = 0; round < 2; ++round) {
        const SbBox3f box = bounds(root.get());
        EXPECT_TRUE(box.getMin().equals(SbVec3f(-1, -1, -1), 1e-5f)) << round;
        EXPECT_TRUE(box.getMax().equals(SbVec3f(1, 1, 1), 1e-5f)) << round;
    }
}

TEST_F(SoGetBoundingBoxActionTest, ReplacedChildrenAreNotTakenForThoseBefore)
{
    SoRef<SoSeparator> root(new SoSeparator);
    auto* shared = new Leaf;
    SoSeparator* parts[6];
    for (int i = 0; i < 6; ++i) {
        parts[i] = new SoSeparator;
        parts[i]->addChild(new Mover(SbVec3f(static_cast<float>(10 * i), 0, 0)));
        parts[i]->addChild(shared);
        root->addChild(parts[i]);
    }
    shared->touch(); // one stamp for all
    EXPECT_EQ(bounds(root.get()), SbBox3f(-0.5f, -0.5f, -0.5f, 50.5f, 0.5f, 0.5f));
    root->replaceChild(5, parts[2]);
    EXPECT_EQ(bounds(root.get()), SbBox3f(-0.5f, -0.5f, -0.5f, 40.5f, 0.5f, 0.5f));
    root->removeChild(0);
    EXPECT_EQ(bounds(root.get()), SbBox3f(9.5f, -0.5f, -0.5f, 40.5f, 0.5f, 0.5f));
}

TEST_F(SoGetBoundingBoxActionTest, BoxesDoNotGrowWithEveryRotation)
{
    SoRef<SoSeparator> root(new SoSeparator);
    SoSeparator* at = root.get();
    for (int level = 0; level < 150; ++level) {
        auto* turn = new SoRotation;
        turn->rotation = SbRotation(SbVec3f(1, static_cast<float>(level % 3), 2), 0.7f);
        at->addChild(turn);
        at->addChild(new SoCube);
        auto* inner = new SoSeparator;
        at->addChild(inner);
        at = inner;
    }
    for (int round = 0; round < 2; ++round) {
        const SbBox3f box = bounds(root.get());
        // All corners lie on one sphere.
        for (int i = 0; i < 3; ++i) {
            EXPECT_LE(box.getMax()[i], 3 * std::sqrt(3.0f)) << round;
            EXPECT_GE(box.getMax()[i], 1.0f) << round;
            EXPECT_GE(box.getMin()[i], -3 * std::sqrt(3.0f)) << round;
        }
    }
}

TEST_F(SoGetBoundingBoxActionTest, APathMeasuresItsTailInTheHeadsSpace)
{
    SoRef<SoSeparator> root(new SoSeparator);
    auto* part = new SoSeparator;
    part->addChild(new Mover(SbVec3f(0, 5, 0)));
    for (int n = 0; n < 20; ++n)
        part->addChild(new Leaf);
    root->addChild(part);
    root->addChild(new Mover(SbVec3f(3, 0, 0)));
    root->addChild(new Leaf);
    root->addChild(part);
    bounds(root.get());
    SoRef<SoPath> path(new SoPath(root.get()));
    path->append(3);
    EXPECT_EQ(bounds(path.get()).getCenter(), SbVec3f(3, 5, 0));
    path->append(1);
    EXPECT_EQ(bounds(path.get()), SbBox3f(2.5f, 4.5f, -0.5f, 3.5f, 5.5f, 0.5f));
    // What was measured along the path must not be taken for the whole separator.
    part->addChild(new Mover(SbVec3f(10, 0, 0)));
    part->addChild(new Leaf);
    bounds(path.get());
    EXPECT_EQ(bounds(root.get()).getMax()[0], 13.5f);
    const SoRef<SoGroup> nothing(new SoGroup);
    EXPECT_TRUE(bounds(nothing.get()).isEmpty());
}

TEST_F(SoGetBoundingBoxActionTest, ResettingTheTransformLeadsBackToTheRoot)
{
    SoRef<SoSeparator> root(new SoSeparator);
    auto* middle = new SoSeparator;
    auto* inner = new SoSeparator;
    root->addChild(new Mover(SbVec3f(10, 0, 0)));
    root->addChild(middle);
    middle->addChild(new Mover(SbVec3f(0, 20, 0)));
    middle->addChild(inner);
    for (int n = 0; n < 20; ++n)
        inner->addChild(new Mover(SbVec3f(1, 1, 1)));
    inner->addChild(new Leaf);
    inner->addChild(new SoResetTransform);
    inner->addChild(new Leaf);
    const auto expected = [](float x) {
        return SbBox3f(-0.5f, -0.5f, -0.5f, x + 20.5f, 40.5f, 20.5f);
    };
    EXPECT_EQ(bounds(root.get()), expected(10));
    static_cast<Mover*>(root->getChild(0))->by = SbVec3f(50, 0, 0);
    EXPECT_EQ(bounds(root.get()), expected(50));

    auto* reset = static_cast<SoResetTransform*>(inner->getChild(21));
    reset->whatToReset = SoResetTransform::BBOX;
    EXPECT_EQ(bounds(root.get()).getSize(), SbVec3f(1, 1, 1));
    EXPECT_EQ(bounds(root.get()).getMin(), SbVec3f(69.5f, 39.5f, 19.5f));
}

} // namespace
