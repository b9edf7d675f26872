#include "support/DrawnItems.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoAnnotation.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCube.h>

#include <gtest/gtest.h>

namespace {

/// Counts how often the renderer asks it, and shows its children only to a camera near by.
template <class Base>
class Watching : public Base {
public:
    int visits = 0;
    void doAction(SoAction* action) override
    {
        ++visits;
        if (SoViewElement::get(action->getState()).volume.getProjectionPoint()[2] < 20)
            Base::doAction(action);
    }

protected:
    ~Watching() override = default;
};

#define VIEW_TEST_NODE(Class, Base)                                                                \
    class Class : public Watching<Base> {                                                          \
        SO_NODE_HEADER(Class)                                                                      \
    public:                                                                                        \
        Class() { SO_NODE_CONSTRUCTOR(Base); }                                                     \
        static void initClass()                                                                    \
        {                                                                                          \
            if (!getClassTypeId().isBad())                                                         \
                return;                                                                            \
            SO_NODE_INIT_CLASS(Class, Base, #Class);                                               \
            SoGLRenderAction::addViewDependentType(getClassTypeId());                              \
        }                                                                                          \
    };                                                                                             \
    SO_NODE_SOURCE(Class)

VIEW_TEST_NODE(ViewTestGroup, SoGroup)
VIEW_TEST_NODE(ViewTestSeparator, SoSeparator)
VIEW_TEST_NODE(ViewTestAnnotation, SoAnnotation)
VIEW_TEST_NODE(ViewTestSelection, SoSelection)

template <class Node>
class ViewDependence : public testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        Node::initClass();
    }
};
using Nodes =
    testing::Types<ViewTestGroup, ViewTestSeparator, ViewTestAnnotation, ViewTestSelection>;
TYPED_TEST_SUITE(ViewDependence, Nodes);

/// As a node of a module that was loaded after the first frame was drawn.
TYPED_TEST(ViewDependence, IsAskedForAgainInEveryFrame)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* camera = new SoPerspectiveCamera;
    camera->position = SbVec3f(0, 0, 10);
    camera->farDistance = 100;
    auto* inner = new SoSeparator;
    auto* node = new TypeParam;
    root->addChild(camera);
    root->addChild(inner);
    for (int i = 0; i < 5; ++i)
        inner->addChild(new SoTranslation);
    inner->addChild(new SoCube);
    inner->addChild(node);
    for (int i = 0; i < 5; ++i)
        node->addChild(new SoCube);

    SoGLRenderAction action;
    for (int frame = 1; frame <= 6; ++frame) {
        const bool isNear = frame % 2 == 0;
        camera->position = SbVec3f(0, 0, isNear ? 10.0f : 30.0f);
        EXPECT_EQ(support::drawnItems(action, root.get()).size(), isNear ? 6u : 1u) << frame;
        EXPECT_EQ(node->visits, frame);
    }
}

} // namespace
