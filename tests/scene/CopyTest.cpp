#include "NodesSupport.h"

#include <kalmyr/engines/SoCompose.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoFaceSet.h>
#include <kalmyr/shapes/SoVertexProperty.h>

#include <functional>
#include <iterator>
#include <map>
#include <random>

namespace {

using CopyTest = nodetest::NodesTest;

/// A host's group that brings children and a part of its own, and hidden children.
class Furnished : public SoGroup {
    SO_NODE_HEADER(Furnished)

public:
    Furnished();
    static void initClass();
    static void init()
    {
        if (getClassTypeId().isBad())
            initClass();
    }

    SoSFNode part;

private:
    ~Furnished() override = default;
};

/// Children that nobody but the node sees.
class Secretive : public SoNode {
    SO_NODE_HEADER(Secretive)

public:
    Secretive();
    static void initClass();
    static void init()
    {
        if (getClassTypeId().isBad())
            initClass();
    }
    SoChildList* getInternalChildren() const override { return &m_hidden; }

private:
    ~Secretive() override = default;
    mutable SoChildList m_hidden{this};
};

SO_NODE_SOURCE(Furnished)
SO_NODE_SOURCE(Secretive)

Furnished::Furnished()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
    SO_ADD_FIELD(part, (new SoCube));
    addChild(new SoTransform);
    addChild(new SoCube);
}

void Furnished::initClass()
{
    SO_NODE_INIT_CLASS(Furnished, SoGroup, "CopyTestFurnished");
}

Secretive::Secretive()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    m_hidden.append(new SoCube);
}

void Secretive::initClass()
{
    SO_NODE_INIT_CLASS(Secretive, SoNode, "CopyTestSecretive");
}

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

/// Whatever the constructor of the copy makes, the children are those of the original.
TEST_F(CopyTest, ChildrenOfTheConstructorAreNotTakenForCopies)
{
    Furnished::init();
    Secretive::init();
    const SoRef<SoCube> held(new SoCube);
    SoCube* const shared = held.get();
    const std::function<void(Furnished*)> edits[] = {
        [](Furnished* node) { child<SoTransform>(node, 0)->translation = SbVec3f(1, 2, 3); },
        [](Furnished* node) { node->removeChild(1); },
        [](Furnished* node) { node->removeAllChildren(); },
        [shared](Furnished* node) { node->replaceChild(0, shared); }, // as many as before
        [shared](Furnished* node) {
            node->setChildren({shared, new SoSwitch, shared});
        },
        [](Furnished* node) { node->addChild(new SoFaceSet); },
        // Edited, and yet the field is default still.
        [](Furnished* node) { static_cast<SoCube*>(node->part.getValue())->width = 7; },
        [shared](Furnished* node) { node->part = shared; },
        [](Furnished* node) { node->part = nullptr; },
    };
    for (std::size_t i = 0; i < std::size(edits); ++i) {
        SCOPED_TRACE(i);
        const SoRef<SoGroup> root(new SoGroup);
        const SoRef<Furnished> node(new Furnished);
        root->addChild(shared);
        root->addChild(node.get());
        edits[i](node.get());
        const SoRef<SoNode> copy(root->copy());
        std::map<const SoNode*, const SoNode*> partners;
        expectSameShape(root.get(), copy.get(), partners);
        const auto* copied = child<Furnished>(copy.get(), 1);
        SbString text, copiedText;
        node->get(text);
        copied->get(copiedText);
        EXPECT_EQ(copiedText, text);
        EXPECT_EQ(copied->part.isDefault(), node->part.isDefault());
        const auto* part = static_cast<SoCube*>(node->part.getValue());
        const auto* copiedPart = static_cast<SoCube*>(copied->part.getValue());
        ASSERT_EQ(!copiedPart, !part);
        if (part) {
            EXPECT_NE(copiedPart, part);
            EXPECT_EQ(copiedPart->width.getValue(), part->width.getValue());
        }
        if (node->getNumChildren() > 0
            && node->getChild(0)->isOfType(SoTransform::getClassTypeId())) {
            EXPECT_EQ(child<SoTransform>(const_cast<Furnished*>(copied), 0)->translation.getValue(),
                      child<SoTransform>(node.get(), 0)->translation.getValue());
        }
    }
    const SoRef<SoNode> secretive(new Secretive);
    const SoRef<SoNode> copy(secretive->copy());
    EXPECT_EQ(copy->getInternalChildren()->getLength(), 1);
    EXPECT_NE((*copy->getInternalChildren())[0], (*secretive->getInternalChildren())[0]);
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
