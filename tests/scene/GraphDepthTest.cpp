// Graphs much deeper than a thread's stack allows to recurse.

#include "NodesSupport.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodekits/SoWrapperKit.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>

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

} // namespace
