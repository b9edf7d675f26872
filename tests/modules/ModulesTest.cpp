#include "support/HostScene.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/animation/SoBlinker.h>
#include <kalmyr/animation/SoPendulum.h>
#include <kalmyr/animation/SoRotor.h>
#include <kalmyr/animation/SoShuttle.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/copies/SoArray.h>
#include <kalmyr/copies/SoMultipleCopy.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/lights/SoPointLight.h>
#include <kalmyr/manips/SoPointLightManip.h>
#include <kalmyr/manips/SoTransformManip.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/tilevex/TvSymTool.h>

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

namespace {

constexpr const char* kModules[] = {"Animation", "Copies", "Draggers", "Manips"};

class ModulesTest : public testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        for (const char* name : kModules)
            ASSERT_TRUE(TvSymTool::initModule(name)) << name;
    }
    void TearDown() override
    {
        for (const char* name : kModules)
            TvSymTool::finishModule(name);
    }

    static SoRef<SoSeparator> read(const std::string& text)
    {
        SoInput in;
        in.setBuffer(text.data(), text.size());
        return SoRef<SoSeparator>(SoDB::readAll(&in));
    }
};

TEST_F(ModulesTest, KnowTheirNodesOnlyWhileTheyAreStarted)
{
    TearDown();
    for (const char* type : {"Rotor", "MultipleCopy", "Dragger", "TransformManip"})
        EXPECT_TRUE(SoType::fromName(type).isBad()) << type;
    ASSERT_TRUE(TvSymTool::initModule("Manips"));
    EXPECT_FALSE(SoType::fromName("Dragger").isBad()) << "needed by it";
    ASSERT_TRUE(TvSymTool::finishModule("Manips"));
    EXPECT_TRUE(SoType::fromName("Dragger").isBad());
    SetUp();
    for (const char* type : {"Rotor", "Pendulum", "Shuttle", "Blinker", "MultipleCopy", "Array",
                             "Translate2Dragger", "TransformManip", "SpotLightManip"})
        EXPECT_FALSE(SoType::fromName(type).isBad()) << type;
}

TEST_F(ModulesTest, ReadAndWriteTheirNodes)
{
    const char* text =
        "#Kalmyr V1.0 ascii\nSeparator { Rotor { rotation 0 1 0 1 speed 0.5 on FALSE } "
        "Array { numElements1 3 origin CENTER Cube {} } TransformManip { translation 1 2 3 } "
        "PointLightManip { location 4 5 6 } Translate2Dragger { translation 1 1 0 } }";
    const SoRef<SoSeparator> scene = read(text);
    ASSERT_TRUE(scene);
    const std::string once = support::writeScene(scene.get());
    EXPECT_NE(once.find("TransformManip"), std::string::npos) << once;
    EXPECT_EQ(once.find("TransformDragger"), std::string::npos) << "its own business: " << once;
    EXPECT_EQ(once.find("drawStyle"), std::string::npos) << "as a new dragger makes it: " << once;
    EXPECT_EQ(support::writeScene(read(once).get()), once);
    SoSearchAction search;
    search.setType(SoTransformManip::getClassTypeId());
    search.apply(scene.get());
    EXPECT_NE(search.getPath(), nullptr);
}

TEST_F(ModulesTest, CopiesAreCountedAndMeasured)
{
    const SoRef<SoArray> array(new SoArray);
    array->numElements1 = 3;
    array->numElements2 = 2;
    array->separation1 = SbVec3f(10, 0, 0);
    array->origin = SoArray::CENTER;
    array->addChild(new SoCube);
    SoGetPrimitiveCountAction count;
    count.apply(array.get());
    EXPECT_EQ(count.getTriangleCount(), 6U * 12U);
    SoGetBoundingBoxAction box(SbViewportRegion(100, 100));
    box.apply(array.get());
    EXPECT_EQ(box.getBoundingBox(), SbBox3f(SbVec3f(-11, -1.5f, -1), SbVec3f(11, 1.5f, 1)));
    array->numElements1 = 32767;
    array->numElements2 = 32767;
    array->numElements3 = 32767;
    EXPECT_EQ(array->getNumCopies(), SoCopies::kMaxCopies);

    const SoRef<SoMultipleCopy> copies(new SoMultipleCopy);
    copies->addChild(new SoCube);
    copies->matrix.setNum(0);
    count.apply(copies.get());
    EXPECT_EQ(count.getTriangleCount(), 0U);
}

