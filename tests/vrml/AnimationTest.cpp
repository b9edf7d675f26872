#include "support/Clock.h"
#include "support/ErrorGuard.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInterpolators.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLSensors.h>
#include <kalmyr/vrml/SoVRMLTransform.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

class AnimationTest : public testing::Test {
protected:
    AnimationTest() { SoDB::init(); }
};

SoRef<SoVRMLGroup> scene(const std::string& body)
{
    const std::string text = "#VRML V2.0 utf8\n" + body;
    SoInput in;
    in.setBuffer(text.data(), text.size());
    return SoRef<SoVRMLGroup>(SoDB::readAllVRML(&in));
}

template <class T>
T* at(const SoRef<SoVRMLGroup>& root, int index)
{
    return static_cast<T*>(root->getChild(index));
}

} // namespace

TEST_F(AnimationTest, InterpolatorsPassTheirValueOnAtOnce)
{
    const auto root = scene(R"(
DEF P PositionInterpolator { key [ 0 0.5 1 ] keyValue [ 0 0 0, 2 0 0, 2 4 0 ] }
DEF T Transform { translation 9 9 9 }
DEF C CoordinateInterpolator { key [ 0 1 ] keyValue [ 0 0 0, 1 0 0, 0 2 0, 1 2 0 ] }
DEF O OrientationInterpolator { key [ 0 1 ] keyValue [ 0 1 0 0, 0 1 0 1 ] }
DEF S ScalarInterpolator { key [ 0 1 ] keyValue [ 3 ] }
DEF K ColorInterpolator { key [ 0 1 ] keyValue [ 1 0 0, 0 1 0 ] }
DEF E PositionInterpolator { }
ROUTE P.value_changed TO T.translation)");
    ASSERT_TRUE(root);
    auto* place = at<SoVRMLPositionInterpolator>(root, 0);
    const auto* moved = at<SoVRMLTransform>(root, 1);
    EXPECT_EQ(moved->translation.getValue(), SbVec3f(9, 9, 9));
    const std::pair<float, SbVec3f> steps[] = {{-1.0f, {0, 0, 0}},
                                               {0.25f, {1, 0, 0}},
                                               {0.5f, {2, 0, 0}},
                                               {0.75f, {2, 2, 0}},
                                               {7.0f, {2, 4, 0}}};
    for (const auto& [fraction, wanted] : steps) {
        place->set_fraction = fraction;
        EXPECT_EQ(moved->translation.getValue(), wanted) << fraction;
    }
    auto* points = at<SoVRMLCoordinateInterpolator>(root, 2);
    points->set_fraction = 0.5f;
    ASSERT_EQ(points->value_changed.getNum(), 2);
    EXPECT_EQ(points->value_changed[1], SbVec3f(1, 1, 0));
    auto* turn = at<SoVRMLOrientationInterpolator>(root, 3);
    turn->set_fraction = 0.5f;
    EXPECT_TRUE(turn->value_changed.getValue().equals(SbRotation(SbVec3f(0, 1, 0), 0.5f), 1e-6f));
    auto* scalar = at<SoVRMLScalarInterpolator>(root, 4);
    scalar->set_fraction = 1; // one value for two keys
    EXPECT_EQ(scalar->value_changed.getValue(), 3);
    auto* hue = at<SoVRMLColorInterpolator>(root, 5);
    hue->set_fraction = 0.5f; // by way of yellow
    EXPECT_NEAR(hue->value_changed.getValue()[0], 1, 1e-5);
    EXPECT_NEAR(hue->value_changed.getValue()[1], 1, 1e-5);
    at<SoVRMLPositionInterpolator>(root, 6)->set_fraction = 0.5f; // nothing to interpolate
}

