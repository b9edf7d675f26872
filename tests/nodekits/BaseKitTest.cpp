#include "KitSupport.h"
#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/lights/SoPointLight.h>
#include <kalmyr/nodekits/SoAppearanceKit.h>
#include <kalmyr/nodekits/SoCameraKit.h>
#include <kalmyr/nodekits/SoLightKit.h>
#include <kalmyr/nodekits/SoSceneKit.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodekits/SoWrapperKit.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <random>

using namespace kittest;

namespace {

class BaseKitTest : public KitTest {
protected:
    static SbBox3f boxOf(SoNode* node)
    {
        SoGetBoundingBoxAction action(SbViewportRegion(100, 100));
        action.apply(node);
        return action.getBoundingBox();
    }
    static std::string partOf(const SoBaseKit* kit, const SoNode* node)
    {
        return kit->getPartString(node).toStdString();
    }
};

TEST_F(BaseKitTest, MakesPartsOnDemandInTheCatalogsOrder)
{
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    EXPECT_FALSE(kit->getPart("transform", false));
    // Asked for in another order than they stand in.
    SoNode* transform = kit->getPart("transform");
    SoNode* material = kit->getPart("appearance.material");
    ASSERT_TRUE(as<SoTransform>(transform));
    ASSERT_TRUE(as<SoMaterial>(material));
    EXPECT_EQ(kit->getPart("transform"), transform);
    EXPECT_EQ(shapeOf(kit.get()), "ShapeKit .Separator ..AppearanceKit ...Material ..Transform "
                                  "..Separator ...Cube");
    EXPECT_EQ(partOf(kit.get(), material), "appearance.material");
    checkInvariants(kit.get());
}

TEST_F(BaseKitTest, RefusesWhatTheCatalogForbidsAndLeavesTheKitAsItWas)
{
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    const SoRef<SoNode> material(new SoMaterial);
    const SoRef<SoSeparator> holder(new SoSeparator);
    holder->addChild(kit.get());
    const SoRef<SoWrapperKit> wrapper(new SoWrapperKit);
    wrapper->setPart("contents", holder.get());
    const std::string before = shapeOf(kit.get());
    EXPECT_FALSE(kit->setPart("shape", material.get()));       // another type
    EXPECT_FALSE(kit->setPart("topSeparator", nullptr));       // private, and a group
    EXPECT_FALSE(kit->setPart("nothing", material.get()));     // unknown
    EXPECT_FALSE(kit->setPart("shape[0]", nullptr));           // no list
    EXPECT_FALSE(kit->setPart("childList[1]", wrapper.get())); // leaves a gap
    EXPECT_FALSE(kit->setPart("appearance.", material.get()));
    EXPECT_FALSE(kit->setPart("childList[x]", nullptr));
    EXPECT_FALSE(kit->getPart("topSeparator"));
    EXPECT_FALSE(kit->getPart("childList[-1]"));
    EXPECT_EQ(shapeOf(kit.get()), before);
    EXPECT_FALSE(wrapper->setPart("contents", wrapper.get())); // itself
    EXPECT_FALSE(kit->setPart("childList[0]", wrapper.get())); // holds the kit
    checkInvariants(wrapper.get());
}

TEST_F(BaseKitTest, PartsSetByTheirFieldsStandInTheGraph)
{
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    kit->shape.setValue(new SoSphere);
    kit->transform.setValue(new SoTransform);
    EXPECT_EQ(shapeOf(kit.get()), "ShapeKit .Separator ..Transform ..Separator ...Sphere");
    kit->shape.setValue(nullptr);
    EXPECT_EQ(shapeOf(kit.get()), "ShapeKit .Separator ..Transform ..Separator");

    support::ErrorScope errors;
    SoNode* transform = kit->transform.getValue();
    kit->transform.setValue(new SoMaterial);
    EXPECT_TRUE(errors.contains("Material cannot be the part \"transform\" of a ShapeKit"));
    EXPECT_EQ(kit->transform.getValue(), transform);
    kit->topSeparator.setValue(nullptr);
    EXPECT_TRUE(kit->topSeparator.getValue());
    checkInvariants(kit.get());
}

/// As an editor does that moves a row of a tree somewhere else and back.
TEST_F(BaseKitTest, LosesAndRegainsPartsThatAreMovedAway)
{
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    const SoRef<SoNode> transform(kit->getPart("transform"));
    SoChildList* children = kit->topSeparator.getValue()->getChildren();
    const int place = children->find(transform.get());
    children->remove(place);
    EXPECT_FALSE(kit->getPart("transform", false));
    EXPECT_EQ(partOf(kit.get(), transform.get()), "");
    EXPECT_EQ(transform->getRefCount(), 1);
    children->insert(new SoSeparator, place);
    EXPECT_FALSE(kit->getPart("transform", false));
    children->set(place, transform.get());
    EXPECT_EQ(kit->getPart("transform", false), transform.get());
    children->remove(place);
    SoNode* other = kit->getPart("transform");
    children->insert(transform.get(), place); // too late
    EXPECT_EQ(kit->getPart("transform"), other);
    checkInvariants(kit.get());
}

TEST_F(BaseKitTest, ListsTakeTheirTypesOnly)
{
    const SoRef<SoSceneKit> scene(new SoSceneKit);
    auto* list = as<SoNodeKitListPart>(scene->getPart("lightList"));
    ASSERT_TRUE(list);
    const SoRef<SoNode> shape(new SoShapeKit);
    EXPECT_FALSE(list->addChild(shape.get()));
    EXPECT_FALSE(list->addChildType(SoShapeKit::getClassTypeId())); // the kit has said what
    EXPECT_TRUE(list->addChild(new SoLightKit));
    EXPECT_TRUE(scene->setPart("lightList[1]", new SoLightKit));
    EXPECT_FALSE(list->insertChild(shape.get(), 0));
    EXPECT_FALSE(list->replaceChild(0, shape.get()));
    EXPECT_EQ(list->getNumChildren(), 2);
    EXPECT_EQ(partOf(scene.get(), list->getChild(1)), "lightList[1]");
    EXPECT_TRUE(scene->setPart("lightList[0]", nullptr));
    EXPECT_EQ(partOf(scene.get(), list->getChild(0)), "lightList[0]");
    EXPECT_EQ(partOf(scene.get(), list->containerNode.getValue()), "");

    const SoRef<SoNodeKitListPart> foreign(new SoNodeKitListPart);
    foreign->addChild(new SoCube);
    EXPECT_FALSE(scene->setPart("lightList", foreign.get()));
    EXPECT_EQ(scene->getPart("lightList"), list);
}

TEST_F(BaseKitTest, NamesPartsOfNestedKits)
{
    const SoRef<SoSceneKit> scene(new SoSceneKit);
    SoNode* deep = scene->getPart("childList[0].childList[0].appearance.material");
    ASSERT_TRUE(deep);
    EXPECT_EQ(partOf(scene.get(), deep), "childList[0].childList[0].appearance.material");
    SoBaseKit* inner = asKit(scene->getPart("childList[0].childList[0]"));
    EXPECT_EQ(partOf(inner, deep), "appearance.material");
    EXPECT_EQ(partOf(inner, scene->getPart("childList[0]")), "");
    EXPECT_EQ(partOf(scene.get(), scene->topSeparator.getValue()), "topSeparator");
    EXPECT_EQ(partOf(scene.get(), scene.get()), "");
    // The shared part of two kits is named by whoever is asked.
    const SoRef<SoShapeKit> other(new SoShapeKit);
    ASSERT_TRUE(other->setPart("appearance", inner->getPart("appearance")));
    EXPECT_EQ(partOf(other.get(), deep), "appearance.material");
    EXPECT_EQ(partOf(scene.get(), deep), "childList[0].childList[0].appearance.material");
}

TEST_F(BaseKitTest, PathsLeadThroughPrivatePartsToTheNamedOne)
{
    const SoRef<SoSceneKit> scene(new SoSceneKit);
    const SoRef<SoPath> path(scene->createPathToPart("childList[0].appearance.material"));
    ASSERT_TRUE(path);
    EXPECT_EQ(path->getTail(), scene->getPart("childList[0].appearance.material", false));
    for (int i = 1; i < path->getLength(); ++i)
        EXPECT_EQ((*path->getNode(i - 1)->getInternalChildren())[path->getIndex(i)],
                  path->getNode(i));
    EXPECT_FALSE(scene->createPathToPart("childList[7]"));
}

TEST_F(BaseKitTest, ActionsSeeThePartsAndOutsidersDoNot)
{
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    ASSERT_TRUE(kit->set("shape { width 4 height 2 depth 2 } transform { translation 10 0 0 }"));
    ASSERT_TRUE(kit->set("childList[0]", "shape { }") || kit->set("childList[0]", ""));
    const SoRef<SoSeparator> root(new SoSeparator);
    root->addChild(kit.get());
    EXPECT_EQ(boxOf(root.get()).getMin(), SbVec3f(8, -1, -1));
    kit->set("shape", "width 6");
    EXPECT_EQ(boxOf(root.get()).getMin(), SbVec3f(7, -1, -1));
    EXPECT_FALSE(kit->getChildren());
    EXPECT_FALSE(kit->affectsState());
}

TEST_F(BaseKitTest, SearchesEnterKitsWhenAskedTo)
{
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    kit->getPart("appearance.material");
    const SoRef<SoSeparator> root(new SoSeparator);
    root->addChild(kit.get());
    SoSearchAction search;
    search.setType(SoMaterial::getClassTypeId());
    search.setInterest(SoSearchAction::ALL);
    search.apply(root.get());
    EXPECT_EQ(search.getPaths().size(), 0u);
    search.setSearchingKits(true);
    search.apply(root.get());
    EXPECT_EQ(search.getPaths().size(), 1u);
    search.setSearchingKits(false);
    SoBaseKit::setSearchingChildren(true);
    search.apply(root.get());
    SoBaseKit::setSearchingChildren(false);
    ASSERT_EQ(search.getPaths().size(), 1u); // by field and as a child, but one place
    EXPECT_EQ(search.getPath()->getLength(), 5);
    search.setSearchingAll(true);
    search.apply(root.get());
    EXPECT_EQ(search.getPaths().size(), 1u);
}

TEST_F(BaseKitTest, TellsOfPartsInTheirOwnKind)
{
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    struct Log {
        std::string text;
        static void add(void* log, SoSensor* sensor)
        {
            auto* s = static_cast<SoNodeSensor*>(sensor);
            static_cast<Log*>(log)->text += std::to_string(s->getTriggerOperation())
                                            + s->getTriggerNode()->getTypeId().getName().getString()
                                            + ' ';
        }
    } log;
    SoNodeSensor sensor(&Log::add, &log);
    sensor.setPriority(0);
    sensor.attach(kit.get());
    kit->setPart("transform", new SoTransform);
    EXPECT_EQ(log.text, "2Separator 0ShapeKit ");
    log.text.clear();
    kit->setPart("transform", nullptr);
    EXPECT_EQ(log.text, "4Separator 0ShapeKit ");
    log.text.clear();
    as<SoCube>(kit->getPart("shape"))->width = 3;
    EXPECT_EQ(log.text, "0Cube ");
}

TEST_F(BaseKitTest, StandsSensorsThatTakeOutAtOnceWhatIsMade)
{
    const SoRef<SoSceneKit> kit(new SoSceneKit);
    int numTaken = 0;
    const auto takeOut = [](void* count, SoSensor* sensor) {
        auto* s = static_cast<SoNodeSensor*>(sensor);
        auto* group = as<SoGroup>(static_cast<SoNode*>(s->getTriggerContainer()));
        const auto kind = s->getTriggerOperation();
        if (group && (kind == SoNotification::CHILD_ADDED || kind == SoNotification::CHILD_INSERTED)
            && ++*static_cast<int*>(count) % 2 == 1)
            group->removeChild(s->getTriggerChild());
    };
    SoNodeSensor sensor(takeOut, &numTaken);
    sensor.setPriority(0);
    sensor.attach(kit.get());
    for (const char* part : {"childList[0].appearance.material", "childList[0].transform",
                             "cameraList[0].camera", "childList[1].childList[0].shape"}) {
        kit->getPart(part);
        checkInvariants(kit.get());
        kit->setPart("childList[0].appearance", nullptr);
        checkInvariants(kit.get());
    }
    EXPECT_GT(numTaken, 3);
}

TEST_F(BaseKitTest, CopiesKeepPartsSharingAndNames)
{
    const SoRef<SoSceneKit> scene(new SoSceneKit);
    scene->set("childList[0].transform", "translation 1 2 3");
    SoNode* look = scene->getPart("childList[0].appearance.material");
    look->setName("Look");
    scene->setPart("childList[1]", new SoShapeKit);
    scene->setPart("childList[1].appearance", scene->getPart("childList[0].appearance"));
    scene->set("childList[1].shape", "height 5");
    scene->setPart("childList[2]", new SoWrapperKit);
    asKit(scene->getPart("childList[2]"))->getPart("contents")->setName("Inside");

    const SoRef<SoNode> held(scene->copy());
    SoBaseKit* copy = asKit(held.get());
    EXPECT_EQ(textOf(copy), textOf(scene.get()));
    EXPECT_EQ(shapeOf(copy), shapeOf(scene.get()));
    SoNode* copiedLook = copy->getPart("childList[0].appearance.material", false);
    EXPECT_NE(copiedLook, look);
    EXPECT_EQ(copiedLook, copy->getPart("childList[1].appearance.material", false));
    checkInvariants(copy);
}

TEST_F(BaseKitTest, GoesBackToWhatANewKitHas)
{
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    const std::string fresh = shapeOf(kit.get());
    kit->setPart("shape", new SoSphere);
    kit->getPart("childList[0]");
    kit->setToDefaults();
    EXPECT_EQ(textOf(kit.get()), textOf(SoRef<SoNode>(new SoShapeKit).get()));
    EXPECT_TRUE(as<SoCube>(kit->getPart("shape")));
    EXPECT_EQ(shapeOf(kit.get()), fresh);
}

TEST_F(BaseKitTest, LightKitsLightWhatFollowsAndCamerasAreChosenByNumber)
{
    const SoRef<SoLightKit> light(new SoLightKit);
    EXPECT_TRUE(light->affectsState());
    EXPECT_TRUE(light->setPart("light", new SoPointLight));
    EXPECT_EQ(shapeOf(light.get()), "LightKit .TransformSeparator ..PointLight");

    const SoRef<SoSceneKit> scene(new SoSceneKit);
    EXPECT_EQ(scene->getCameraNumber(), -1);
    scene->setPart("cameraList[0]", new SoCameraKit);
    scene->getPart("cameraList[1].camera");
    EXPECT_TRUE(scene->setCameraNumber(1));
    EXPECT_EQ(scene->getCameraNumber(), 1);
    support::ErrorScope errors;
    EXPECT_FALSE(scene->setCameraNumber(2));
    EXPECT_EQ(scene->getCameraNumber(), 1);
}

TEST_F(BaseKitTest, LongListsAnswerForEveryEntryInLittleTime)
{
    constexpr int kEntries = 20000;
    const SoRef<SoSceneKit> scene(new SoSceneKit);
    auto* list = as<SoNodeKitListPart>(scene->getPart("childList"));
    for (int i = 0; i < kEntries; ++i)
        ASSERT_TRUE(list->addChild(new SoCameraKit));
    // Some 200 million comparisons if each looked through the list.
    for (int i = 0; i < kEntries; ++i)
        ASSERT_EQ(list->findChild(list->getChild(i)), i);
    const SoRef<SoNode> first(list->getChild(0));
    list->removeChild(0);
    EXPECT_EQ(list->findChild(list->getChild(100)), 100);
    list->containerNode.getValue()->getChildren()->insert(first.get(), 50); // past the list
    EXPECT_EQ(list->findChild(first.get()), 50);
    EXPECT_EQ(partOf(scene.get(), list->getChild(51)), "childList[51]");
}

/// Random edits; after each the kit is arranged as its catalog says.
TEST_F(BaseKitTest, KeepsItsOrderUnderRandomEdits)
{
    std::mt19937 random(7);
    const auto number = [&](int limit) { return static_cast<int>(random() % unsigned(limit)); };
    const SoRef<SoShapeKit> kit(new SoShapeKit);
    const SoNodekitCatalog* catalog = kit->getNodekitCatalog();
    std::vector<SoRef<SoNode>> shelf; // parts that were taken out, to come back
    for (int step = 0; step < 2000; ++step) {
        const int part = 1 + number(catalog->getNumEntries() - 1);
        const SbString name(catalog->getName(part).view());
        const SoRef<SoNode> present(kit->getPart(name, false));
        switch (number(5)) {
        case 0:
            kit->getPart(name);
            break;
        case 1:
            EXPECT_EQ(kit->setPart(name, nullptr), catalog->isPublic(part));
            if (present && catalog->isPublic(part))
                shelf.push_back(present);
            break;
        case 2:
            kit->setPart("childList[" + SbString(number(3)) + "]",
                         SoRef<SoNode>(new SoShapeKit).get());
            break;
        case 3:
            if (!shelf.empty() && !catalog->isList(part)) {
                SoNode* node = shelf[static_cast<std::size_t>(number(int(shelf.size())))].get();
                EXPECT_EQ(kit->setPart(name, node),
                          catalog->isPublic(part) && node->isOfType(catalog->getType(part)));
            }
            break;
        default:
            kit->setPart("childList[0]", nullptr);
        }
        checkInvariants(kit.get());
        if (step % 50 == 0) {
            const std::string text = textOf(kit.get());
            EXPECT_EQ(textOf(read(text).get()), text);
        }
        if (HasFailure())
            FAIL() << "step " << step;
    }
    const SoRef<SoNode> copy(kit->copy());
    EXPECT_EQ(shapeOf(copy.get()), shapeOf(kit.get()));
}

} // namespace
