#include "NodesSupport.h"
#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/nodes/SoComplexity.h>
#include <kalmyr/nodes/SoCoordinate3.h>
#include <kalmyr/nodes/SoInfo.h>
#include <kalmyr/nodes/SoLOD.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/nodes/SoTransformSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoFaceSet.h>

namespace {

using GroupTest = nodetest::NodesTest;
using SeparatorTest = nodetest::NodesTest;
using SwitchTest = nodetest::NodesTest;

SbBox3f boxOf(SoNode* root)
{
    SoGetBoundingBoxAction measure(SbViewportRegion(100, 100));
    measure.apply(root);
    return measure.getBoundingBox();
}

SoTranslation* move(float x, float y = 0, float z = 0)
{
    auto* node = new SoTranslation;
    node->translation.setValue(x, y, z);
    return node;
}

int countVisits(SoNode* root, SoType type)
{
    int visits = 0;
    SoCallbackAction action;
    action.addPreCallback(type, [&](SoCallbackAction*, const SoNode*) {
        ++visits;
        return SoCallbackAction::CONTINUE;
    });
    action.apply(root);
    return visits;
}

} // namespace

TEST_F(GroupTest, EditsKeepOrderAndRefuseNonsense)
{
    const SoRef<SoGroup> group(new SoGroup);
    SoNode *a = new SoInfo, *b = new SoInfo, *c = new SoInfo;
    EXPECT_TRUE(group->addChild(a));
    EXPECT_TRUE(group->addChild(c));
    EXPECT_TRUE(group->insertChild(b, 1));
    EXPECT_EQ(group->findChild(c), 2);

    SoNode* d = new SoInfo;
    EXPECT_TRUE(group->replaceChild(a, d));
    EXPECT_EQ(group->getChild(0), d);
    EXPECT_TRUE(group->removeChild(b));
    EXPECT_EQ(group->getNumChildren(), 2);

    auto errors = support::expectErrors();
    const SoRef<SoNode> stranger(new SoInfo);
    EXPECT_FALSE(group->removeChild(stranger.get()));
    EXPECT_FALSE(group->removeChild(7));
    EXPECT_FALSE(group->insertChild(stranger.get(), -1));
    const SoRef<SoGroup> inner(new SoGroup);
    group->addChild(inner.get());
    EXPECT_FALSE(inner->addChild(group.get()));
    EXPECT_EQ(errors.count(), 4u);
    EXPECT_EQ(group->getNumChildren(), 3);
}

TEST_F(GroupTest, ReplacesAllChildrenWithOneNotification)
{
    const SoRef<SoGroup> group(new SoGroup);
    group->addChild(new SoInfo);
    int notifications = 0;
    SoNodeSensor sensor([](void* count, SoSensor*) { ++*static_cast<int*>(count); },
                        &notifications);
    sensor.setPriority(0);
    sensor.attach(group.get());
    std::vector<SoNode*> many;
    for (int i = 0; i < 1000; ++i)
        many.push_back(new SoInfo);
    EXPECT_TRUE(group->setChildren(many));
    EXPECT_EQ(notifications, 1);
    EXPECT_EQ(group->getNumChildren(), 1000);
    group->removeAllChildren();
    EXPECT_EQ(notifications, 2);
}

TEST_F(GroupTest, LetsGoOfChildrenInLinearTime)
{
    // One child under very many parents, removed in the order of adding.
    const SoRef<SoNode> shared(new SoInfo);
    const SoRef<SoGroup> root(new SoGroup);
    for (int i = 0; i < 100000; ++i) {
        auto* parent = new SoGroup;
        parent->addChild(shared.get());
        root->addChild(parent);
    }
    EXPECT_EQ(shared->getRefCount(), 100001);
    root->removeAllChildren();
    EXPECT_EQ(shared->getRefCount(), 1);
}

