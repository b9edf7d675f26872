#include "ActionTestNodes.h"

#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/shapes/SoCube.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>

using namespace actiontest;

namespace {

/// Writes its name when it is asked, and does what it is told.
class Listener : public SoNode {
    SO_NODE_HEADER(Listener)

public:
    Listener() { SO_NODE_CONSTRUCTOR(SoNode); }
    static void initClass()
    {
        SO_NODE_INIT_CLASS(Listener, SoNode, "TestListener");
        SoHandleEventAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
            s_heard += node->getName().getString();
            const auto& react = static_cast<Listener*>(node)->react;
            if (react)
                react(static_cast<SoHandleEventAction*>(action));
        });
    }
    std::function<void(SoHandleEventAction*)> react;
    static std::string s_heard;
};
SO_NODE_SOURCE(Listener)
std::string Listener::s_heard;

class SoHandleEventActionTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        actiontest::init();
        Listener::initClass();
    }
    void SetUp() override
    {
        auto* inner = new SoSeparator;
        inner->addChild(new Mover(SbVec3f(3, 0, 0)));
        inner->addChild(b);
        m_root->addChild(a);
        m_root->addChild(inner);
        m_root->addChild(c);
        a->setName("a");
        b->setName("b");
        c->setName("c");
    }
    std::string send()
    {
        Listener::s_heard.clear();
        m_action.setEvent(&m_event);
        m_action.apply(m_root.get());
        return Listener::s_heard;
    }

    SoRef<SoSeparator> m_root{new SoSeparator};
    Listener* a = new Listener;
    Listener* b = new Listener;
    Listener* c = new Listener;
    SoLocation2Event m_event;
    SoHandleEventAction m_action{SbViewportRegion(200, 100)};
};

TEST_F(SoHandleEventActionTest, TheFirstToHandleEndsIt)
{
    EXPECT_EQ(send(), "abc");
    EXPECT_FALSE(m_action.isHandled());
    b->react = [&](SoHandleEventAction* action) {
        EXPECT_EQ(action->getEvent(), &m_event);
        action->setHandled();
    };
    EXPECT_EQ(send(), "ab");
    EXPECT_TRUE(m_action.isHandled());
}

TEST_F(SoHandleEventActionTest, AGrabberIsAskedFirstWithItsState)
{
    float x = 0;
    bool handles = true;
    b->react = [&](SoHandleEventAction* action) {
        action->setGrabber(b);
        x = SoModelMatrixElement::get(action->getState())[3][0];
        if (handles)
            action->setHandled();
    };
    EXPECT_EQ(send(), "ab");
    EXPECT_EQ(m_action.getGrabber(), b);
    x = 0;
    EXPECT_EQ(send(), "b");
    EXPECT_EQ(x, 3);
    handles = false;
    EXPECT_EQ(send(), "babc");

    handles = true;
    b->react = [&](SoHandleEventAction* action) {
        action->releaseGrabber();
        action->setHandled();
    };
    EXPECT_EQ(send(), "b");
    b->react = nullptr;
    EXPECT_EQ(send(), "abc");
}

TEST_F(SoHandleEventActionTest, AGrabberTakenOutOfTheGraphStillHears)
{
    b->react = [&](SoHandleEventAction* action) {
        action->setGrabber(b);
        action->setHandled();
    };
    send();
    m_root->removeChild(1);
    EXPECT_EQ(send(), "b");
    b->react = nullptr;
    EXPECT_EQ(send(), "bac");
    m_action.setGrabber(nullptr);
    EXPECT_EQ(send(), "ac");
}

TEST_F(SoHandleEventActionTest, PicksOnceAndOnlyWhenAsked)
{
    auto* view = new View;
    view->volume.perspective(0.785398, 2, 1, 20);
    view->volume.translateCamera(SbVec3f(0, 0, 10));
    auto* cube = new SoCube;
    m_root->insertChild(view, 0);
    m_root->addChild(cube);
    m_root->addChild(new Mover(SbVec3f(0, 0, -4)));
    m_root->addChild(cube);
    const SoPickedPoint* first = nullptr;
    a->react = [&](SoHandleEventAction* action) { first = action->getPickedPoint(); };
    b->react = [&](SoHandleEventAction* action) { EXPECT_EQ(action->getPickedPoint(), first); };
    c->react = [&](SoHandleEventAction* action) {
        EXPECT_EQ(action->getPickedPoints().size(), 4u);
    };
    m_event.setPosition(SbVec2s(105, 52)); // off the diagonals of the faces
    send();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(m_action.getPickedPoint()->getPath()->getTail(), cube);
    c->react = nullptr;
    m_event.setPosition(SbVec2s(1, 1));
    send();
    EXPECT_EQ(first, nullptr);
}

TEST_F(SoHandleEventActionTest, EventsTellWhatHappened)
{
    SoMouseButtonEvent button;
    button.setButton(SoMouseButtonEvent::BUTTON1);
    button.setState(SoButtonEvent::DOWN);
    EXPECT_TRUE(SoMouseButtonEvent::isPressEvent(&button, SoMouseButtonEvent::BUTTON1));
    EXPECT_TRUE(SoMouseButtonEvent::isPressEvent(&button, SoMouseButtonEvent::ANY));
    EXPECT_FALSE(SoMouseButtonEvent::isPressEvent(&button, SoMouseButtonEvent::BUTTON2));
    EXPECT_FALSE(SoMouseButtonEvent::isReleaseEvent(&button, SoMouseButtonEvent::BUTTON1));
    EXPECT_FALSE(SoMouseButtonEvent::isPressEvent(&m_event, SoMouseButtonEvent::ANY));
    EXPECT_TRUE(button.isOfType(SoButtonEvent::getClassTypeId()));

    SoKeyboardEvent key;
    const auto written = [&](SoKeyboardEvent::Key k, bool shift) {
        key.setKey(k);
        key.setShiftDown(shift);
        return key.getPrintableCharacter();
    };
    EXPECT_EQ(written(SoKeyboardEvent::Q, false), 'q');
    EXPECT_EQ(written(SoKeyboardEvent::Q, true), 'Q');
    EXPECT_EQ(written(SoKeyboardEvent::NUMBER_7, true), '&');
    EXPECT_EQ(written(SoKeyboardEvent::SLASH, true), '?');
    EXPECT_EQ(written(SoKeyboardEvent::PAD_3, true), '3');
    EXPECT_EQ(written(SoKeyboardEvent::PAD_DIVIDE, false), '/');
    EXPECT_EQ(written(SoKeyboardEvent::F5, false), 0);
    EXPECT_EQ(written(SoKeyboardEvent::SPACE, true), ' ');
    EXPECT_EQ(written(SoKeyboardEvent::ESCAPE, false), 0);
}

} // namespace
