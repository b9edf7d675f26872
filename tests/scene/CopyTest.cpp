#include "NodesSupport.h"

#include <kalmyr/engines/SoCompose.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoFaceSet.h>
#include <kalmyr/shapes/SoVertexProperty.h>

#include <map>
#include <random>

namespace {

using CopyTest = nodetest::NodesTest;

template <class Node>
Node* child(SoNode* parent, int index)
{
    return static_cast<Node*>((*parent->getChildren())[index]);
}

TEST_F(CopyTest, ConnectionsInsideAreMadeInside)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* leader = new SoTransform;
    auto* follower = new SoTransform;
    root->addChild(leader);
    root->addChild(follower);
    follower->translation.connectFrom(&leader->translation);
    leader->translation.setValue(1, 2, 3);

    const SoRef<SoNode> copy(root->copy());
    auto* copiedLeader = child<SoTransform>(copy.get(), 0);
    auto* copiedFollower = child<SoTransform>(copy.get(), 1);
    EXPECT_EQ(copiedFollower->translation.getConnectedField(), &copiedLeader->translation);
    EXPECT_EQ(copiedFollower->translation.getValue(), SbVec3f(1, 2, 3));
    leader->translation.setValue(7, 7, 7);
    EXPECT_EQ(copiedFollower->translation.getValue(), SbVec3f(1, 2, 3));
    copiedLeader->translation.setValue(4, 5, 6);
    EXPECT_EQ(copiedFollower->translation.getValue(), SbVec3f(4, 5, 6));
}

TEST_F(CopyTest, ConnectionsFromOutsideComeAlongWhenAskedFor)
{
    const SoRef<SoTransform> outside(new SoTransform), inside(new SoTransform);
    inside->translation.connectFrom(&outside->translation);
    outside->translation.setValue(1, 0, 0);
    const SoRef<SoNode> still(inside->copy()), live(inside->copy(true));
    outside->translation.setValue(2, 0, 0);
    EXPECT_EQ(static_cast<SoTransform*>(still.get())->translation.getValue(), SbVec3f(1, 0, 0));
    EXPECT_EQ(static_cast<SoTransform*>(live.get())->translation.getValue(), SbVec3f(2, 0, 0));
}

TEST_F(CopyTest, EnginesBetweenCopiedNodesAreCopied)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* cube = new SoCube;
    auto* transform = new SoTransform;
    root->addChild(cube);
    root->addChild(transform);
    auto* engine = new SoComposeVec3f;
    engine->y.setValue(9);
    ASSERT_TRUE(engine->x.connectFrom(&cube->width));
    ASSERT_TRUE(transform->translation.connectFrom(&engine->vector));
    cube->width.setValue(5);

    const SoRef<SoNode> copy(root->copy());
    auto* copiedCube = child<SoCube>(copy.get(), 0);
    auto* copiedTransform = child<SoTransform>(copy.get(), 1);
    EXPECT_EQ(copiedTransform->translation.getValue(), SbVec3f(5, 9, 0));
    copiedCube->width.setValue(6);
    EXPECT_EQ(copiedTransform->translation.getValue(), SbVec3f(6, 9, 0));
    EXPECT_EQ(transform->translation.getValue(), SbVec3f(5, 9, 0));
    EXPECT_NE(copiedTransform->translation.getConnectedField()->getContainer(), engine);
}

/// The same node is the same in the copy, whether reached as a child or by a field.
void expectSameShape(const SoNode* original, const SoNode* copy,
                     std::map<const SoNode*, const SoNode*>& partners)
{
    const auto [at, isNew] = partners.emplace(original, copy);
    ASSERT_EQ(at->second, copy);
    ASSERT_NE(original, copy);
    ASSERT_EQ(original->getTypeId(), copy->getTypeId());
    if (!isNew)
        return;
    if (original->isOfType(SoFaceSet::getClassTypeId())) {
        const SoNode* a = static_cast<const SoFaceSet*>(original)->vertexProperty.getValue();
        const SoNode* b = static_cast<const SoFaceSet*>(copy)->vertexProperty.getValue();
        ASSERT_EQ(!a, !b);
        if (a)
            expectSameShape(a, b, partners);
    }
    const SoChildList* a = original->getChildren();
    const SoChildList* b = copy->getChildren();
    ASSERT_EQ(!a, !b);
    for (int i = 0; a && i < a->getLength(); ++i) {
        ASSERT_EQ(a->getLength(), b->getLength());
        expectSameShape((*a)[i], (*b)[i], partners);
    }
}

TEST_F(CopyTest, RandomGraphsKeepWhatTheyShare)
{
    for (unsigned seed = 0; seed < 30; ++seed) {
        std::mt19937 random(seed);
        std::vector<SoRef<SoNode>> made; // from the leaves up, so that there is no circle
        for (int i = 0; i < 80; ++i) {
            if (i < 20) {
                SoRef<SoFaceSet> shape(new SoFaceSet);
                if (i > 0 && random() % 2)
                    shape->vertexProperty.setValue(new SoVertexProperty);
                else if (i > 0)
                    shape->vertexProperty.setValue(
                        static_cast<SoFaceSet*>(made[random() % made.size()].get())
                            ->vertexProperty.getValue());
                made.emplace_back(shape);
                continue;
            }
            SoRef<SoGroup> group(random() % 2 ? static_cast<SoGroup*>(new SoSwitch)
                                              : new SoSeparator);
            for (unsigned k = 0; k < random() % 6; ++k)
                group->addChild(made[random() % made.size()].get());
            made.emplace_back(group);
        }
        const SoRef<SoNode> copy(made.back()->copy());
        std::map<const SoNode*, const SoNode*> partners;
        expectSameShape(made.back().get(), copy.get(), partners);
    }
}

} // namespace