/// A group with very many ancestors takes leaves, and many children at once, without looking
/// through all of them for each.
TEST_F(GroupTest, GrowsQuicklyBelowManyAncestors)
{
    const SoRef<SoGroup> shared(new SoGroup);
    std::vector<SoRef<SoGroup>> above;
    for (int i = 0; i < 5000; ++i) {
        above.emplace_back(new SoGroup)->enableNotify(false);
        above.back()->addChild(shared.get());
    }
    for (int i = 0; i < 2000; ++i)
        shared->addChild(new SoTransform);
    std::vector<SoNode*> groups;
    for (int i = 0; i < 5000; ++i) {
        auto* group = new SoGroup;
        group->addChild(new SoTransform);
        groups.push_back(group);
    }
    EXPECT_TRUE(shared->setChildren(groups));
    support::ErrorScope errors;
    groups[4000] = above[100].get();
    EXPECT_FALSE(shared->setChildren(groups));
    EXPECT_FALSE(shared->addChild(shared.get()));
    EXPECT_EQ(shared->getNumChildren(), 5000);
}

TEST_F(SeparatorTest, KeepsEffectsInside)
{
    const SoRef<SoGroup> root(new SoGroup);
    auto* inside = new SoSeparator;
    inside->addChild(move(5));
    inside->addChild(new SoCube);
    root->addChild(inside);
    root->addChild(new SoCube);
    EXPECT_EQ(boxOf(root.get()), SbBox3f(-1, -1, -1, 6, 1, 1));
    // A group passes its effects on.
    const SoRef<SoGroup> loose(new SoGroup);
    auto* group = new SoGroup;
    group->addChild(move(5));
    loose->addChild(group);
    loose->addChild(new SoCube);
    EXPECT_EQ(boxOf(loose.get()), SbBox3f(4, -1, -1, 6, 1, 1));
}

TEST_F(SeparatorTest, TransformSeparatorKeepsOnlyMatrices)
{
    const SoRef<SoGroup> root(new SoGroup);
    auto* inside = new SoTransformSeparator;
    inside->addChild(move(5));
    auto* material = new SoMaterial;
    material->diffuseColor.setValue(1, 0, 0);
    inside->addChild(material);
    root->addChild(inside);
    root->addChild(new SoCube);
    bool seen = false;
    nodetest::atShapes(root.get(), [&](SoState* state, SoShape*) {
        seen = true;
        EXPECT_TRUE(SoModelMatrixElement::get(state).isIdentity());
        EXPECT_EQ(SoMaterialElement::get(state).getDiffuse(), SbColor(1, 0, 0));
    });
    EXPECT_TRUE(seen);
}

