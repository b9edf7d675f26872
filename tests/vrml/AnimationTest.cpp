#include "support/ErrorGuard.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInterpolators.h>
#include <kalmyr/vrml/SoVRMLSensors.h>
#include <kalmyr/vrml/SoVRMLTransform.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

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

TEST_F(AnimationTest, ClocksRunWhileTheyAreFollowed)
{
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
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
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