/// Lets real time go by.
void wait(int milliseconds)
{
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (std::chrono::steady_clock::now() < until) {
        SoSensorManager::processTimerQueue();
        SoSensorManager::processDelayQueue(true);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

TEST_F(ModulesTest, AnimatedNodesMoveUntilTheyAreSwitchedOff)
{
    const SoRef<SoRotor> rotor(new SoRotor);
    rotor->rotation = SbRotation(SbVec3f(0, 1, 0), 1);
    rotor->speed = 0.1F;
    const SoRef<SoShuttle> shuttle(new SoShuttle);
    shuttle->translation1 = SbVec3f(8, 0, 0);
    shuttle->speed = 0.1F;
    const SoRef<SoPendulum> pendulum(new SoPendulum);
    pendulum->rotation1 = SbRotation(SbVec3f(0, 0, 1), 1);
    pendulum->speed = 0.1F;
    const SoRef<SoBlinker> blinker(new SoBlinker);
    blinker->speed = 0.01F;
    blinker->addChild(new SoCube);
    wait(120);
    SbVec3f axis;
    float angle = 0;
    rotor->rotation.getValue().getValue(axis, angle);
    EXPECT_GT(angle, 1.01F);
    EXPECT_NEAR(axis[1], 1, 1e-4);
    EXPECT_GT(shuttle->translation.getValue()[0], 0);
    EXPECT_LE(shuttle->translation.getValue()[0], 8);
    EXPECT_FALSE(pendulum->rotation.getValue() == SbRotation());
    EXPECT_EQ(blinker->whichChild.getValue(), 0) << "the first half of its round";

    const SoRef<SoFieldContainer> twin(rotor->createTwin());
    const SoRef<SoRotor> copy(static_cast<SoRotor*>(rotor->copy()));
    rotor->on = false;
    const SbRotation still = rotor->rotation.getValue();
    wait(50);
    EXPECT_EQ(rotor->rotation.getValue(), still);
    EXPECT_FALSE(copy->rotation.getValue() == still) << "a copy goes on";
    EXPECT_TRUE(twin->getField("rotation")->isDefault()) << "it is compared with";
}

/// A scene seen straight from the front, 10 units high in a window of 100 pixels.
class DraggingTest : public ModulesTest {
protected:
    void SetUp() override
    {
        ModulesTest::SetUp();
        root = new SoSeparator;
        auto* camera = new SoOrthographicCamera;
        camera->height = 10;
        camera->position = SbVec3f(0, 0, 20);
        camera->farDistance = 100;
        root->addChild(camera);
        region = SbViewportRegion(100, 100);
        action = std::make_unique<SoHandleEventAction>(region);
    }
    void press(short x, short y, SoButtonEvent::State state = SoButtonEvent::DOWN)
    {
        SoMouseButtonEvent event;
        event.setButton(SoMouseButtonEvent::BUTTON1);
        event.setState(state);
        send(event, x, y);
    }
    void moveTo(short x, short y, bool shift = false)
    {
        SoLocation2Event event;
        event.setShiftDown(shift);
        send(event, x, y);
    }
    void send(SoEvent& event, short x, short y)
    {
        event.setPosition(SbVec2s(x, y));
        action->setEvent(&event);
        action->apply(root.get());
    }

    SoRef<SoSeparator> root;
    SbViewportRegion region;
    std::unique_ptr<SoHandleEventAction> action;
};

TEST_F(DraggingTest, ATransformFollowsTheMouse)
{
    const SoRef<SoTransformManip> manip(new SoTransformManip);
    root->addChild(manip.get());
    root->addChild(new SoCube);
    moveTo(80, 50);
    EXPECT_FALSE(action->isHandled());
    press(55, 50);
    EXPECT_TRUE(action->isHandled());
    moveTo(75, 60);
    EXPECT_TRUE(manip->translation.getValue().equals(SbVec3f(2, 1, 0), 1e-3F))
        << manip->translation.getValue()[0] << ' ' << manip->translation.getValue()[1];
    press(75, 60, SoButtonEvent::UP);
    moveTo(20, 20);
    EXPECT_TRUE(manip->translation.getValue().equals(SbVec3f(2, 1, 0), 1e-3F)) << "let go of";

    press(74, 60);
    moveTo(76, 60, true);
    EXPECT_FALSE(manip->rotation.getValue() == SbRotation()) << "with Shift it turns";
    press(76, 60, SoButtonEvent::UP);

    manip->translation = SbVec3f(-3, 0, 0); // somebody else moves it: the dragger goes along
    press(20, 50);
    EXPECT_TRUE(action->isHandled());
}

TEST_F(DraggingTest, ManipsComeAndGoWithTheValues)
{
    const SoRef<SoPointLight> light(new SoPointLight);
    light->location = SbVec3f(1, 2, 3);
    light->intensity = 0.5F;
    root->addChild(light.get());
    const SoRef<SoPath> path(new SoPath(root.get()));
    path->append(1);
    const SoRef<SoPointLightManip> manip(new SoPointLightManip);
    ASSERT_TRUE(SoManip::replaceNode(path.get(), manip.get()));
    EXPECT_EQ(root->getChild(1), manip.get());
    EXPECT_EQ(manip->intensity.getValue(), 0.5F);
    press(60, 70);
    moveTo(50, 70);
    press(50, 70, SoButtonEvent::UP);
    EXPECT_TRUE(manip->location.getValue().equals(SbVec3f(0, 2, 3), 1e-3F));
    const SoRef<SoPath> back(new SoPath(root.get()));
    back->append(1);
    const SoRef<SoPointLight> plain(new SoPointLight);
    ASSERT_TRUE(SoManip::replaceNode(back.get(), plain.get()));
    EXPECT_TRUE(plain->location.getValue().equals(SbVec3f(0, 2, 3), 1e-3F));
    EXPECT_FALSE(SoManip::replaceNode(SoRef<SoPath>(new SoPath(root.get())).get(), manip.get()));
}

} // namespace