TEST_F(AnimationTest, RoutesThemselvesAreNoEvents)
{
    const auto root = scene(R"(
DEF T Transform { translation 9 9 9 } DEF U Transform { translation 8 8 8 }
DEF P PositionInterpolator { key [ 0 1 ] keyValue [ 1 0 0, 2 0 0 ] }
DEF C TimeSensor { stopTime 1 } DEF S Script { eventOut SFVec3f never }
ROUTE P.value_changed TO T.translation
ROUTE T.translation_changed TO U.set_translation
ROUTE U.translation TO T.translation
ROUTE S.never TO U.translation
ROUTE C.fraction_changed TO P.set_fraction)");
    ASSERT_TRUE(root);
    EXPECT_EQ(at<SoVRMLTransform>(root, 0)->translation.getValue(), SbVec3f(9, 9, 9));
    EXPECT_EQ(at<SoVRMLTransform>(root, 1)->translation.getValue(), SbVec3f(8, 8, 8));
    at<SoVRMLPositionInterpolator>(root, 2)->set_fraction = 1;
    EXPECT_EQ(at<SoVRMLTransform>(root, 1)->translation.getValue(), SbVec3f(2, 0, 0));
}

TEST_F(AnimationTest, EventsThatGoRoundForEverAreCutOff)
{
    const auto root = scene(R"(
DEF A ScalarInterpolator { key [ 0 1 ] keyValue [ 1 0 ] }
DEF B ScalarInterpolator { key [ 0 1 ] keyValue [ 0 1 ] }
DEF V Viewpoint { } DEF W Viewpoint { }
ROUTE A.value_changed TO A.set_fraction
ROUTE A.value_changed TO B.set_fraction
ROUTE B.value_changed TO A.set_fraction
ROUTE V.isBound TO W.set_bind
ROUTE W.isBound TO V.set_bind)");
    ASSERT_TRUE(root);
    for (const float fraction : {0.0f, 1.0f, 0.25f})
        at<SoVRMLScalarInterpolator>(root, 0)->set_fraction = fraction;
    const float last = at<SoVRMLScalarInterpolator>(root, 0)->value_changed.getValue();
    EXPECT_TRUE(last == 0.25f || last == 0.75f) << last;
    at<SoVRMLViewpoint>(root, 2)->set_bind = true;
}

TEST_F(AnimationTest, GroupsTakeNodesInAndGiveThemAway)
{
    const auto root = scene(R"(
PROTO Stock [ exposedField MFNode kept [ Shape { } ] ] { Group { } }
DEF Store Stock { kept [ DEF A Group { } DEF B Group { } ] }
DEF G Transform { children [ USE B ] } DEF S Script { eventOut MFNode out }
ROUTE Store.kept TO G.addChildren
ROUTE S.out TO G.addChildren
ROUTE S.out TO Store.set_kept)");
    ASSERT_TRUE(root);
    auto* group = at<SoVRMLTransform>(root, 1);
    EXPECT_EQ(group->getNumChildren(), 1); // no event yet
    SoNode* store = root->getChild(0);
    auto* kept = static_cast<SoMFNode*>(store->getField(SbName("kept")));
    auto* out = static_cast<SoMFNode*>(root->getChild(2)->getField(SbName("out")));
    SoNode* b = group->getChild(0);
    kept->touch();
    EXPECT_EQ(group->getNumChildren(), 2);
    EXPECT_EQ(group->getChild(0), b);
    EXPECT_EQ(group->addChildren.getNum(), 0);
    const SoRef<SoNode> fresh(new SoVRMLGroup);
    out->setValues(std::vector<SoNode*>{fresh.get(), b, fresh.get()});
    EXPECT_EQ(group->getNumChildren(), 3);
    std::vector<SoNode*> going(20, fresh.get());
    group->removeChildren.setValues(going);
    EXPECT_EQ(group->getNumChildren(), 2);
    group->removeChildren.setValue(b);
    group->removeChildren.setValue(b); // is none any more
    EXPECT_EQ(group->getNumChildren(), 1);
    out->setValue(fresh.get());
    out->setValue(fresh.get());
    EXPECT_EQ(group->getNumChildren(), 2);
    group->removeChildren.setValue(fresh.get());
    out->setNum(0);
    kept->setNum(0);
    EXPECT_EQ(fresh->getRefCount(), 1) << "events keep nobody";
}

