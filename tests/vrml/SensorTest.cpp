#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLAnchor.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLSensors.h>
#include <kalmyr/vrml/SoVRMLTransform.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>

namespace {

/// A scene seen along -z: 100 pixels show 10 units, the origin in the middle.
class SensorTest : public testing::Test {
protected:
    SensorTest() { SoDB::init(); }

    void load(const std::string& body)
    {
        const std::string text = "#VRML V2.0 utf8\n" + body;
        SoInput in;
        in.setBuffer(text.data(), text.size());
        m_content = SoDB::readAllVRML(&in);
        m_root = new SoSeparator;
        m_camera = new SoOrthographicCamera;
        m_camera->position.setValue(0, 0, 10);
        m_camera->height = 10;
        m_camera->nearDistance = 1;
        m_camera->farDistance = 100;
        m_root->addChild(m_camera.get());
        m_root->addChild(m_content.get());
    }
    template <class Event>
    bool send(Event& event, float x, float y)
    {
        event.setPosition(
            SbVec2s(static_cast<short>(50 + 10 * x), static_cast<short>(50 + 10 * y)));
        m_action.setEvent(&event);
        m_action.apply(m_root.get());
        return m_action.isHandled();
    }
    bool move(float x, float y)
    {
        SoLocation2Event event;
        return send(event, x, y);
    }
    bool button(SoButtonEvent::State state, float x, float y)
    {
        SoMouseButtonEvent event;
        event.setButton(SoMouseButtonEvent::BUTTON1);
        event.setState(state);
        event.setTime(SbTime(42.0));
        return send(event, x, y);
    }
    bool press(float x, float y) { return button(SoButtonEvent::DOWN, x, y); }
    bool release(float x, float y) { return button(SoButtonEvent::UP, x, y); }
    template <class T>
    T* named(const char* name)
    {
        return static_cast<T*>(SoNode::getByName(SbName(name)));
    }

    SoRef<SoVRMLGroup> m_content;
    SoRef<SoOrthographicCamera> m_camera;
    SoRef<SoSeparator> m_root;
    SoHandleEventAction m_action{SbViewportRegion(100, 100)};
};

} // namespace

TEST_F(SensorTest, TouchSensorsTellOverPressAndClick)
{
    load("Transform { translation 2 0 0 children [ DEF TS TouchSensor { } "
         "Group { children Shape { geometry Box { } } } ] }\n"
         "Transform { translation -3 0 0 children Shape { geometry Box { } } }");
    auto* touch = named<SoVRMLTouchSensor>("TS");
    move(-3, 0);
    EXPECT_FALSE(touch->isOver.getValue());
    EXPECT_FALSE(move(2.5f, 0));
    EXPECT_TRUE(touch->isOver.getValue());
    EXPECT_NEAR(touch->hitPoint_changed.getValue()[0], 0.5f, 0.1f); // in the group's space
    EXPECT_EQ(touch->hitNormal_changed.getValue(), SbVec3f(0, 0, 1));
    EXPECT_TRUE(press(2, 0));
    EXPECT_TRUE(touch->isActive.getValue());
    EXPECT_TRUE(release(-3, 0)); // elsewhere: no click
    EXPECT_FALSE(touch->isActive.getValue());
    EXPECT_EQ(touch->touchTime.getValue(), SbTime());
    press(2, 0);
    release(2, 0);
    EXPECT_EQ(touch->touchTime.getValue(), SbTime(42.0));
    EXPECT_FALSE(press(-3, 0)); // another shape
    EXPECT_TRUE(touch->isOver.getValue());
    touch->enabled = false;
    EXPECT_FALSE(press(2, 0));
    EXPECT_FALSE(touch->isOver.getValue());
}

TEST_F(SensorTest, InnerSensorsComeBeforeOuterOnes)
{
    load("Group { children [ DEF OUT TouchSensor { } Shape { geometry Box { } } Transform { "
         "translation 3 0 0 children [ DEF IN TouchSensor { } Shape { geometry Box { } } ] } ] }");
    move(3, 0);
    EXPECT_TRUE(named<SoVRMLTouchSensor>("IN")->isOver.getValue());
    EXPECT_FALSE(named<SoVRMLTouchSensor>("OUT")->isOver.getValue());
    move(0, 0);
    EXPECT_FALSE(named<SoVRMLTouchSensor>("IN")->isOver.getValue());
    EXPECT_TRUE(named<SoVRMLTouchSensor>("OUT")->isOver.getValue());
}

