#include "NodesSupport.h"
#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCube.h>

namespace {

/// Two cubes side by side seen by a camera: the left and right quarter of the picture show them.
class SelectionTest : public nodetest::NodesTest {
protected:
    void SetUp() override
    {
        NodesTest::SetUp();
        root = new SoSeparator;
        selection = new SoSelection;
        auto* camera = new SoOrthographicCamera;
        camera->height.setValue(8);
        camera->position.setValue(0, 0, 5);
        root->addChild(camera);
        root->addChild(selection);
        left = addCube(-2);
        right = addCube(4);
        selection->addSelectionCallback(
            [](void* log, SoPath*) { *static_cast<std::string*>(log) += '+'; }, &log);
        selection->addDeselectionCallback(
            [](void* log, SoPath*) { *static_cast<std::string*>(log) += '-'; }, &log);
        selection->addChangeCallback(
            [](void* log, SoSelection*) { *static_cast<std::string*>(log) += '!'; }, &log);
    }

    SoCube* addCube(float x)
    {
        auto* move = new SoTranslation;
        move->translation.setValue(x, 0, 0);
        auto* cube = new SoCube;
        selection->addChild(move);
        selection->addChild(cube);
        return cube;
    }

    bool press(short x, bool shift = false)
    {
        SoMouseButtonEvent event;
        event.setButton(SoMouseButtonEvent::BUTTON1);
        event.setState(SoButtonEvent::DOWN);
        event.setPosition({x, 50});
        event.setShiftDown(shift);
        SoHandleEventAction action(SbViewportRegion(100, 100));
        action.setEvent(&event);
        action.apply(root.get());
        return action.isHandled();
    }

    std::string takeLog() { return std::exchange(log, std::string()); }

    SoRef<SoSeparator> root;
    SoSelection* selection = nullptr;
    SoCube* left = nullptr;
    SoCube* right = nullptr;
    std::string log;
    static constexpr short kLeft = 25, kRight = 75, kNothing = 50;
};

} // namespace

TEST_F(SelectionTest, PicksUnderTheSinglePolicy)
{
    selection->policy.setValue(SoSelection::SINGLE);
    EXPECT_TRUE(press(kLeft));
    EXPECT_TRUE(selection->isSelected(left));
    ASSERT_EQ(selection->getNumSelected(), 1);
    EXPECT_EQ(selection->getPath(0)->getHead(), selection);
    EXPECT_EQ(takeLog(), "+!");
    press(kLeft);
    EXPECT_EQ(takeLog(), "");
    press(kRight, true);
    EXPECT_FALSE(selection->isSelected(left));
    EXPECT_TRUE(selection->isSelected(right));
    EXPECT_EQ(takeLog(), "-+!");
    EXPECT_FALSE(press(kNothing));
    EXPECT_EQ(selection->getNumSelected(), 0);
    EXPECT_EQ(takeLog(), "-!");
}

TEST_F(SelectionTest, PicksUnderTheTogglingPolicies)
{
    selection->policy.setValue(SoSelection::TOGGLE);
    press(kLeft);
    press(kRight);
    EXPECT_EQ(selection->getNumSelected(), 2);
    press(kLeft);
    press(kNothing);
    EXPECT_EQ(selection->getNumSelected(), 1);
    selection->policy.setValue(SoSelection::SHIFT);
    press(kLeft, true);
    EXPECT_EQ(selection->getNumSelected(), 2);
    press(kLeft, false);
    EXPECT_EQ(selection->getNumSelected(), 1);
    EXPECT_TRUE(selection->isSelected(left));
}

