// Graphs much deeper than a thread's stack allows to recurse.

#include "NodesSupport.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoPlaces.h>
#include <kalmyr/engines/SoBoolOperation.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodekits/SoWrapperKit.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLShape.h>

#include <pthread.h>

namespace {

constexpr int kDepth = 10000;

/// Runs the function in a thread with a stack of one megabyte.
void onSmallStack(std::function<void()> function)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 1024 * 1024), 0);
    pthread_t thread;
    const auto start = [](void* data) -> void* {
        (*static_cast<std::function<void()>*>(data))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &function), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

SoRef<SoNode> chain(SoNode* leaf)
{
    SoRef<SoNode> top(leaf);
    for (int i = 0; i < kDepth; ++i) {
        const SoRef<SoGroup> group(i % 2 ? static_cast<SoGroup*>(new SoSeparator) : new SoGroup);
        group->addChild(top.get());
        top = group;
    }
    return top;
}

int depthOf(const SoNode* node)
{
    int depth = 0;
    while (node->getChildren() && node->getChildren()->getLength() > 0) {
        node = (*node->getChildren())[0];
        ++depth;
    }
    return depth;
}

using GraphDepthTest = nodetest::NodesTest;

TEST_F(GraphDepthTest, DiesOnASmallStack)
{
    onSmallStack([] {
        bool isGone = false;
        struct Watch final : SoAuditor {
            bool* gone = nullptr;
            void auditedChanged(SoNotification&) override {}
            void auditedDying() override { *gone = true; }
        } watch;
        watch.gone = &isGone;
        auto* leaf = new SoCube;
        leaf->addAuditor(&watch, SoAuditor::SENSOR);
        SoRef<SoNode> top = chain(leaf);
        EXPECT_FALSE(isGone);
        top = nullptr;
        EXPECT_TRUE(isGone);
    });
}

TEST_F(GraphDepthTest, IsCopiedSearchedAndMeasuredOnASmallStack)
{
    onSmallStack([] {
        auto* cube = new SoCube;
        const SoRef<SoNode> top = chain(cube);
        const SoRef<SoNode> copy(top->copy());
        EXPECT_EQ(depthOf(copy.get()), kDepth);
        SoSearchAction search;
        search.setNode(cube);
        search.apply(top.get());
        ASSERT_TRUE(search.isFound());
        EXPECT_EQ(search.getPath()->getLength(), kDepth + 1);
        const auto places = kalmyr::findPlaces(top.get(), cube, 2);
        ASSERT_EQ(places.size(), 1u);
        EXPECT_EQ(places.front()->getLength(), kDepth + 1);
        SoGetBoundingBoxAction box(SbViewportRegion(10, 10));
        box.apply(copy.get());
        EXPECT_EQ(box.getBoundingBox().getMax(), SbVec3f(1, 1, 1));
    });
}

TEST_F(GraphDepthTest, TellsOfAChangeAtTheBottomOnASmallStack)
{
    onSmallStack([] {
        auto* cube = new SoCube;
        const SoRef<SoNode> top = chain(cube);
        const auto before = top->getNodeId();
        cube->width = 4;
        EXPECT_NE(top->getNodeId(), before);
    });
}

TEST_F(GraphDepthTest, IsWrittenOnASmallStack)
{
    onSmallStack([] {
        const SoRef<SoNode> top = chain(new SoCube);
        SoOutput out;
        out.setBuffer();
        SoWriteAction(&out).apply(top.get());
        const std::string_view text = out.getText();
        EXPECT_EQ(std::count(text.begin(), text.end(), '{'), kDepth + 1);
    });
}

TEST_F(GraphDepthTest, KitsInKitsDieOnASmallStack)
{
    onSmallStack([] {
        SoRef<SoNode> top(new SoCube);
        for (int i = 0; i < kDepth / 5; ++i) {
            const SoRef<SoWrapperKit> kit(new SoWrapperKit);
            kit->setPart("contents", top.get());
            top = kit;
        }
        EXPECT_TRUE(top);
    });
}

constexpr int kEngines = 100000;

/// A field at the end of a row of engines, each of which follows the one before.
SoRef<SoSwitch> afterEngines(SoSFBool& first)
{
    const SoRef<SoSwitch> last(new SoSwitch);
    SoField* master = &first;
    for (int i = 0; i < kEngines; ++i) {
        auto* engine = new SoBoolOperation;
        engine->operation.setValue(SoBoolOperation::A);
        engine->a.connectFrom(master);
        master = i % 2 ? &engine->inverse : &engine->output;
    }
    last->whichChild.connectFrom(master);
    return last;
}

TEST_F(GraphDepthTest, FieldsInALongChainPartOneByOne)
{
    std::vector<SoRef<SoCube>> cubes(kEngines);
    for (std::size_t i = 0; i < cubes.size(); ++i) {
        cubes[i] = new SoCube;
        if (i > 0)
            cubes[i]->width.connectFrom(&cubes[i - 1]->width);
    }
    cubes.front()->width = 3;
    EXPECT_EQ(cubes.back()->width.getValue(), 3);
    // Each parting is news of its own, which must not go down the rest of the chain.
    for (SoRef<SoCube>& cube : cubes)
        cube = nullptr;
}

TEST_F(GraphDepthTest, NodesHeldByFieldsTellAndDieOnASmallStack)
{
    onSmallStack([] {
        const SoRef<SoCube> leaf(new SoCube);
        SoRef<SoNode> top(leaf.get());
        for (int i = 0; i < kDepth; ++i) {
            const SoRef<SoVRMLShape> shape(new SoVRMLShape);
            shape->geometry = top.get();
            top = shape;
        }
        const auto before = top->getNodeId();
        leaf->width = 4;
        EXPECT_NE(top->getNodeId(), before);
        top = nullptr;
        EXPECT_EQ(leaf->getRefCount(), 1);
    });
}

TEST_F(GraphDepthTest, EnginesInALongRowComputeAndDieOnASmallStack)
{
    onSmallStack([] {
        const SoRef<SoSeparator> both(new SoSeparator);
        const SoRef<SoDirectionalLight> start(new SoDirectionalLight);
        SoRef<SoSwitch> end = afterEngines(start->on);
        both->addChild(start.get());
        both->addChild(end.get());
        const int before = end->whichChild.getValue();
        start->on = !start->on.getValue();
        EXPECT_EQ(end->whichChild.getValue(), 1 - before);

        // The copy has engines of its own.
        const SoRef<SoSeparator> copy(static_cast<SoSeparator*>(both->copy()));
        auto* copiedStart = static_cast<SoDirectionalLight*>(copy->getChild(0));
        auto* copiedEnd = static_cast<SoSwitch*>(copy->getChild(1));
        copiedStart->on = !copiedStart->on.getValue();
        EXPECT_EQ(copiedEnd->whichChild.getValue(), before);
        EXPECT_EQ(end->whichChild.getValue(), 1 - before);

        SoRef<SoEngine> last(SoEngine::getDriver(&end->whichChild));
        end->whichChild.disconnect();
        EXPECT_EQ(last->getRefCount(), 1);
        last = nullptr; // and with it all of them
        EXPECT_TRUE(start->on.getFollowers().empty());
    });
}

} // namespace