TEST_F(AnimationTest, ExposedFieldsOfPrototypesTellWhatHappensInside)
{
    const auto root = scene(R"(
PROTO Inner [ eventIn SFFloat go exposedField SFVec3f at 1 1 1 eventOut SFVec3f told ] {
  DEF T Transform { translation IS at translation_changed IS told }
  DEF P PositionInterpolator { set_fraction IS go key [ 0 1 ] keyValue [ 0 0 0, 4 0 0 ] value_changed IS told }
  ROUTE P.value_changed TO T.translation
}
PROTO Outer [ eventIn SFFloat go exposedField SFVec3f at 2 2 2 eventOut SFVec3f told ] {
  Inner { go IS go at IS at told IS told }
}
DEF O Outer { at 3 3 3 }
DEF R Transform { } DEF Q Transform { }
ROUTE O.at_changed TO R.translation
ROUTE O.told TO Q.translation)");
    ASSERT_TRUE(root);
    SoNode* outer = root->getChild(0);
    SbString text;
    outer->getField(SbName("at"))->get(text);
    EXPECT_EQ(text, "3 3 3");
    outer->getField(SbName("go"))->set("0.5");
    outer->getField(SbName("at"))->get(text);
    EXPECT_EQ(text, "2 0 0");
    EXPECT_EQ(at<SoVRMLTransform>(root, 1)->translation.getValue(), SbVec3f(2, 0, 0));
    EXPECT_EQ(at<SoVRMLTransform>(root, 2)->translation.getValue(), SbVec3f(2, 0, 0));
    outer->getField(SbName("at"))->set("7 0 0");
    const auto* inner = SoVRMLProtoInstance::resolve(outer);
    EXPECT_EQ(static_cast<const SoVRMLTransform*>(inner)->translation.getValue(), SbVec3f(7, 0, 0));
    EXPECT_EQ(at<SoVRMLTransform>(root, 2)->translation.getValue(), SbVec3f(7, 0, 0));
}

TEST_F(AnimationTest, OneNodeOfAKindIsBound)
{
    auto root = scene("Viewpoint { position 1 0 0 } DEF V Viewpoint { } DEF W Viewpoint { } "
                      "Fog { } DEF S Script { eventOut SFBool go } ROUTE S.go TO V.set_bind");
    ASSERT_TRUE(root);
    auto* first = at<SoVRMLViewpoint>(root, 0);
    auto* v = at<SoVRMLViewpoint>(root, 1);
    auto* w = at<SoVRMLViewpoint>(root, 2);
    const auto bound = [&] {
        std::string text;
        for (const auto* one : {first, v, w})
            text += one->isBound.getValue() ? '1' : '0';
        return text;
    };
    const SoType type = first->getTypeId();
    EXPECT_EQ(SoVRMLBindable::getBound(root.get(), type), nullptr);
    SoVRMLBindable::bindFirst(root.get());
    EXPECT_EQ(bound(), "100");
    EXPECT_GT(first->bindTime.getValue().getValue(), 0);
    EXPECT_TRUE(at<SoVRMLBindable>(root, 3)->isBound.getValue());
    root->getChild(4)->getField(SbName("go"))->set("TRUE");
    EXPECT_EQ(bound(), "010");
    w->set_bind = true;
    v->set_bind = true; // from the middle to the top
    EXPECT_EQ(bound(), "010");
    first->set_bind = false; // not on top: out of the stack
    v->set_bind = false;
    EXPECT_EQ(bound(), "001");
    v->set_bind = true;
    const SoRef<SoVRMLGroup> copy(static_cast<SoVRMLGroup*>(root->copy()));
    EXPECT_EQ(SoVRMLBindable::getBound(copy.get(), type), nullptr);
    EXPECT_FALSE(at<SoVRMLBindable>(copy, 1)->isBound.getValue());
    at<SoVRMLBindable>(copy, 0)->set_bind = true; // another world
    EXPECT_EQ(bound(), "010");
    root->removeChild(1);
    SoSensorManager::processDelayQueue(true);
    EXPECT_EQ(SoVRMLBindable::getBound(root.get(), type), w);
    EXPECT_TRUE(w->isBound.getValue());
    w->set_bind = false;
    EXPECT_EQ(SoVRMLBindable::getBound(root.get(), type), nullptr);
}

