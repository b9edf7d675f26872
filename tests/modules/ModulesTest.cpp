#include "support/Clock.h"
#include "support/HostScene.h"

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/actions/SoPrimitiveVertex.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/animation/SoBlinker.h>
#include <kalmyr/animation/SoPendulum.h>
#include <kalmyr/animation/SoRotor.h>
#include <kalmyr/animation/SoShuttle.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/copies/SoArray.h>
#include <kalmyr/copies/SoMultipleCopy.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/manips/SoTransformManip.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/tilevex/TvSymTool.h>

#include <algorithm>
#include <array>
#include <cmath>

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

/// Lets time go by in steps of 2 milliseconds.
void run(int numSteps)
{
    for (int i = 0; i < numSteps; ++i) {
        support::Clock::advance(0.002);
        SoSensorManager::processTimerQueue();
        SoSensorManager::processDelayQueue(true);
    }
}

/// A host's group that repeats its children by itself.
class Repeater : public SoGroup {
    SO_NODE_HEADER(Repeater)

public:
    Repeater() { SO_NODE_CONSTRUCTOR(SoGroup); }
    static void initClass()
    {
        if (getClassTypeId().isBad())
            SO_NODE_INIT_CLASS(Repeater, SoGroup, "ModulesTestRepeater");
    }
    void doAction(SoAction* action) override
    {
        // Each beyond the one before, without push and pop.
        for (int i = 0; i < 3; ++i) {
            action->traverseChildren(m_children);
            SbMatrix step;
            step.setTranslate({10, 0, 0});
            SoModelMatrixElement::mult(action->getState(), this, step);
        }
    }
};
SO_NODE_SOURCE(Repeater)

/// What actions find of a scene, in an order that does not depend on how it was walked.
struct Findings {
    std::vector<std::array<float, 4>> hits; ///< points and distances
    std::vector<std::array<float, 3>> corners;
    SbBox3f box;
    std::vector<bool> presses; ///< handled at these places

    explicit Findings(SoNode* root)
    {
        const auto rounded = [](float value) { return std::round(value * 1000) / 1000; };
        for (const SbVec3f& from : {SbVec3f(0.2f, 0.1f, 9), SbVec3f(10.3f, 0.2f, 9),
                                    SbVec3f(20.4f, 0.1f, 9), SbVec3f(5, 0, 9)}) {
            SoRayPickAction pick{SbViewportRegion()};
            pick.setPickAll(true);
            pick.setRay(from, {0, 0, -1});
            pick.apply(root);
            for (const SoPickedPoint& point : pick.getPickedPoints())
                hits.push_back({rounded(point.getPoint()[0]), rounded(point.getPoint()[1]),
                                rounded(point.getPoint()[2]), rounded(point.getDistance())});
        }
        // Along all of them: every copy is met.
        SoRayPickAction along{SbViewportRegion()};
        along.setPickAll(true);
        along.setRay({-9, 0.1f, 0.2f}, {1, 0, 0});
        along.apply(root);
        for (const SoPickedPoint& point : along.getPickedPoints())
            hits.push_back({rounded(point.getPoint()[0]), rounded(point.getPoint()[1]),
                            rounded(point.getPoint()[2]), rounded(point.getDistance())});
        std::sort(hits.begin(), hits.end());
        SoCallbackAction callback;
        callback.addTriangleCallback(
            SoShape::getClassTypeId(),
            [&](SoCallbackAction* action, const SoNode*, const SoPrimitiveVertex& a,
                const SoPrimitiveVertex& b, const SoPrimitiveVertex& c) {
                const SbMatrix& matrix = SoModelMatrixElement::get(action->getState());
                for (const SoPrimitiveVertex* v : {&a, &b, &c}) {
                    const SbVec3f p = matrix.point(v->point);
                    corners.push_back({rounded(p[0]), rounded(p[1]), rounded(p[2])});
                }
            });
        callback.apply(root);
        std::sort(corners.begin(), corners.end());
        SoGetBoundingBoxAction bounds{SbViewportRegion()};
        bounds.apply(root);
        box = bounds.getBoundingBox();
    }
};

