// The lock that keeps readers of a graph and its editors apart, with real threads.

#include "InThreads.h"
#include "support/ErrorGuard.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoRecursiveRWLock.h>
#include <kalmyr/io/SoReadLock.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

TEST(SoRecursiveRWLockThreads, WritersAreAloneAtEveryDepth)
{
    SoRecursiveRWLock lock;
    int a = 0, b = 0; // equal whenever nobody writes; not atomic on purpose
    std::atomic<int> torn{0};
    inThreads(6, [&](int me) {
        for (int i = 0; i < 500; ++i) {
            if (me % 2) {
                lock.readLock();
                lock.readLock();
                torn += a != b;
                std::this_thread::yield();
                lock.readUnlock();
                torn += a != b;
                lock.readUnlock();
                continue;
            }
            EXPECT_TRUE(lock.writeLock());
            ++a;
            std::this_thread::yield();
            EXPECT_TRUE(lock.writeLock());
            lock.readLock();
            lock.writeUnlock();
            lock.readUnlock();
            ++b;
            lock.writeUnlock();
        }
    });
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(a, 1500);
    EXPECT_EQ(b, 1500);
}

TEST(SoRecursiveRWLockThreads, ReadersThatBecomeWritersLoseNoUpdate)
{
    SoRecursiveRWLock lock;
    int value = 0;
    std::atomic<int> done{0}, refused{0};
    inThreads(4, [&](int) {
        for (int i = 0; i < 300; ++i) {
            lock.readLock();
            const int seen = value;
            std::this_thread::yield();
            if (lock.writeLock()) {
                // What was read is still so: no other writer came between.
                EXPECT_EQ(value, seen);
                value = seen + 1;
                ++done;
                lock.writeUnlock();
            } else {
                ++refused;
            }
            lock.readUnlock();
        }
    });
    EXPECT_EQ(value, done);
    EXPECT_EQ(done + refused, 1200);
}

TEST(SoRecursiveRWLockThreads, AWriterGetsItsTurnAmongEndlessReaders)
{
    SoRecursiveRWLock lock;
    std::atomic<bool> written{false};
    std::atomic<int> started{0};
    inThreads(5, [&](int me) {
        if (me == 0) {
            while (started < 4)
                std::this_thread::yield();
            EXPECT_TRUE(lock.writeLock());
            written = true;
            lock.writeUnlock();
            return;
        }
        ++started;
        while (!written) { // hangs if new readers could always overtake
            lock.readLock();
            std::this_thread::yield();
            lock.readUnlock();
        }
    });
    EXPECT_TRUE(written);
}

TEST(SoRecursiveRWLockThreads, AReaderGetsItsTurnAmongEndlessWriters)
{
    SoRecursiveRWLock lock;
    std::atomic<int> done{0};
    std::atomic<int> started{0};
    inThreads(5, [&](int me) {
        if (me < 2) {
            while (started < 3)
                std::this_thread::yield();
            for (int i = 0; i < 100; ++i) {
                if (me)
                    lock.readLock();
                else if (!lock.tryReadLock(std::chrono::hours(1)))
                    return;
                lock.readUnlock();
            }
            ++done;
            return;
        }
        ++started;
        while (done < 2) { // hangs if one of them always waited when another leaves
            ASSERT_TRUE(lock.writeLock());
            std::this_thread::yield();
            ASSERT_TRUE(lock.writeUnlock());
        }
    });
    EXPECT_EQ(done, 2);
}

TEST(SoRecursiveRWLockThreads, ATryEndsWhileAWriterStays)
{
    SoRecursiveRWLock lock;
    ASSERT_TRUE(lock.writeLock());
    inThreads(2, [&](int) {
        EXPECT_FALSE(lock.tryReadLock());
        EXPECT_FALSE(lock.tryReadLock(std::chrono::microseconds(100)));
    });
    ASSERT_TRUE(lock.writeUnlock());
    inThreads(2, [&](int) {
        EXPECT_TRUE(lock.tryReadLock());
        EXPECT_TRUE(lock.readUnlock());
    });
    EXPECT_TRUE(lock.writeLock()); // nobody's turn is left over
}