TEST_F(AnimationTest, ClocksKeepTheirPace)
{
    const support::Clock time;
    const auto root = scene("DEF C TimeSensor { loop TRUE cycleInterval 1000 } DEF P "
                            "ScalarInterpolator { } ROUTE C.fraction_changed TO P.set_fraction");
    ASSERT_TRUE(root);
    auto* clock = at<SoVRMLTimeSensor>(root, 0);
    const auto run = [] {
        support::Clock::advance(0.045);
        SoSensorManager::processTimerQueue();
    };
    const auto ago = [](double seconds) {
        return SbTime(std::floor(SbTime::getTimeOfDay().getValue()) - seconds);
    };
    const SbTime start = ago(2250);
    clock->startTime = start;
    run();
    EXPECT_NEAR(clock->fraction_changed.getValue(), 0.25f, 2e-3f);
    // What is set while it runs is for later; without a loop the cycle under way is the last.
    clock->startTime = ago(900);
    clock->cycleInterval = SbTime(10.0);
    clock->loop = false;
    run();
    EXPECT_TRUE(clock->isActive.getValue());
    EXPECT_NEAR(clock->fraction_changed.getValue(), 0.25f, 2e-3f);
    EXPECT_EQ(clock->cycleTime.getValue().getValue(), start.getValue() + 2000);
    clock->stopTime = SbTime(clock->cycleTime.getValue().getValue());
    run(); // stopped between two cycles: at the end of one
    EXPECT_FALSE(clock->isActive.getValue());
    EXPECT_EQ(clock->fraction_changed.getValue(), 1);
    run();
    EXPECT_FALSE(clock->isActive.getValue());
    clock->cycleInterval = SbTime(0.02);
    clock->startTime = ago(0);
    run();
    EXPECT_FALSE(clock->isActive.getValue()) << "a cycle that is over does not begin";
}

TEST_F(AnimationTest, ClocksRunWhileTheyAreFollowed)
{
    const support::Clock time;
    const auto root = scene(R"(
DEF Clock TimeSensor { cycleInterval 1000 loop TRUE startTime 1 }
DEF P PositionInterpolator { key [ 0 1 ] keyValue [ 0 0 0, 1000 0 0 ] }
DEF Idle TimeSensor { loop TRUE }
ROUTE Clock.fraction_changed TO P.set_fraction)");
    ASSERT_TRUE(root);
    SbTime next;
    ASSERT_TRUE(SoSensorManager::isTimerSensorPending(next));
    const auto* place = at<SoVRMLPositionInterpolator>(root, 1);
    const auto run = [] {
        support::Clock::advance(0.050);
        SoSensorManager::processTimerQueue();
    };
    run();
    const float first = place->value_changed.getValue()[0];
    run();
    EXPECT_GT(place->value_changed.getValue()[0], first);
    EXPECT_FALSE(at<SoVRMLTimeSensor>(root, 2)->isActive.getValue());
    auto* clock = at<SoVRMLTimeSensor>(root, 0);
    EXPECT_TRUE(clock->isActive.getValue());
    clock->enabled = false;
    run();
    EXPECT_FALSE(clock->isActive.getValue());
    // A clock that ran out says so with its last fraction and waits.
    clock->enabled = true;
    clock->loop = false;
    clock->cycleInterval = SbTime(0.01);
    clock->startTime = SbTime::getTimeOfDay();
    SoSensorManager::processTimerQueue();
    run();
    run();
    EXPECT_FALSE(clock->isActive.getValue());
}
