#include "DragStage.h"

#include "support/DrawnItems.h"
#include "support/HostScene.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/draggers/SoClipPlaneDragger.h>
#include <kalmyr/draggers/SoDirectionalLightDragger.h>
#include <kalmyr/draggers/SoPointLightDragger.h>
#include <kalmyr/draggers/SoRotateCylindricalDragger.h>
#include <kalmyr/draggers/SoRotateDiscDragger.h>
#include <kalmyr/draggers/SoRotateSphericalDragger.h>
#include <kalmyr/draggers/SoScale1Dragger.h>
#include <kalmyr/draggers/SoScale2Dragger.h>
#include <kalmyr/draggers/SoScale3Dragger.h>
#include <kalmyr/draggers/SoSpotLightDragger.h>
#include <kalmyr/draggers/SoTransformDragger.h>
#include <kalmyr/draggers/SoTranslate1Dragger.h>
#include <kalmyr/draggers/SoTranslate2Dragger.h>
#include <kalmyr/draggers/SoTranslate3Dragger.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <numbers>
#include <string>

namespace {

constexpr float kPi = std::numbers::pi_v<float>;

bool near(const SbVec3f& a, const SbVec3f& b, float tolerance = 0.02f)
{
    return a.equals(b, tolerance);
}

std::string text(const SbVec3f& v)
{
    return std::to_string(v[0]) + ' ' + std::to_string(v[1]) + ' ' + std::to_string(v[2]);
}

class DraggerTest : public DragStage {
protected:
    template <class Dragger>
    Dragger* add()
    {
        auto* dragger = new Dragger;
        root->addChild(dragger);
        return dragger;
    }
};

TEST_F(DraggerTest, MovesAlongItsLineAndWithinItsLimits)
{
    auto* dragger = add<SoTranslate1Dragger>();
    drag(at(1, 0), at(2.5f, 0.8f));
    EXPECT_TRUE(near(dragger->translation.getValue(), {1.5f, 0, 0}))
        << text(dragger->translation.getValue());
    dragger->minTranslation = SbVec3f(-1, -1, -1);
    dragger->maxTranslation = SbVec3f(2, 2, 2);
    drag(at(2.5f, 0), at(4, 0));
    EXPECT_TRUE(near(dragger->translation.getValue(), {2, 0, 0}));
    drag(at(3, 0), at(-4, 0));
    EXPECT_TRUE(near(dragger->translation.getValue(), {-1, 0, 0}));
}

TEST_F(DraggerTest, MovesInItsPlaneAndWithShiftAlongOneAxis)
{
    auto* dragger = add<SoTranslate2Dragger>();
    press(at(0.3f, 0.3f));
    moveTo(at(1.3f, 2.1f));
    EXPECT_TRUE(near(dragger->translation.getValue(), {1, 1.8f, 0}));
    shift = true;
    moveTo(at(1.3f, 2.1f));
    EXPECT_TRUE(near(dragger->translation.getValue(), {0, 1.8f, 0}));
    moveTo(at(2.3f, 0.5f));
    EXPECT_TRUE(near(dragger->translation.getValue(), {2, 0, 0}));
    shift = false;
    release(at(0.3f, 0.3f));
    drag(at(2, 1), at(2.4f, 1.5f)); // the arrow upwards
    EXPECT_TRUE(near(dragger->translation.getValue(), {2, 0.5f, 0}));
}

TEST_F(DraggerTest, MovesInSpaceAcrossTheLineOfSight)
{
    auto* deep = new SoPerspectiveCamera;
    deep->position = SbVec3f(5, 4, 6);
    deep->pointAt(SbVec3f(0, 0, -5));
    deep->farDistance = 50;
    setCamera(deep);
    auto* dragger = add<SoTranslate3Dragger>();
    const SbVec3f start(0, 0, -5);
    dragger->translation = start;
    // As far as it is, a pixel covers more than it would near by.
    const SbVec3f goal = start + volume().getViewRight() * 2.0f + volume().getViewUp();
    const auto pixel = [this](const SbVec3f& point) {
        const SbVec2f seen = onScreen(point);
        return SbVec2s(short(seen[0]), short(seen[1]));
    };
    drag(pixel(start), pixel(goal));
    EXPECT_TRUE(near(dragger->translation.getValue(), goal, 0.04f))
        << text(dragger->translation.getValue());
}

TEST_F(DraggerTest, TurnsAboutItsAxisByTheRimAndBeyondHalfATurn)
{
    auto* dragger = add<SoRotateDiscDragger>();
    SbVec3f axis;
    float angle = 0;
    drag(at(0.9f, 0), at(0, 0.7f)); // the distance from the axis does not count
    dragger->rotation.getValue().getValue(axis, angle);
    EXPECT_NEAR(angle * axis[2], kPi / 2, 0.02f);
    dragger->rotation = SbRotation();
    dragger->minAngle = -0.5f;
    dragger->maxAngle = 3;
    press(at(0.9f, 0));
    for (const auto& [x, y] : {std::pair(0.0f, 0.9f), {-0.9f, 0.0f}, {0.0f, -0.9f}})
        moveTo(at(x, y)); // three quarters of a turn, no quarter backwards
    dragger->rotation.getValue().getValue(axis, angle);
    EXPECT_NEAR(angle * axis[2], 3, 0.01f);
    release(at(0, -0.9f));
    dragger->rotation = SbRotation();
    shift = true;
    drag(at(0.9f, 0), at(0.9f, 0.55f)); // 31 degrees
    dragger->rotation.getValue().getValue(axis, angle);
    EXPECT_NEAR(angle * axis[2], kPi / 6, 1e-3f);
}

TEST_F(DraggerTest, TurnsAsACylinderAlsoBeyondItsSilhouette)
{
    auto* dragger = add<SoRotateCylindricalDragger>();
    SbVec3f axis;
    float angle = 0;
    press(at(0, 0.18f));
    moveTo(at(0.5f, 0.3f));
    dragger->rotation.getValue().getValue(axis, angle);
    EXPECT_NEAR(angle * axis[1], std::asin(0.5f), 0.02f);
    float before = 0;
    for (float x = 0.9f; x < 2; x += 0.05f) {
        moveTo(at(x, 0));
        dragger->rotation.getValue().getValue(axis, angle);
        const float turned = angle * axis[1];
        EXPECT_GT(turned, before);
        if (before > 0) {
            EXPECT_LT(turned - before, 0.35f) << "no jump at " << x;
        }
        before = turned;
    }
    EXPECT_NEAR(before, kPi / 2 + 0.95f, 0.06f) << "rolled on by what lies beyond";
}

TEST_F(DraggerTest, TurnsAsABallAndWithShiftAboutOneAxis)
{
    auto* dragger = add<SoRotateSphericalDragger>();
    const auto onBall = [](float x, float y) {
        return SbVec3f(x, y, std::sqrt(1 - x * x - y * y));
    };
    drag(at(0.2f, 0.3f), at(-0.5f, 0.6f));
    EXPECT_TRUE(
        near(dragger->rotation.getValue().rotated(onBall(0.2f, 0.3f)), onBall(-0.5f, 0.6f)));
    dragger->rotation = SbRotation();
    shift = true;
    drag(at(0.2f, 0.3f), at(0.7f, 0.35f));
    SbVec3f axis;
    float angle = 0;
    dragger->rotation.getValue().getValue(axis, angle);
    EXPECT_TRUE(near(axis, {0, 1, 0}, 1e-3f)) << text(axis);
    EXPECT_GT(angle, 0.5f);
}

TEST_F(DraggerTest, ScalesWithTheHandleUnderThePointerAndWithinItsLimits)
{
    auto* one = add<SoScale1Dragger>();
    drag(at(1, 0), at(2.5f, 0.5f));
    EXPECT_TRUE(near(one->scaleFactor.getValue(), {2.5f, 1, 1}));
    one->maxScaleFactor = 3;
    one->minScaleFactor = 0.5f;
    drag(at(-2.5f, 0), at(-4, 0));
    EXPECT_TRUE(near(one->scaleFactor.getValue(), {3, 1, 1}));
    drag(at(3, 0), at(-2, 0)); // through the middle
    EXPECT_TRUE(near(one->scaleFactor.getValue(), {0.5f, 1, 1}));
    root->removeChild(1);

    auto* two = add<SoScale2Dragger>();
    drag(at(1, 1), at(2, 1.5f));
    EXPECT_TRUE(near(two->scaleFactor.getValue(), {2, 1.5f, 1}));
    shift = true;
    drag(at(2, 1.5f), at(2.2f, 3));
    EXPECT_TRUE(near(two->scaleFactor.getValue(), {2, 3, 1}));
    shift = false;
    root->removeChild(1);

    auto* three = add<SoScale3Dragger>();
    drag(at(1, 1), at(1.5f, 1.5f));
    EXPECT_TRUE(near(three->scaleFactor.getValue(), {1.5f, 1.5f, 1.5f}));
}

TEST_F(DraggerTest, TheBoxMovesTurnsAndScales)
{
    auto* dragger = add<SoTransformDragger>();
    drag(at(0.5f, 0.4f), at(1.5f, 0.9f)); // the face
    EXPECT_TRUE(near(dragger->translation.getValue(), {1, 0.5f, 0}));
    shift = true;
    drag(at(1.5f, 0.9f), at(2.5f, 1.2f));
    EXPECT_TRUE(near(dragger->translation.getValue(), {2, 0.5f, 0}));
    shift = false;
    dragger->translation = SbVec3f();
    drag(at(1, 1), at(1.5f, 1.5f)); // a corner
    EXPECT_TRUE(near(dragger->scaleFactor.getValue(), {1.5f, 1.5f, 1.5f}));
    EXPECT_TRUE(near(dragger->translation.getValue(), {0, 0, 0}));
    dragger->scaleFactor = SbVec3f(1, 1, 1);
    ctrl = true;
    drag(at(1, 1), at(2, 2));
    EXPECT_TRUE(near(dragger->scaleFactor.getValue(), {1.5f, 1.5f, 1.5f}));
    const SbVec3f opposite = dragger->getMotionMatrix().point({-1, -1, -1});
    EXPECT_TRUE(near(opposite, {-1, -1, -1})) << text(opposite);
    ctrl = false;
    dragger->translation = SbVec3f();
    dragger->scaleFactor = SbVec3f(1, 1, 1);
    shift = true;
    drag(at(1, 1), at(1.2f, 2));
    EXPECT_TRUE(near(dragger->scaleFactor.getValue(), {1, 2, 1}));
    shift = false;
    dragger->scaleFactor = SbVec3f(1, 1, 1);
    SbVec3f axis;
    float angle = 0;
    drag(at(1, 0), at(0.5f, 0)); // the middle of an edge that runs upwards
    dragger->rotation.getValue().getValue(axis, angle);
    EXPECT_NEAR(std::abs(axis[1]), 1, 1e-3f) << text(axis);
    EXPECT_GT(angle, 0.2f);
}

TEST_F(DraggerTest, LightsAndPlanesHaveTheirOwn)
{
    auto* lamp = add<SoPointLightDragger>();
    lamp->location = SbVec3f(1, 1, 2);
    drag(at(1.13f, 1.13f), at(2.13f, 0.13f)); // beside the arrow that points at the eye
    EXPECT_TRUE(near(lamp->location.getValue(), {2, 0, 2}));
    drag(at(3, 0), at(2, 0.5f)); // the arrow along x
    EXPECT_TRUE(near(lamp->location.getValue(), {1, 0, 2}));
    root->removeChild(1);

    auto* sun = add<SoDirectionalLightDragger>();
    sun->direction = SbVec3f(2, 0, 0);
    drag(at(1, 0), at(0, 1));
    EXPECT_TRUE(near(sun->direction.getValue(), {0, 2, 0}, 0.05f))
        << "keeps its length: " << text(sun->direction.getValue());
    shift = true;
    drag(at(0, 0.9f), at(0.3f, -0.8f));
    EXPECT_TRUE(near(sun->direction.getValue(), {0, -2, 0}, 1e-4f));
    shift = false;
    drag(at(0, 0), at(1, 1));
    EXPECT_TRUE(near(sun->location.getValue(), {1, 1, 0}));
    root->removeChild(1);

    auto* spot = add<SoSpotLightDragger>();
    spot->location = SbVec3f();
    spot->direction = SbVec3f(1, 0, 0);
    const float half = std::sqrt(0.5f);
    drag(at(half, half), at(std::cos(0.4f), std::sin(0.4f)));
    EXPECT_NEAR(spot->cutOffAngle.getValue(), 0.4f, 0.05f);
    drag(at(1.2f, 0), at(0, 1.2f));
    EXPECT_TRUE(near(spot->direction.getValue(), {0, 1, 0}));
    root->removeChild(1);

    auto* cut = add<SoClipPlaneDragger>();
    cut->plane = SbPlane(SbVec3f(1, 0, 0), 1);
    drag(at(1.95f, 0), at(1, 1)); // the arrow stands at 1 0 0
    EXPECT_TRUE(near(cut->plane.getValue().getNormal(), {0, 1, 0}, 0.15f))
        << text(cut->plane.getValue().getNormal());
    EXPECT_NEAR(cut->plane.getValue().getDistance({1, 0, 0}), 0, 1e-3f) << "turns where it stands";
    cut->plane = SbPlane(SbVec3f(0, 1, 0), SbVec3f(1, 0, 0));
    drag(at(1.7f, 0), at(1.7f, 1.3f)); // the plate
    EXPECT_NEAR(cut->plane.getValue().getDistanceFromOrigin(), 1.3f, 0.03f);
}

TEST_F(DraggerTest, TellsOfStartMotionAndFinishAndChangesOneFieldOnce)
{
    auto* dragger = add<SoTransformDragger>();
    std::string heard;
    const auto note = [](char what) {
        return what == 's'   ? [](void* to, SoDragger*) { *static_cast<std::string*>(to) += 's'; }
               : what == 'm' ? [](void* to, SoDragger*) { *static_cast<std::string*>(to) += 'm'; }
                             : [](void* to, SoDragger*) { *static_cast<std::string*>(to) += 'f'; };
    };
    dragger->addStartCallback(note('s'), &heard);
    dragger->addMotionCallback(note('m'), &heard);
    dragger->addFinishCallback(note('f'), &heard);
    int changes = 0;
    SoFieldSensor sensors[3];
    SoField* fields[] = {&dragger->translation, &dragger->rotation, &dragger->scaleFactor};
    for (int i = 0; i < 3; ++i) {
        sensors[i].setFunction([](void* count, SoSensor*) { ++*static_cast<int*>(count); });
        sensors[i].setData(&changes);
        sensors[i].setPriority(0);
        sensors[i].attach(fields[i]);
    }
    press(at(0.5f, 0.5f));
    EXPECT_TRUE(dragger->isActive.getValue());
    ASSERT_NE(dragger->getActiveHandle(), nullptr);
    EXPECT_TRUE(dragger->getActiveHandle()->isActive.getValue());
    EXPECT_EQ(changes, 0);
    moveTo(at(0.7f, 0.5f));
    EXPECT_EQ(changes, 1);
    moveTo(at(0.7f, 0.5f));
    EXPECT_EQ(changes, 1) << "nothing new";
    moveTo(at(0.9f, 0.6f));
    EXPECT_EQ(changes, 2);
    release(at(0.9f, 0.6f));
    EXPECT_EQ(heard, "smmmf");
    EXPECT_EQ(dragger->getActiveHandle(), nullptr);
    for (int i = 0; i < dragger->getNumHandles(); ++i)
        EXPECT_FALSE(dragger->getHandle(i)->isActive.getValue());
    moveTo(at(3, 3));
    EXPECT_EQ(changes, 2) << "let go of";

    heard.clear();
    const SbVec3f before = dragger->translation.getValue();
    press(at(0.9f, 0.6f));
    moveTo(at(2, 2));
    EXPECT_FALSE(near(dragger->translation.getValue(), before));
    pressKey(SoKeyboardEvent::ESCAPE);
    EXPECT_EQ(dragger->translation.getValue(), before);
    EXPECT_EQ(heard, "smmf");
    EXPECT_EQ(action->getGrabber(), nullptr);
}

TEST_F(DraggerTest, FieldsMayBeConnectedEitherWay)
{
    auto* dragger = add<SoTranslate1Dragger>();
    const SoRef<SoTranslation> led(new SoTranslation), leader(new SoTranslation);
    led->translation.connectFrom(&dragger->translation);
    dragger->translation.connectFrom(&leader->translation);
    leader->translation = SbVec3f(2, 0, 0);
    drag(at(3, 0), at(4, 0)); // it stands where it was put
    EXPECT_TRUE(near(led->translation.getValue(), {3, 0, 0}));
    leader->translation = SbVec3f(-1, 0, 0);
    EXPECT_TRUE(near(led->translation.getValue(), {-1, 0, 0}));
}

/// The colours of what is drawn of a dragger.
std::vector<SbColor> colorsOf(SoGLRenderAction& render, SoNode* root)
{
    std::vector<SbColor> colors;
    for (const support::DrawnItem& item : support::drawnItems(render, root))
        colors.push_back(item.appearance->diffuse);
    return colors;
}

TEST_F(DraggerTest, HandlesOfOnePartLightUpWhileTheyAreHeld)
{
    add<SoTranslate3Dragger>();
    SoGLRenderAction render(region);
    std::vector<SbColor> before;
    for (int frame = 0; frame < 3; ++frame) // then from kept lists
        before = colorsOf(render, root.get());
    press(at(1, 0));
    const auto held = colorsOf(render, root.get());
    ASSERT_EQ(held.size(), before.size());
    int lit = 0;
    for (std::size_t i = 0; i < held.size(); ++i)
        lit += held[i] != before[i];
    EXPECT_EQ(lit, 3) << "a line and two tips";
    release(at(1, 0));
    EXPECT_EQ(colorsOf(render, root.get()), before);
}

TEST_F(DraggerTest, KeepsItsSizeOnTheScreenWhenAsked)
{
    auto* around = new SoTransform;
    around->scaleFactor = SbVec3f(0.01f, 0.3f, 20);
    root->addChild(around);
    auto* dragger = add<SoTranslate2Dragger>();
    EXPECT_FALSE(find(at(0.35f, 0.35f)));
    dragger->screenSize = 100;
    for (const float height : {10.0f, 1000.0f}) {
        static_cast<SoOrthographicCamera*>(camera.get())->height = height;
        const auto plate = find(at(0.35f, 0.35f));
        ASSERT_TRUE(plate) << height;
        EXPECT_EQ(plate->handle->part.getValue(), "plate");
        const auto tip = find(at(0, 1));
        ASSERT_TRUE(tip);
        EXPECT_EQ(tip->handle->part.getValue(), "yArrow");
    }
    SoGetBoundingBoxAction box(region);
    box.apply(root.get());
    EXPECT_TRUE(box.getBoundingBox().getMax().equals(SbVec3f(), 1e-6f)) << "only its place counts";
    // From kept lists as well, whatever the camera does.
    auto* inner = new SoSeparator;
    inner->addChild(around);
    inner->addChild(dragger);
    root->removeChild(2);
    root->removeChild(1);
    root->addChild(inner);
    SoGLRenderAction render(region);
    SoGLRenderAction fresh(region);
    fresh.setCaching(false);
    for (int frame = 0; frame < 6; ++frame) {
        static_cast<SoOrthographicCamera*>(camera.get())->height = 10.0f * float(1 + frame / 2);
        const auto kept = support::drawnItems(render, root.get());
        const auto drawn = support::drawnItems(fresh, root.get());
        ASSERT_EQ(kept.size(), drawn.size());
        for (std::size_t i = 0; i < kept.size(); ++i)
            EXPECT_TRUE(kept[i].toWorld.equals(drawn[i].toWorld, 1e-4f)) << frame;
    }
}

TEST_F(DraggerTest, CopiesAndFilesHoldTheFieldsAndConversionsLeaveItOut)
{
    const SoRef<SoTransformDragger> dragger(add<SoTransformDragger>());
    dragger->translation = SbVec3f(1, 2, 0);
    dragger->screenSize = 40;
    const std::string once = support::writeScene(root.get());
    EXPECT_EQ(once.find("Handle"), std::string::npos) << once;
    SoInput in;
    in.setBuffer(once.data(), once.size());
    const SoRef<SoSeparator> again(SoDB::readAll(&in));
    ASSERT_TRUE(again);
    EXPECT_EQ(support::writeScene(again.get()), once);

    const SoRef<SoTransformDragger> copy(static_cast<SoTransformDragger*>(dragger->copy()));
    EXPECT_EQ(copy->getNumHandles(), dragger->getNumHandles());
    root->removeChild(1);
    root->addChild(copy.get());
    drag(at(1.2f, 2), at(2.2f, 2));
    EXPECT_TRUE(near(copy->translation.getValue(), {2, 2, 0}));
    EXPECT_TRUE(near(dragger->translation.getValue(), {1, 2, 0})) << "handles of their own";
    EXPECT_EQ(support::writeScene(root.get()).find("isActive"), std::string::npos);

    SoToVRML2Action convert;
    convert.apply(root.get());
    EXPECT_EQ(support::writeScene(convert.getVRML2SceneGraph()).find("Cube"), std::string::npos);
    SoGetBoundingBoxAction box(region);
    box.apply(convert.getVRML2SceneGraph());
    EXPECT_TRUE(box.getBoundingBox().isEmpty());
}

TEST_F(DraggerTest, MayLeaveTheSceneWhileItIsHeld)
{
    auto* dragger = add<SoTranslate1Dragger>();
    const SoRef<SoDragger> held(dragger);
    dragger->addMotionCallback(
        [](void* data, SoDragger*) {
            auto* scene = static_cast<SoSeparator*>(data);
            if (scene->getNumChildren() > 1)
                scene->removeChild(1);
        },
        root.get());
    press(at(1, 0));
    moveTo(at(2, 0));
    moveTo(at(3, 0));
    release(at(3, 0));
    EXPECT_FALSE(held->isActive.getValue());
}

} // namespace
