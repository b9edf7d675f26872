#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/core/SoRecursiveRWLock.h>

#include <atomic>
#include <thread>
#include <vector>

TEST(SoRecursiveRWLockTest, KeepsReadersOutOfWrites)
{
    SoRecursiveRWLock lock;
    int a = 0, b = 0; // equal outside of writes
    std::atomic<bool> torn = false;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 2000; ++i) {
                if ((i + t) % 5 == 0) {
                    EXPECT_TRUE(lock.writeLock());
                    EXPECT_TRUE(lock.writeLock());
                    ++a;
                    lock.readLock();
                    ++b;
                    lock.readUnlock();
                    lock.writeUnlock();
                    lock.writeUnlock();
                } else {
                    lock.readLock();
                    lock.readLock();
                    if (a != b)
                        torn = true;
                    lock.readUnlock();
                    lock.readUnlock();
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_FALSE(torn);
    EXPECT_EQ(a, 4 * 400);
    EXPECT_FALSE(lock.readUnlock());
    EXPECT_FALSE(lock.writeUnlock());
}

TEST(SoRecursiveRWLockTest, LetsOneReaderBecomeTheWriter)
{
    SoRecursiveRWLock lock;
    std::atomic<int> upgraded = 0, refused = 0, ready = 0;
    const auto upgrade = [&] {
        lock.readLock();
        ++ready;
        while (ready < 2)
            std::this_thread::yield();
        if (lock.writeLock()) {
            ++upgraded;
            lock.writeUnlock();
        } else {
            ++refused;
        }
        lock.readUnlock();
    };
    std::thread one(upgrade), two(upgrade);
    one.join();
    two.join();
    EXPECT_GE(upgraded, 1);
    EXPECT_EQ(upgraded + refused, 2);
    EXPECT_FALSE(lock.isReadLockedByThisThread());
}

TEST(SoRecursiveRWLockTest, AReaderMayReadAgainWhileAWriterWaits)
{
    SoRecursiveRWLock lock;
    lock.readLock();
    std::atomic<bool> written = false;
    std::thread writer([&] {
        EXPECT_TRUE(lock.writeLock());
        written = true;
        lock.writeUnlock();
    });
    // New readers wait while a writer waits.
    bool isWaitedFor = false;
    while (!isWaitedFor)
        std::thread([&] {
            isWaitedFor = !lock.tryReadLock();
            if (!isWaitedFor)
                lock.readUnlock();
        }).join();
    lock.readLock(); // waiting here would never end
    EXPECT_FALSE(written);
    lock.readUnlock();
    lock.readUnlock();
    writer.join();
    EXPECT_TRUE(written);
}

TEST(SoDBTest, StartsAndEndsRepeatedly)
{
    while (SoDB::isInitialized()) // other tests started it
        SoDB::finish();
    for (int i = 0; i < 3; ++i) {
        SoDB::init();
        SoDB::init();
        SoDB::finish();
        EXPECT_TRUE(SoDB::isInitialized());
        EXPECT_TRUE(io::read(std::string(io::kVrml97) + "Shape { geometry Box { } }"));
        SoDB::finish();
        EXPECT_FALSE(SoDB::isInitialized());
    }
    EXPECT_TRUE(SoDB::getVersion().startsWith("Kalmyr "));
}

TEST(SoDBTest, ComplainsAboutUnlockingWhatIsNotHeld)
{
    auto errors = support::expectErrors();
    SoDB::readlock();
    SoDB::readunlock();
    EXPECT_TRUE(SoDB::writelock());
    SoDB::writeunlock();
    EXPECT_EQ(errors.count(), 0u);
    SoDB::readunlock();
    SoDB::writeunlock();
    EXPECT_EQ(errors.count(), 2u);
}
