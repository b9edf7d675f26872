#include "DragStage.h"

#include "support/DrawnItems.h"
#include "support/HostScene.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/manips/SoClipPlaneManip.h>
#include <kalmyr/manips/SoDirectionalLightManip.h>
#include <kalmyr/manips/SoPointLightManip.h>
#include <kalmyr/manips/SoRotateManip.h>
#include <kalmyr/manips/SoScaleManip.h>
#include <kalmyr/manips/SoSpotLightManip.h>
#include <kalmyr/manips/SoTransformManip.h>
#include <kalmyr/manips/SoTranslateManip.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLTransform.h>

#include <numbers>
#include <string>

namespace {

bool near(const SbVec3f& a, const SbVec3f& b, float tolerance = 0.03f)
{
    return a.equals(b, tolerance);
}

class ManipTest : public DragStage {
protected:
    SoRef<SoPath> pathTo(SoNode* node)
    {
        SoSearchAction search;
        search.setNode(node);
        search.apply(root.get());
        return SoRef<SoPath>(search.getPath());
    }
    std::string partAt(SbVec2s pixel) const
    {
        const auto held = find(pixel);
        return held ? held->handle->part.getValue().getString() : "";
    }
};

TEST_F(ManipTest, TakesAPlaceAndGivesItBackWithAllThatHungOnTheNode)
{
    auto* plain = new SoTransform;
    const SoRef<SoTransform> before(plain);
    plain->setName("Elbow");
    plain->setOverride(true);
    plain->rotation = SbRotation(SbVec3f(0, 0, 1), 1);
    plain->center = SbVec3f(1, 2, 3);
    plain->center.setIgnored(true);
    const SoRef<SoTranslation> feeds(new SoTranslation), fed(new SoTranslation);
    feeds->translation = SbVec3f(1, 1, 0);
    plain->translation.connectFrom(&feeds->translation);
    fed->translation.connectFrom(&plain->scaleFactor);
    root->addChild(new SoCube);
    root->addChild(plain);
    root->addChild(new SoCube);
    const std::string text = support::writeScene(root.get());

    const SoRef<SoTransformManip> manip(new SoTransformManip);
    EXPECT_FALSE(SoManip::isManip(plain));
    EXPECT_FALSE(SoManip::replaceManip(pathTo(plain).get()));
    ASSERT_TRUE(SoManip::replaceNode(pathTo(plain).get(), manip.get()));
    EXPECT_TRUE(SoManip::isManip(manip.get()));
    EXPECT_EQ(root->getChild(2), manip.get());
    EXPECT_EQ(manip->getName(), "Elbow");
    EXPECT_TRUE(manip->isOverride());
    EXPECT_TRUE(manip->center.isIgnored());
    EXPECT_TRUE(manip->scaleFactor.isDefault());
    feeds->translation = SbVec3f(2, 0, 0);
    EXPECT_EQ(manip->translation.getValue(), SbVec3f(2, 0, 0));
    manip->scaleFactor = SbVec3f(2, 2, 2);
    EXPECT_EQ(fed->translation.getValue(), SbVec3f(2, 2, 2));

    feeds->translation = SbVec3f(1, 1, 0);
    manip->scaleFactor = SbVec3f(1, 1, 1);
    manip->scaleFactor.setDefault(true);
    ASSERT_TRUE(SoManip::replaceManip(pathTo(manip.get()).get()));
    EXPECT_EQ(root->getChild(2)->getTypeId(), SoTransform::getClassTypeId());
    EXPECT_EQ(support::writeScene(root.get()), text) << "as it was";
    const SoRef<SoPath> top(new SoPath(root.get()));
    EXPECT_FALSE(SoManip::replaceNode(top.get(), manip.get()));
}

TEST_F(ManipTest, TakesThePlaceOfAPartOfAKit)
{
    auto* kit = new SoShapeKit;
    root->addChild(kit);
    kit->set("transform", "translation 1 0 0");
    const SoRef<SoPath> path(kit->createPathToPart("transform"));
    const SoRef<SoTranslateManip> manip(new SoTranslateManip);
    ASSERT_TRUE(SoManip::replaceNode(path.get(), manip.get()));
    EXPECT_EQ(kit->getPart("transform"), manip.get());
    EXPECT_EQ(manip->translation.getValue(), SbVec3f(1, 0, 0));
    const SoRef<SoPath> back(kit->createPathToPart("transform"));
    ASSERT_TRUE(SoManip::replaceManip(back.get()));
    EXPECT_EQ(kit->getPart("transform")->getTypeId(), SoTransform::getClassTypeId());
    // A refused place leaves everything as it is.
    const SoRef<SoPath> again(kit->createPathToPart("transform"));
    EXPECT_FALSE(SoManip::replaceNode(again.get(), new SoPointLightManip));
}

TEST_F(ManipTest, TheBoxStandsAboutWhatFollowsInTheGroup)
{
    auto* before = new SoTranslation;
    before->translation = SbVec3f(-1, 0, 0);
    auto* manip = new SoTransformManip;
    manip->translation = SbVec3f(0, 1, 0);
    manip->scaleFactor = SbVec3f(1.5f, 1, 1);
    auto* cube = new SoCube;
    auto* inside = new SoSeparator;
    for (SoNode* node :
         {static_cast<SoNode*>(before), static_cast<SoNode*>(manip), static_cast<SoNode*>(cube)})
        inside->addChild(node);
    root->addChild(inside);
    // The cube, with the margin, reaches 1.05 from its middle at -1 1, in x 1.5 times as far.
    EXPECT_EQ(partAt(at(-1 + 1.575f, 2.05f)), "corners");
    EXPECT_EQ(partAt(at(-1.0f, 1.3f)), "zFaces");
    cube->width = 4;
    EXPECT_EQ(partAt(at(-1 + 3.15f, 2.05f)), "corners");
    drag(at(-1.0f, 1.3f), at(0, 0.3f));
    EXPECT_TRUE(near(manip->translation.getValue(), {1, 0, 0}));
    drag(at(3.15f, 1.05f), at(4.2f, 1.4f)); // a third more
    EXPECT_TRUE(near(manip->scaleFactor.getValue(), {2, 1.333f, 1.333f}));
    manip->translation = SbVec3f(-1, 0, 0); // somebody else moves it: the box goes along
    EXPECT_EQ(partAt(at(-2 + 4.2f, 1.4f)), "corners");

    SoGetBoundingBoxAction box(region);
    box.apply(inside);
    EXPECT_TRUE(near(box.getBoundingBox().getMax(), {2, 1.333f, 1.333f})) << "of the cube alone";
}

TEST_F(ManipTest, TurnsMovesAndScalesAboutTheCentre)
{
    const auto show = [this](SoTransformManip* manip) {
        while (root->getNumChildren() > 1)
            root->removeChild(1);
        root->addChild(manip);
        root->addChild(new SoCube);
        manip->center = SbVec3f(1, 0, 0);
        manip->translation = SbVec3f(0, 1, 0);
        manip->rotation = SbRotation(SbVec3f(0, 0, 1), std::numbers::pi_v<float> / 2);
    };
    // The cube's corners are at 0 and -2, 1 and -1, 1 and -1 from the centre.
    const float radius = std::sqrt(6.0f) * 1.05f;

    auto* turning = new SoRotateManip;
    show(turning);
    const auto onBall = [radius](float x, float y) {
        return SbVec3f(x, y, std::sqrt(radius * radius - x * x - y * y));
    };
    const SbRotation start = turning->rotation.getValue();
    drag(at(1.7f, 2), at(0.5f, 0.3f));
    const SbRotation by = start.inverse() * turning->rotation.getValue();
    EXPECT_TRUE(near(by.rotated(onBall(0.7f, 1)), onBall(-0.5f, -0.7f)));
    EXPECT_EQ(turning->translation.getValue(), SbVec3f(0, 1, 0));

    auto* moving = new SoTranslateManip;
    show(moving);
    drag(at(1, 1 + radius), at(2, 2 + radius)); // the arrow along y, whatever the rotation
    EXPECT_TRUE(near(moving->translation.getValue(), {0, 2, 0}));

    auto* scaling = new SoScaleManip;
    show(scaling);
    // Turned, the cube lies about 1 0: from -2 to 0 along its x axis, which points upwards.
    EXPECT_EQ(partAt(at(1 - 1.05f, 1 + 0.05f)), "corners");
    drag(at(1, 1 - 2.05f), at(1.3f, 1 - 3.075f));
    EXPECT_TRUE(near(scaling->scaleFactor.getValue(), {1.5f, 1, 1}))
        << scaling->scaleFactor.getValue()[0];
}

TEST_F(ManipTest, LightsFollowTheirDraggers)
{
    auto* lamp = new SoPointLightManip;
    lamp->location = SbVec3f(1, 2, 3);
    root->addChild(lamp);
    drag(at(1.1f, 2.1f), at(0.1f, 2.1f));
    EXPECT_TRUE(near(lamp->location.getValue(), {0, 2, 3}));
    root->removeChild(1);

    auto* sun = new SoDirectionalLightManip;
    sun->direction = SbVec3f(1, 0, 0);
    root->addChild(sun);
    drag(at(0.7f, 0), at(0, 0.7f)); // 70 pixels long
    EXPECT_TRUE(near(sun->direction.getValue(), {0, 1, 0}, 0.1f));
    root->removeChild(1);

    auto* spot = new SoSpotLightManip;
    spot->location = SbVec3f();
    spot->direction = SbVec3f(1, 0, 0);
    spot->cutOffAngle = 0.5f;
    root->addChild(spot);
    const auto rim = [](float angle) { return at(0.7f * std::cos(angle), 0.7f * std::sin(angle)); };
    drag(rim(0.5f), rim(1.0f));
    EXPECT_NEAR(spot->cutOffAngle.getValue(), 1, 0.06f);
    SoGetBoundingBoxAction box(region);
    box.apply(root.get());
    EXPECT_TRUE(near(box.getBoundingBox().getMax(), {0, 0, 0})) << "its place";
}

TEST_F(ManipTest, AClipPlaneDoesNotCutItsDragger)
{
    auto* cut = new SoClipPlaneManip;
    cut->plane = SbPlane(SbVec3f(1, 0, 0), 0);
    root->addChild(cut);
    auto* cube = new SoCube;
    root->addChild(cube);
    SoGLRenderAction render(region);
    const auto items = support::drawnItems(render, root.get());
    ASSERT_GT(items.size(), 3u);
    for (const support::DrawnItem& item : items)
        EXPECT_EQ(item.numClipPlanes, item.node == cube ? 1u : 0u);
    root->removeChild(2);
    cut->plane = SbPlane(SbVec3f(0, 1, 0), 1);
    drag(at(0.69f, 1), at(0.69f, 2.5f)); // the rim of the plate, seen from its edge
    EXPECT_NEAR(cut->plane.getValue().getDistanceFromOrigin(), 2.5f, 0.03f);
}

TEST_F(ManipTest, AreWrittenCopiedAndConvertedAsWhatTheyAre)
{
    const char* text = "#Kalmyr V1.0 ascii\nSeparator { RotateManip { rotation 0 1 0 1 } Cube {} "
                       "ClipPlaneManip { plane 0 1 0 2 } ScaleManip { scaleFactor 2 1 1 } "
                       "TranslateManip { translation 1 0 0 } Cube {} }";
    SoInput in;
    in.setBuffer(text, std::string(text).size());
    const SoRef<SoSeparator> scene(SoDB::readAll(&in));
    ASSERT_TRUE(scene);
    const std::string once = support::writeScene(scene.get());
    EXPECT_EQ(once.find("Dragger"), std::string::npos) << "its own business: " << once;
    const SoRef<SoNode> copy(scene->copy());
    EXPECT_EQ(support::writeScene(copy.get()), once);

    const SoRef<SoSeparator> light(new SoSeparator);
    auto* manip = new SoTransformManip;
    manip->translation = SbVec3f(1, 2, 3);
    light->addChild(manip);
    light->addChild(new SoCube);
    light->addChild(new SoPointLightManip);
    SoToVRML2Action convert;
    convert.apply(light.get());
    const std::string converted = support::writeScene(convert.getVRML2SceneGraph());
    EXPECT_NE(converted.find("PointLight"), std::string::npos) << converted;
    EXPECT_EQ(converted.find("Manip"), std::string::npos) << converted;
    SoGetBoundingBoxAction box(region);
    box.apply(convert.getVRML2SceneGraph());
    EXPECT_TRUE(near(box.getBoundingBox().getMax(), {2, 3, 4}));
    EXPECT_TRUE(near(box.getBoundingBox().getMin(), {0, 1, 2})) << "no handles";
}

} // namespace