TEST_F(SelectionTest, SelectsByNodeAndPath)
{
    selection->select(right);
    const SoRef<SoPath> fromRoot(new SoPath(root.get()));
    fromRoot->append(1);
    fromRoot->append(1);
    selection->select(fromRoot.get());
    EXPECT_TRUE(selection->isSelected(left));
    EXPECT_EQ(selection->getNumSelected(), 2);
    const std::uint64_t id = selection->getSelectionId();
    selection->select(fromRoot.get());
    EXPECT_EQ(selection->getSelectionId(), id);
    selection->toggle(right);
    EXPECT_EQ(selection->getNumSelected(), 1);
    selection->deselect(left);
    selection->deselect(left);
    EXPECT_EQ(selection->getNumSelected(), 0);

    auto errors = support::expectErrors();
    const SoRef<SoPath> elsewhere(new SoPath(left));
    selection->select(elsewhere.get());
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(SelectionTest, CallbacksMayChangeTheSelection)
{
    struct Data {
        SoSelection* selection;
        SoCube* other;
    } data{selection, right};
    selection->addSelectionCallback(
        [](void* p, SoPath* path) {
            auto* d = static_cast<Data*>(p);
            if (path->getTail() != d->other)
                d->selection->select(d->other);
        },
        &data);
    selection->select(left);
    EXPECT_EQ(selection->getNumSelected(), 2);
    selection->setPickFilterCallback([](void*, SoPath*) -> SoPath* { return nullptr; });
    press(kNothing);
    press(kLeft);
    EXPECT_EQ(selection->getNumSelected(), 0);
}

TEST_F(SelectionTest, DiesWithWhatItHasSelected)
{
    selection->select(left);
    selection->select(right);
    const SoRef<SoPath> held(selection->getPath(1));
    EXPECT_EQ(selection->getRefCount(), 1); // the root's
    bool isGone = false;
    struct Watch final : SoAuditor {
        bool* gone = nullptr;
        void auditedChanged(SoNotification&) override {}
        void auditedDying() override { *gone = true; }
    } watch;
    watch.gone = &isGone;
    selection->addAuditor(&watch, SoAuditor::SENSOR);
    root = nullptr;
    EXPECT_TRUE(isGone);
    EXPECT_TRUE(held->isEmpty());
}

TEST_F(SelectionTest, WorksWhileNobodyHoldsIt)
{
    auto* loose = new SoSelection;
    auto* cube = new SoCube;
    loose->addChild(cube);
    loose->select(cube);
    EXPECT_TRUE(loose->isSelected(loose->getPath(0)));
    loose->toggle(cube);
    EXPECT_EQ(loose->getNumSelected(), 0);
    loose->select(cube);
    EXPECT_EQ(loose->getRefCount(), 0);
    loose->ref();
    loose->unref();
}

TEST_F(SelectionTest, FollowsWhatIsSelectedAndForgetsWhatIsTakenOut)
{
    selection->select(left);
    selection->select(right);
    selection->insertChild(new SoTranslation, 0);
    EXPECT_EQ(selection->getPath(1)->getIndex(1), 4);
    log.clear();
    const auto id = selection->getSelectionId();
    selection->removeChild(right);
    EXPECT_EQ(selection->getNumSelected(), 1);
    EXPECT_TRUE(selection->isSelected(left));
    EXPECT_NE(selection->getSelectionId(), id);
    EXPECT_EQ(log, "");
    EXPECT_EQ(selection->getRefCount(), 1);
}

TEST_F(SelectionTest, EventCallbacksComeFirstAndByType)
{
    auto* callback = new SoEventCallback;
    int calls = 0;
    const auto count = [](void* n, SoEventCallback* node) {
        ++*static_cast<int*>(n);
        EXPECT_NE(node->getEvent(), nullptr);
        node->setHandled();
    };
    callback->addEventCallback(SoMouseButtonEvent::getClassTypeId(), count, &calls);
    callback->addEventCallback(SoKeyboardEvent::getClassTypeId(), count, &calls);
    selection->addChild(callback);
    EXPECT_TRUE(press(kLeft));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(selection->getNumSelected(), 0);
    EXPECT_EQ(callback->getEvent(), nullptr);

    const SoRef<SoPath> overLeft(new SoPath(root.get()));
    overLeft->append(1);
    overLeft->append(1);
    callback->setPath(overLeft.get());
    EXPECT_TRUE(press(kRight));
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(selection->isSelected(right));
    press(kLeft);
    EXPECT_EQ(calls, 2);
    callback->removeEventCallback(SoMouseButtonEvent::getClassTypeId(), count, &calls);
    press(kLeft);
    EXPECT_EQ(calls, 2);
}