TEST_F(SensorTest, PlaneSensorsMoveWithinTheirLimits)
{
    load("Group { children [ DEF PS PlaneSensor { minPosition 0 -1 maxPosition 3 -2 } "
         "DEF T Transform { children Shape { geometry Box { } } } ] }\n"
         "ROUTE PS.translation_changed TO T.translation");
    const auto* moved = named<SoVRMLTransform>("T");
    press(0, 0);
    move(2, 1);
    EXPECT_NEAR(moved->translation.getValue()[0], 2, 0.01f);
    EXPECT_NEAR(moved->translation.getValue()[1], 1, 0.01f); // not limited: min above max
    move(4.5f, 0);
    EXPECT_NEAR(moved->translation.getValue()[0], 3, 0.01f);
    release(4.5f, 0);
    press(3, 0);
    move(2, 0); // goes on from where it was left
    EXPECT_NEAR(moved->translation.getValue()[0], 2, 0.01f);
    release(2, 0);
}

TEST_F(SensorTest, CylinderAndSphereSensorsTurn)
{
    load("Transform { children [ DEF CS CylinderSensor { maxAngle 1 minAngle -1 } "
         "Shape { geometry Cylinder { radius 2 } } ] }\n"
         "Transform { translation 0 3.5 0 children [ DEF SS SphereSensor { } "
         "Shape { geometry Sphere { } } ] }");
    SbVec3f axis;
    float angle = 0;
    press(0, 0);
    move(1, 0);
    named<SoVRMLCylinderSensor>("CS")->rotation_changed.getValue().getValue(axis, angle);
    EXPECT_NEAR(axis[1], 1, 1e-3f);
    EXPECT_NEAR(angle, std::asin(0.5f), 0.02f);
    move(4, 0);
    release(4, 0);
    named<SoVRMLCylinderSensor>("CS")->rotation_changed.getValue().getValue(axis, angle);
    EXPECT_NEAR(angle, 1, 1e-3f);
    EXPECT_NEAR(named<SoVRMLCylinderSensor>("CS")->offset.getValue(), 1, 1e-3f);

    press(0, 3.5f);
    move(0, 4);
    release(0, 4);
    auto* ball = named<SoVRMLSphereSensor>("SS");
    ball->rotation_changed.getValue().getValue(axis, angle);
    EXPECT_NEAR(axis[0], -1, 0.01f);
    EXPECT_NEAR(angle, std::asin(0.5f), 0.05f);
    EXPECT_TRUE(ball->offset.getValue().equals(ball->rotation_changed.getValue(), 1e-5f));
}

TEST_F(SensorTest, SensorsOfTheViewerFollowTheCamera)
{
    load("DEF PX ProximitySensor { center 0 0 10 size 4 4 4 }\n"
         "DEF VS VisibilitySensor { size 1 1 1 }");
    const auto* near = named<SoVRMLProximitySensor>("PX");
    const auto* seen = named<SoVRMLVisibilitySensor>("VS");
    move(0, 0);
    EXPECT_TRUE(near->isActive.getValue());
    EXPECT_LT((near->position_changed.getValue() - SbVec3f(0, 0, 10)).length(), 1e-4f);
    EXPECT_TRUE(seen->isActive.getValue());
    m_camera->position.setValue(50, 0, 10);
    move(0, 0);
    EXPECT_FALSE(near->isActive.getValue());
    EXPECT_FALSE(seen->isActive.getValue());
    EXPECT_GT(near->exitTime.getValue().getValue(), 0);
}

TEST_F(SensorTest, AnchorsAreFollowedByAPress)
{
    load("Anchor { url [ \"a.wrl\" \"b.wrl\" ] children Shape { geometry Box { } } }\n"
         "DEF Here Viewpoint { } Transform { translation 3 0 0 children Anchor { "
         "url [ \"#There\" \"#Here\" ] children Shape { geometry Box { } } } }");
    EXPECT_TRUE(press(3, 0));
    EXPECT_TRUE(named<SoVRMLViewpoint>("Here")->isBound.getValue());
    EXPECT_FALSE(press(0, 0)); // nobody follows links
    std::string asked;
    SoVRMLAnchor::setFetchURLCallBack(
        [](const SbString& url, void* data, SoVRMLAnchor*) {
            *static_cast<std::string*>(data) += url.toStdString() + " ";
            return url == "b.wrl";
        },
        &asked);
    EXPECT_FALSE(press(4, 4));
    EXPECT_TRUE(press(0, 0));
    SoVRMLAnchor::setFetchURLCallBack(nullptr, nullptr);
    EXPECT_EQ(asked, "a.wrl b.wrl ");
}
