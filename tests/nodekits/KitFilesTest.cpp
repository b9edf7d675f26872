#include "KitSupport.h"
#include "support/ErrorGuard.h"

#include <kalmyr/nodekits/SoInteractionKit.h>
#include <kalmyr/nodekits/SoNodekitsInit.h>
#include <kalmyr/nodekits/SoSceneKit.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

using namespace kittest;

namespace {

using KitFilesTest = KitTest;

TEST_F(KitFilesTest, NewKitsAreWrittenWithNothingInThem)
{
    for (const SoType type : SoType::getAllDerivedFrom(SoBaseKit::getClassTypeId())) {
        const SoRef<SoNode> kit(SoNode::create(type));
        ASSERT_TRUE(kit) << type.getName().getString();
        const std::string text = textOf(kit.get());
        EXPECT_NE(text.find(std::string(type.getName().getString()) + " { }"), std::string::npos)
            << text;
        checkInvariants(asKit(kit.get()));
    }
}

TEST_F(KitFilesTest, WhatWasMadeOrChangedComesBack)
{
    const SoRef<SoSceneKit> scene(new SoSceneKit);
    scene->setPart("childList[0]", new SoShapeKit);
    scene->set("childList[0].shape", "width 3");        // a default part, changed
    scene->getPart("childList[0].appearance.material"); // made with defaults: hides what is above
    scene->setPart("childList[1]", new SoShapeKit);
    scene->setPart("childList[1].shape", nullptr); // a default part, taken away
    scene->setPart("childList[1].transform", scene->getPart("childList[0].transform"));
    scene->getPart("cameraList[0]");
    scene->setCameraNumber(0);

    const std::string text = textOf(scene.get());
    const SoRef<SoNode> held = read(text);
    ASSERT_TRUE(held);
    SoBaseKit* again = asKit(held.get());
    EXPECT_EQ(textOf(again), text);
    EXPECT_EQ(shapeOf(again), shapeOf(scene.get()));
    EXPECT_EQ(as<SoCube>(again->getPart("childList[0].shape", false))->width.getValue(), 3);
    EXPECT_TRUE(again->getPart("childList[0].appearance.material", false));
    EXPECT_FALSE(again->getPart("childList[1].shape", false));
    EXPECT_EQ(again->getPart("childList[0].transform", false),
              again->getPart("childList[1].transform", false));
    EXPECT_EQ(static_cast<SoSceneKit*>(again)->getCameraNumber(), 0);
    checkInvariants(again);
}

TEST_F(KitFilesTest, ReadsPartsInAnyOrderAndKeepsNames)
{
    const SoRef<SoNode> kit = read("#Kalmyr V1.0 ascii\n"
                                   "DEF K ShapeKit {\n"
                                   "  shape Sphere { radius 2 }\n"
                                   "  childList NodeKitListPart { containerNode Group {\n"
                                   "    DEF Inner ShapeKit { transform DEF T Transform { } } } }\n"
                                   "  transform USE T\n"
                                   "}\n");
    ASSERT_TRUE(kit);
    EXPECT_EQ(shapeOf(kit.get()),
              "ShapeKit .Separator ..Transform ..Separator ...Sphere ..NodeKitListPart ...Group "
              "....ShapeKit .....Separator ......Transform ......Separator .......Cube");
    EXPECT_STREQ(asKit(kit.get())->getPart("childList[0]")->getName().getString(), "Inner");
    EXPECT_FALSE(as<SoNodeKitListPart>(asKit(kit.get())->getPart("childList"))
                     ->addChild(SoRef<SoNode>(new SoCube).get()));
    checkInvariants(asKit(kit.get()));
}

TEST_F(KitFilesTest, WrongPartsInFilesAreLeftOutWithAnError)
{
    support::ErrorScope errors;
    const SoRef<SoNode> kit =
        read("#Kalmyr V1.0 ascii\n"
             "ShapeKit { shape Material { } topSeparator Separator { }\n"
             "  childList NodeKitListPart { containerNode Group { Cube { } } }\n"
             "  transform Transform { } }\n");
    ASSERT_TRUE(kit);
    EXPECT_TRUE(errors.contains("2:18: Material cannot be the part \"shape\" of a ShapeKit, "
                                "which takes a Shape"));
    EXPECT_TRUE(errors.contains("\"topSeparator\""));
    EXPECT_TRUE(errors.contains("\"childList\""));
    EXPECT_EQ(shapeOf(kit.get()), "ShapeKit .Separator ..Transform ..Separator ...Cube");
}

TEST_F(KitFilesTest, CatalogsExtendThoseOfTheirParents)
{
    const SoNodekitCatalog* separator = SoSeparatorKit::getClassNodekitCatalog();
    const SoNodekitCatalog* shape = SoShapeKit::getClassNodekitCatalog();
    for (int i = 1; i < separator->getNumEntries(); ++i) {
        EXPECT_EQ(shape->getName(i), separator->getName(i)); // numbers stay
        EXPECT_EQ(shape->getParentPartNumber(i), separator->getParentPartNumber(i));
    }
    EXPECT_EQ(shape->getParentPartNumber("topSeparator"), 0);
    EXPECT_EQ(shape->getParentName("shape"), SbName("shapeSeparator"));
    EXPECT_EQ(shape->getRightSiblingName("coordinate3"), SbName("normal"));
    EXPECT_EQ(shape->getRightSiblingName("childList"), SbName());
    EXPECT_EQ(shape->getParentPartNumber("SoBufferObject"), -1);
    EXPECT_FALSE(shape->isPublic("topSeparator"));
    EXPECT_TRUE(shape->isPublic("shape"));
    EXPECT_EQ(shape->getType(0), SoShapeKit::getClassTypeId());

    support::ErrorScope errors;
    SoNodekitCatalog mine(*shape, SoShapeKit::getClassTypeId());
    const SoType cube = SoCube::getClassTypeId();
    EXPECT_EQ(mine.addPart("shape", cube, cube, {"this", ""}), -1);
    EXPECT_EQ(mine.addPart("more", cube, cube, {"nowhere", ""}), -1);
    EXPECT_EQ(mine.addPart("more", cube, cube, {"this", "shape"}), -1);
    EXPECT_FALSE(mine.narrowTypes("shape", SoMaterial::getClassTypeId(), cube));
    EXPECT_EQ(errors.count(), 4u);
    EXPECT_TRUE(mine.narrowTypes("shape", cube, cube));
    EXPECT_GT(mine.addPart("more", cube, cube, {"this", "topSeparator"}), 0);
}

/// A kit as an application writes it: narrowed and hidden parts of its parent, one of its own.
class TestLampKit : public SoShapeKit {
    SO_KIT_HEADER(TestLampKit)

public:
    TestLampKit()
    {
        SO_NODE_CONSTRUCTOR(SoShapeKit);
        SO_KIT_PART(glow);
        SO_KIT_MAKE_PARTS();
    }
    static void initClass()
    {
        SO_KIT_INIT_CLASS(TestLampKit, SoShapeKit, "TestLampKit");
        s_catalog->narrowTypes("shape", SoSphere::getClassTypeId(), SoSphere::getClassTypeId());
        s_catalog->addPart("glow", SoMaterial::getClassTypeId(), SoMaterial::getClassTypeId(),
                           {"shapeSeparator", "shape"});
        s_catalog->setNullByDefault("glow", false);
        s_catalog->setNullByDefault("transform", false);
    }
    SoSFNode glow;

protected:
    ~TestLampKit() override = default;
};

SO_KIT_SOURCE(TestLampKit)

TEST_F(KitFilesTest, DerivedKitsChangeWhatTheirParentsMake)
{
    TestLampKit::initClass();
    const SoRef<TestLampKit> lamp(new TestLampKit);
    EXPECT_EQ(shapeOf(lamp.get()),
              "TestLampKit .Separator ..Transform ..Separator ...Material ...Sphere");
    EXPECT_FALSE(lamp->setPart("shape", SoRef<SoNode>(new SoCube).get()));
    EXPECT_EQ(textOf(lamp.get()), "#Kalmyr V1.0 ascii\n\nTestLampKit { }\n");
    lamp->set("glow { emissiveColor 1 1 0 }");
    const SoRef<SoNode> again = read(textOf(lamp.get()));
    EXPECT_EQ(textOf(again.get()), textOf(lamp.get()));
    EXPECT_EQ(shapeOf(again.get()), shapeOf(lamp.get()));
}

} // namespace