TEST_F(SeparatorTest, BoxFollowsEveryChangeItDependsOn)
{
    // Enough below to be worth a cache.
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* coordinates = new SoCoordinate3;
    coordinates->point.setValues({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    root->addChild(coordinates);
    auto* inner = new SoSeparator;
    SoTranslation* moved = nullptr;
    for (int i = 0; i < 20; ++i) {
        auto* part = new SoSeparator;
        part->addChild(moved = move(0));
        part->addChild(new SoFaceSet);
        inner->addChild(part);
    }
    root->addChild(inner);
    EXPECT_EQ(boxOf(root.get()), SbBox3f(0, 0, 0, 1, 1, 0));
    moved->translation.setValue(3, 0, 0);
    EXPECT_EQ(boxOf(root.get()), SbBox3f(0, 0, 0, 4, 1, 0));
    EXPECT_EQ(boxOf(root.get()), SbBox3f(0, 0, 0, 4, 1, 0));
    // Inherited, outside of the separator that remembers.
    coordinates->point.set1Value(2, 0, 7, 0);
    EXPECT_EQ(boxOf(root.get()), SbBox3f(0, 0, 0, 4, 7, 0));
    inner->removeAllChildren();
    EXPECT_TRUE(boxOf(root.get()).isEmpty());
}

TEST_F(SeparatorTest, CullsPickingByItsBox)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    for (int i = 0; i < 30; ++i) {
        auto* part = new SoSeparator;
        for (int k = 0; k < 10; ++k)
            part->addChild(move(0, 0, 0.01f));
        part->addChild(move(4.0f * static_cast<float>(i)));
        part->addChild(new SoCube);
        root->addChild(part);
    }
    const auto visits = [&root](bool culling) {
        for (SoNode* child : root->getChildren()->getNodes())
            static_cast<SoSeparator*>(child)->pickCulling.setValue(culling ? SoSeparator::ON
                                                                           : SoSeparator::OFF);
        boxOf(root.get());
        SoRayPickAction pick(SbViewportRegion(100, 100));
        pick.setRay({8, 0, 10}, {0, 0, -1});
        pick.apply(root.get());
        EXPECT_NE(pick.getPickedPoint(), nullptr);
        if (pick.getPickedPoint()) {
            EXPECT_NEAR(pick.getPickedPoint()->getPoint()[2], 1.1f, 1e-4f);
        }
        return pick.getNumVisits();
    };
    EXPECT_LT(visits(true), visits(false) / 4);
}

TEST_F(SwitchTest, ChoosesOneNoneOrAll)
{
    const SoRef<SoSwitch> choice(new SoSwitch);
    for (int i = 0; i < 3; ++i)
        choice->addChild(new SoCube);
    const SoType cube = SoCube::getClassTypeId();
    EXPECT_EQ(countVisits(choice.get(), cube), 0);
    choice->whichChild.setValue(1);
    EXPECT_EQ(countVisits(choice.get(), cube), 1);
    choice->whichChild.setValue(SO_SWITCH_ALL);
    EXPECT_EQ(countVisits(choice.get(), cube), 3);
    choice->whichChild.setValue(17);
    EXPECT_EQ(countVisits(choice.get(), cube), 0);
    choice->whichChild.setValue(SO_SWITCH_INHERIT);
    EXPECT_EQ(countVisits(choice.get(), cube), 0);
}

TEST_F(SwitchTest, InheritsTheChoiceOfTheLastSwitch)
{
    const SoRef<SoGroup> root(new SoGroup);
    auto* first = new SoSwitch;
    first->whichChild.setValue(1);
    first->addChild(new SoInfo);
    first->addChild(new SoInfo);
    auto* second = new SoSwitch;
    second->whichChild.setValue(SO_SWITCH_INHERIT);
    auto* far = new SoSeparator;
    far->addChild(move(9));
    far->addChild(new SoCube);
    second->addChild(new SoCube);
    second->addChild(far);
    root->addChild(first);
    root->addChild(second);
    EXPECT_EQ(boxOf(root.get()), SbBox3f(8, -1, -1, 10, 1, 1));
    first->whichChild.setValue(0);
    EXPECT_EQ(boxOf(root.get()), SbBox3f(-1, -1, -1, 1, 1, 1));
}

TEST_F(SwitchTest, SearchLooksWhereItIsTold)
{
    const SoRef<SoSwitch> choice(new SoSwitch);
    auto *shown = new SoInfo, *hidden = new SoInfo;
    choice->addChild(shown);
    choice->addChild(hidden);
    choice->whichChild.setValue(0);
    const auto finds = [&](SoNode* node, bool all) {
        SoSearchAction search;
        search.setNode(node);
        search.setSearchingAll(all);
        search.apply(choice.get());
        return search.isFound();
    };
    EXPECT_TRUE(finds(shown, false));
    EXPECT_FALSE(finds(hidden, false));
    EXPECT_TRUE(finds(hidden, true));
}

TEST_F(SwitchTest, LevelOfDetailMeasuresAllAndShowsTheFirstWithoutACamera)
{
    const SoRef<SoLOD> levels(new SoLOD);
    levels->range.setValues({10.0f});
    auto *fine = new SoCube, *coarse = new SoCube;
    coarse->width.setValue(4);
    levels->addChild(fine);
    levels->addChild(coarse);
    EXPECT_EQ(boxOf(levels.get()), SbBox3f(-2, -1, -1, 2, 1, 1));
    std::vector<SoShape*> shown;
    nodetest::atShapes(levels.get(), [&](SoState*, SoShape* shape) { shown.push_back(shape); });
    EXPECT_EQ(shown, std::vector<SoShape*>{fine});
}

TEST_F(GroupTest, CopiesKeepWhatIsShared)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* shared = new SoCube;
    shared->width.setValue(3);
    root->addChild(shared);
    root->addChild(shared);
    root->addChild(move(2));
    const SoRef<SoNode> copy(root->copy());
    auto* group = static_cast<SoGroup*>(copy.get());
    ASSERT_EQ(group->getNumChildren(), 3);
    EXPECT_EQ(group->getChild(0), group->getChild(1));
    EXPECT_NE(group->getChild(0), shared);
    EXPECT_EQ(static_cast<SoCube*>(group->getChild(0))->width.getValue(), 3);
}
