// The tool's look at a graph that other threads edit.

#include "mirabo/extender/private/GraphReading.h"

#include "support/ErrorGuard.h"
#include "support/WriteLocked.h"

#include <kalmyr/io/SoWriteLock.h>

#include <QCoreApplication>
#include <QObject>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

using mirabo::GraphReading;

namespace {

TEST(GraphReading, IsRefusedWhileAnotherThreadEdits)
{
    support::WriteLocked editor;
    {
        const GraphReading graph;
        EXPECT_FALSE(graph);
        const GraphReading inner;
        EXPECT_FALSE(inner);
    }
    editor.release();
    const GraphReading graph;
    EXPECT_TRUE(graph);
    const GraphReading inner;
    EXPECT_TRUE(inner);
}

TEST(GraphReading, KeepsEditorsOutUntilTheOutermostGoes)
{
    std::atomic<bool> edited{false};
    std::thread editor;
    {
        const GraphReading graph;
        ASSERT_TRUE(graph);
        {
            const GraphReading inner;
            editor = std::thread([&] {
                const SoWriteLock lock;
                edited = true;
            });
        }
        EXPECT_FALSE(edited);
        const SoWriteLock own; // reads become edits in the same thread
        EXPECT_TRUE(own);
        EXPECT_FALSE(edited);
    }
    editor.join();
    EXPECT_TRUE(edited);
}

TEST(GraphReading, DoesPutOffWorkWhenTheEditorHasLeft)
{
    int runs = 0;
    QObject context;
    auto dying = std::make_unique<QObject>();
    support::WriteLocked editor;
    mirabo::whenReadable(&context, [&] { ++runs; });
    mirabo::whenReadable(dying.get(), [&] { runs += 100; });
    EXPECT_EQ(runs, 0);
    dying.reset();
    editor.release();
    for (int pass = 0; runs == 0 && pass < 10000; ++pass)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(runs, 1);
    mirabo::whenReadable(&context, [&] { ++runs; });
    EXPECT_EQ(runs, 2);
}

} // namespace
