#include "ActionTestNodes.h"

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/nodes/SoCallback.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/shapes/SoCube.h>
#include <support/ErrorGuard.h>

#include <gtest/gtest.h>

#include <string>

using namespace actiontest;

namespace {

class SoActionTest : public testing::Test {
protected:
    static void SetUpTestSuite() { actiontest::init(); }
};

/// Names of the visited nodes in order.
template <class Target>
std::string visits(Target* target)
{
    std::string text;
    SoCallbackAction action;
    action.addPreCallback(SoNode::getClassTypeId(), [&](SoCallbackAction*, const SoNode* node) {
        text += node->getName().getString();
        return SoCallbackAction::CONTINUE;
    });
    action.apply(target);
    return text;
}

template <class N>
N* named(const char* name, std::initializer_list<SoNode*> children = {})
{
    auto* node = new N;
    node->setName(name);
    if constexpr (std::is_base_of_v<SoGroup, N>) {
        for (SoNode* child : children)
            node->addChild(child);
    }
    return node;
}

TEST_F(SoActionTest, TypesInheritTheNearestMethod)
{
    static std::string s_called;
    SoActionMethods methods;
    const SoType group = SoGroup::getClassTypeId();
    methods.add(SoNode::getClassTypeId(), [](SoAction*, SoNode*) { s_called += 'n'; });
    methods.add(group, [](SoAction*, SoNode*) { s_called += 'g'; });
    methods.prepare();
    const auto call = [&](SoType type) { methods.get(type)(nullptr, nullptr); };
    call(Leaf::getClassTypeId());
    call(SoSeparator::getClassTypeId());
    // A type that comes late has its method before and after the table is brought up to date.
    const SoType late = SoType::createType(SoSeparator::getClassTypeId(), "TestLateSeparator");
    call(late);
    methods.add(SoSeparator::getClassTypeId(), [](SoAction*, SoNode*) { s_called += 's'; });
    methods.prepare();
    call(late);
    call(group);
    EXPECT_EQ(s_called, "nggsg");
}

TEST_F(SoActionTest, PathsVisitWhatAffectsTheirTailAndAllBelowIt)
{
    // h and everything after the path is left out; so is the separator beside it, and in the
    // group beside it (g) the leaf, which cannot affect anything.
    auto* tail = named<SoGroup>("T", {named<Leaf>("l"), named<Mover>("u")});
    auto* middle = named<SoSeparator>("M", {named<Mover>("a"), tail, named<Mover>("h")});
    SoRef<SoGroup> root(
        named<SoGroup>("R", {named<SoGroup>("g", {named<Mover>("b"), named<Leaf>("x")}),
                             named<SoSeparator>("s", {named<Mover>("y")}), named<Leaf>("z"), middle,
                             named<Mover>("w")}));
    SoRef<SoPath> path(new SoPath(root.get()));
    path->append(3);
    path->append(1);
    ASSERT_EQ(path->getTail(), tail);
    EXPECT_EQ(visits(path.get()), "RgbMaTlu");
    EXPECT_EQ(visits(root.get()), "RgbxsyzMaTluhw");

    // A tail that is reached by a field.
    auto* holder = named<Mover>("H");
    holder->held = named<Mover>("f");
    root->insertChild(holder, 0);
    path->setHead(root.get());
    path->append(0);
    path->append(holder->held.getValue(), -1);
    EXPECT_EQ(visits(path.get()), "RHf");
}

TEST_F(SoActionTest, AbortAndPruneAreObeyed)
{
    SoRef<SoGroup> root(
        named<SoGroup>("R", {named<SoGroup>("A", {named<Leaf>("k")}),
                             named<SoSeparator>("B", {named<Leaf>("l")}), named<Leaf>("m")}));
    const auto run = [&](const char* at, SoCallbackAction::Response response) {
        std::string text;
        SoCallbackAction action;
        action.addPreCallback(SoNode::getClassTypeId(), [&](SoCallbackAction*, const SoNode* node) {
            text += node->getName().getString();
            return node->getName() == at ? response : SoCallbackAction::CONTINUE;
        });
        action.addPostCallback(SoGroup::getClassTypeId(), [&](SoCallbackAction*, const SoNode*) {
            text += '.';
            return SoCallbackAction::CONTINUE;
        });
        action.apply(root.get());
        return text;
    };
    EXPECT_EQ(run("none", SoCallbackAction::ABORT), "RAk.Bl.m.");
    EXPECT_EQ(run("l", SoCallbackAction::ABORT), "RAk.Bl");
    EXPECT_EQ(run("A", SoCallbackAction::PRUNE), "RABl.m.");
}

TEST_F(SoActionTest, TheCurrentPathLeadsToEachVisitedNode)
{
    RandomGraph graph(7);
    int visited = 0;
    SoCallbackAction action;
    action.addPreCallback(SoNode::getClassTypeId(), [&](SoCallbackAction* a, const SoNode* node) {
        const SoRef<SoPath> path(a->getCurPath());
        EXPECT_EQ(path->getLength(), a->getCurDepth() + 1);
        EXPECT_EQ(path->getHead(), graph.root.get());
        EXPECT_EQ(path->getTail(), node);
        for (int i = 1; i < path->getLength(); ++i) {
            const SoChildList& children = *path->getNode(i - 1)->getChildren();
            EXPECT_EQ(children[path->getIndex(i)], path->getNode(i));
        }
        ++visited;
        return SoCallbackAction::CONTINUE;
    });
    action.apply(graph.root.get());
    EXPECT_EQ(static_cast<std::uint64_t>(visited), action.getNumVisits());
    EXPECT_GT(visited, 200);
    EXPECT_EQ(action.getCurDepth(), -1);
    EXPECT_EQ(action.getCurNode(), nullptr);
}

TEST_F(SoActionTest, RefusesNothingAndItself)
{
    SoCallbackAction action;
    {
        auto errors = support::expectErrors();
        action.apply(static_cast<SoNode*>(nullptr));
        EXPECT_EQ(errors.count(), 1u);
    }
    SoRef<Leaf> leaf(new Leaf);
    int calls = 0;
    action.addPreCallback(Leaf::getClassTypeId(), [&](SoCallbackAction* a, const SoNode*) {
        ++calls;
        a->apply(leaf.get());
        return SoCallbackAction::CONTINUE;
    });
    auto errors = support::expectErrors();
    action.apply(leaf.get());
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(errors.contains("already"));
}

TEST_F(SoActionTest, ReportsAStateThatWasLeftInDisorder)
{
    const SoRef<SoCallback> node(new SoCallback);
    node->setCallback([](void*, SoAction* action) { action->getState()->push(); });
    support::ErrorScope errors;
    SoCallbackAction action;
    action.apply(node.get());
    EXPECT_TRUE(errors.contains("critical error"));
    node->setCallback(nullptr);
    action.apply(node.get()); // starts anew
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(SoActionTest, ARootWithoutReferenceSurvives)
{
    auto* root = new SoSeparator;
    root->addChild(new Leaf);
    SoGetBoundingBoxAction bounds{SbViewportRegion()};
    bounds.apply(root);
    bounds.apply(new SoPath(root)); // the path dies, and with its reference the root
    EXPECT_EQ(bounds.getBoundingBox().getSize(), SbVec3f(1, 1, 1));
}

TEST_F(SoActionTest, DeepGraphsFitOnTheStack)
{
    constexpr int kDepth = 10000;
    SoRef<SoSeparator> root(chain(kDepth));
    SoSearchAction search;
    search.setType(Leaf::getClassTypeId());
    search.apply(root.get());
    ASSERT_TRUE(search.isFound());
    EXPECT_EQ(search.getPath()->getLength(), kDepth + 1);

    SoGetMatrixAction matrix;
    matrix.apply(search.getPath());
    EXPECT_EQ(matrix.getMatrix()[3][0], kDepth);

    for (int round = 0; round < 2; ++round) { // without and with caches
        SoGetBoundingBoxAction bounds{SbViewportRegion()};
        bounds.apply(root.get());
        EXPECT_EQ(bounds.getBoundingBox(),
                  SbBox3f(kDepth - 0.5f, -0.5f, -0.5f, kDepth + 0.5f, 0.5f, 0.5f));
    }
    SoRayPickAction pick{SbViewportRegion()};
    pick.setRay(SbVec3f(kDepth, 0, 5), SbVec3f(0, 0, -1));
    pick.apply(root.get());
    ASSERT_NE(pick.getPickedPoint(), nullptr);
    EXPECT_EQ(pick.getPickedPoint()->getPath()->getLength(), kDepth + 1);

    int nodes = 0;
    SoCallbackAction callbacks;
    callbacks.addPreCallback(SoNode::getClassTypeId(), [&](SoCallbackAction*, const SoNode*) {
        ++nodes;
        return SoCallbackAction::CONTINUE;
    });
    callbacks.apply(root.get());
    EXPECT_EQ(nodes, 2 * kDepth + 1);
}

TEST_F(SoActionTest, MatricesFollowThePathThroughUnchosenChildren)
{
    auto* leaf = named<Leaf>("leaf");
    auto* inner = new SoSeparator;
    inner->addChild(new Mover(SbVec3f(0, 0, 4)));
    inner->addChild(leaf);
    inner->addChild(new Mover(SbVec3f(100, 0, 0)));
    auto* choice = new SoSwitch;
    choice->addChild(new Mover(SbVec3f(1000, 0, 0)));
    choice->addChild(inner);
    SoRef<SoSeparator> root(new SoSeparator);
    root->addChild(new Mover(SbVec3f(1, 2, 3)));
    root->addChild(choice);

    SoRef<SoPath> path(new SoPath(root.get()));
    path->append(1);
    path->append(1);
    path->append(1);
    ASSERT_EQ(path->getTail(), leaf);
    SoGetMatrixAction action;
    action.apply(path.get());
    EXPECT_EQ(action.getMatrix().point(SbVec3f(0, 0, 0)), SbVec3f(1, 2, 7));
    EXPECT_EQ(action.getInverse().point(SbVec3f(1, 2, 7)), SbVec3f(0, 0, 0));

    path->truncate(3); // a separator as tail: its inside does not count
    action.apply(path.get());
    EXPECT_EQ(action.getMatrix().point(SbVec3f(0, 0, 0)), SbVec3f(1, 2, 3));
    path->append(0); // a transformation as tail: its own does
    action.apply(path.get());
    EXPECT_EQ(action.getMatrix().point(SbVec3f(0, 0, 0)), SbVec3f(1, 2, 7));

    SoRef<Mover> mover(new Mover(SbVec3f(5, 0, 0)));
    action.apply(mover.get());
    EXPECT_EQ(action.getMatrix()[3][0], 5);
    action.apply(root.get());
    EXPECT_TRUE(action.getMatrix().isIdentity());
}

TEST_F(SoActionTest, PrimitivesArriveInObjectSpaceWithTheirMatrix)
{
    SoRef<SoSeparator> root(new SoSeparator);
    root->addChild(new Mover(SbVec3f(10, 0, 0)));
    auto* cube = new SoCube;
    root->addChild(cube);
    root->addChild(cube);
    int triangles = 0;
    double area = 0;
    SbBox3f world;
    SoCallbackAction action;
    action.addTriangleCallback(SoNode::getClassTypeId(), [&](SoCallbackAction* a,
                                                             const SoNode* shape, const auto& v0,
                                                             const auto& v1, const auto& v2) {
        EXPECT_EQ(shape, cube);
        ++triangles;
        const SbVec3f n = (v1.point - v0.point).cross(v2.point - v0.point);
        area += n.length() / 2;
        EXPECT_GT(n.dot(v0.normal), 0);
        for (const auto* v : {&v0, &v1, &v2})
            world.extendBy(a->getModelMatrix().point(v->point));
    });
    action.addLineCallback(SoNode::getClassTypeId(), [&](auto*, auto*, auto&, auto&) {
        ADD_FAILURE() << "a cube has no lines";
    });
    action.apply(root.get());
    EXPECT_EQ(triangles, 24);
    EXPECT_NEAR(area, 48, 1e-4);
    EXPECT_EQ(world, SbBox3f(9, -1, -1, 11, 1, 1));

    SoGetPrimitiveCountAction count;
    count.apply(root.get());
    EXPECT_EQ(count.getTriangleCount(), 24u);
    EXPECT_FALSE(count.containsNonTriangleShapes());
}

} // namespace