TEST(SoRecursiveRWLockThreads, ATryToWriteNeedsNobodyElseWhoReads)
{
    SoRecursiveRWLock lock;
    lock.readLock();
    ASSERT_TRUE(lock.tryWriteLock());
    ASSERT_TRUE(lock.tryWriteLock());
    inThreads(1, [&](int) { EXPECT_FALSE(lock.tryReadLock()); });
    EXPECT_TRUE(lock.writeUnlock());
    EXPECT_TRUE(lock.writeUnlock());
    inThreads(1, [&](int) {
        EXPECT_FALSE(lock.tryWriteLock());
        EXPECT_TRUE(lock.tryReadLock());
        EXPECT_TRUE(lock.readUnlock());
    });
    // A writer that waits does not keep the reader from it whom it waits for.
    std::thread writer([&] {
        ASSERT_TRUE(lock.writeLock());
        lock.writeUnlock();
    });
    inThreads(1, [&](int) {
        while (lock.tryReadLock()) { // until the writer waits
            lock.readUnlock();
            std::this_thread::yield();
        }
        EXPECT_FALSE(lock.tryWriteLock());
    });
    EXPECT_TRUE(lock.tryWriteLock());
    EXPECT_TRUE(lock.writeUnlock());
    EXPECT_TRUE(lock.readUnlock());
    writer.join();
}

TEST(SoRecursiveRWLockThreads, NobodyUnlocksWhatAnotherThreadHolds)
{
    SoRecursiveRWLock lock;
    EXPECT_TRUE(lock.writeLock());
    inThreads(1, [&](int) {
        EXPECT_FALSE(lock.writeUnlock());
        EXPECT_FALSE(lock.readUnlock());
        EXPECT_FALSE(lock.isWriteLockedByThisThread());
    });
    EXPECT_TRUE(lock.isWriteLockedByThisThread());
    EXPECT_TRUE(lock.writeUnlock());
}

/// Editors keep every group at an even number of children with the same translation in each pair;
/// readers see nothing else.
class EditedGraph {
public:
    EditedGraph() : m_root(new SoSeparator)
    {
        for (int i = 0; i < 8; ++i)
            m_root->addChild(new SoSeparator);
    }

    void edit(unsigned seed)
    {
        const SoWriteLock lock;
        ASSERT_TRUE(lock);
        auto* group = groupAt(static_cast<int>(seed % 8));
        if (seed % 3 && group->getNumChildren() > 0) {
            group->removeChild(0);
            group->removeChild(0);
        } else {
            for (int i = 0; i < 2; ++i) {
                auto* transform = new SoTransform;
                transform->translation.setValue(static_cast<float>(seed), 0, 0);
                group->addChild(transform);
                std::this_thread::yield();
            }
        }
    }

    /// Number of pairs that are no pairs.
    int count()
    {
        int bad = 0;
        const SoReadLock lock;
        for (int g = 0; g < m_root->getNumChildren(); ++g) {
            const SoGroup* group = groupAt(g);
            bad += group->getNumChildren() % 2;
            for (int i = 0; i + 1 < group->getNumChildren(); i += 2)
                bad += at(group, i) != at(group, i + 1);
            std::this_thread::yield();
        }
        return bad;
    }

private:
    SoGroup* groupAt(int i) const { return static_cast<SoGroup*>(m_root->getChild(i)); }
    static SbVec3f at(const SoGroup* group, int i)
    {
        return static_cast<SoTransform*>(group->getChild(i))->translation.getValue();
    }

    SoRef<SoSeparator> m_root;
};

TEST(SoDBThreads, ReadersNeverSeeHalfAnEdit)
{
    SoDB::init();
    EditedGraph graph;
    std::atomic<int> bad{0};
    inThreads(5, [&](int me) {
        for (unsigned i = 0; i < 300; ++i) {
            if (me < 2)
                graph.edit(i * 7 + static_cast<unsigned>(me));
            else
                bad += graph.count();
        }
    });
    EXPECT_EQ(bad, 0);
}

TEST(SoDBThreads, AnEditorReadsWhatItEdits)
{
    SoDB::init();
    EditedGraph graph;
    ASSERT_TRUE(SoDB::writelock());
    graph.edit(3);
    EXPECT_EQ(graph.count(), 0);
    SoDB::writeunlock();
    support::ErrorScope errors;
    SoDB::writeunlock();
    EXPECT_TRUE(errors.contains("does not hold the lock"));
}

} // namespace