TEST_F(ModulesTest, RepeatedChildrenAreAsIfWrittenOut)
{
    Repeater::initClass();
    const auto part = [] {
        const SoRef<SoSeparator> made(new SoSeparator);
        auto* turn = new SoTransform;
        turn->rotation = SbRotation(SbVec3f(0, 0, 1), 0.3f);
        made->addChild(turn);
        made->addChild(new SoCube);
        return made;
    };
    const SoRef<SoSeparator> writtenOut(new SoSeparator);
    for (int i = 0; i < 3; ++i) {
        auto* place = new SoTransform;
        place->translation = SbVec3f(i == 0 ? 0.0f : 10.0f, 0, 0);
        writtenOut->addChild(place);
        writtenOut->addChild(part().get());
    }
    const Findings wanted(writtenOut.get());
    ASSERT_EQ(wanted.hits.size(), 3 * 2u + 3 * 2u);

    const SoRef<SoArray> array(new SoArray);
    array->numElements1 = std::int16_t{3};
    array->separation1 = SbVec3f(10, 0, 0);
    const SoRef<SoMultipleCopy> copies(new SoMultipleCopy);
    for (int i = 0; i < 3; ++i) {
        SbMatrix matrix;
        matrix.setTranslate({10.0f * static_cast<float>(i), 0, 0});
        copies->matrix.set1Value(i, matrix);
    }
    const SoRef<SoGroup> repeater(new Repeater);
    for (SoGroup* group : {static_cast<SoGroup*>(array.get()), static_cast<SoGroup*>(copies.get()),
                           repeater.get()}) {
        SCOPED_TRACE(group->getTypeId().getName().getString());
        const SoRef<SoSeparator> root(new SoSeparator);
        root->addChild(group);
        group->addChild(part().get());
        for (int again = 0; again < 2; ++again) { // then with remembered boxes
            const Findings found(root.get());
            EXPECT_EQ(found.hits, wanted.hits);
            EXPECT_EQ(found.corners, wanted.corners);
            EXPECT_TRUE(found.box.getMin().equals(wanted.box.getMin(), 1e-4f));
            EXPECT_TRUE(found.box.getMax().equals(wanted.box.getMax(), 1e-4f));
        }
        SoSearchAction search;
        search.setType(SoCube::getClassTypeId());
        search.setInterest(SoSearchAction::ALL);
        search.apply(root.get());
        EXPECT_GE(search.getPaths().size(), 1u);
        for (const SoRef<SoPath>& path : search.getPaths())
            EXPECT_EQ(path->getTail(), search.getPaths()[0]->getTail());
        // Over the third one.
        SoEventCallback* listener = new SoEventCallback;
        const SoRef<SoPath> under(new SoPath(root.get()));
        under->append(0);
        under->append(0);
        under->append(1);
        listener->setPath(under.get());
        root->insertChild(listener, 0);
        auto* camera = new SoOrthographicCamera;
        camera->position = SbVec3f(20, 0, 5);
        camera->height = 4;
        root->insertChild(camera, 0);
        std::vector<float> heard; // where, along the row
        listener->addEventCallback(
            SoMouseButtonEvent::getClassTypeId(),
            [](void* data, SoEventCallback* node) {
                const SoPickedPoint* point = node->getAction()->getPickedPoint();
                static_cast<std::vector<float>*>(data)->push_back(point ? point->getPoint()[0]
                                                                        : -1);
            },
            &heard);
        SoMouseButtonEvent press;
        press.setButton(SoMouseButtonEvent::BUTTON1);
        press.setState(SoButtonEvent::DOWN);
        press.setPosition(SbVec2s(50, 50));
        SoHandleEventAction handle{SbViewportRegion(100, 100)};
        handle.setEvent(&press);
        handle.apply(root.get());
        ASSERT_EQ(heard.size(), 1u);
        EXPECT_NEAR(heard[0], 20, 0.1f);
    }
}

TEST_F(ModulesTest, AnimatedNodesMoveUntilTheyAreSwitchedOff)
{
    const support::Clock clock;
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
    run(60);
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
    run(25);
    EXPECT_EQ(rotor->rotation.getValue(), still);
    EXPECT_FALSE(copy->rotation.getValue() == still) << "a copy goes on";
    EXPECT_TRUE(twin->getField("rotation")->isDefault()) << "it is compared with";
}

} // namespace
