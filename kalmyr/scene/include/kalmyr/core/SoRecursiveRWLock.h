#pragma once

#include <kalmyr/base/Export.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <unordered_map>

/// Many readers or one writer; every thread may lock again what it holds.
///
/// The writer may also read. A reader becomes a writer as soon as all other readers have left; two
/// readers that want this at once would wait for each other, so the second is refused. New readers
/// wait while a writer waits, those that read already do not; readers that wait when a writer
/// leaves go before the next writer.
class KALMYR_API SoRecursiveRWLock {
public:
    SoRecursiveRWLock() = default;
    SoRecursiveRWLock(const SoRecursiveRWLock&) = delete;
    SoRecursiveRWLock& operator=(const SoRecursiveRWLock&) = delete;

    void readLock();
    /// False when the lock cannot be had within that time; zero: without waiting.
    [[nodiscard]] bool tryReadLock(std::chrono::nanoseconds patience = {});
    /// False, with nothing changed, when the thread does not hold the lock.
    bool readUnlock();
    /// False when another reader is waiting to become the writer, so that waiting would never end.
    [[nodiscard]] bool writeLock();
    /// False, without waiting, when the lock cannot be had now. A reader gets it when no other
    /// thread reads.
    [[nodiscard]] bool tryWriteLock();
    /// False, with nothing changed, when the thread is not the writer.
    bool writeUnlock();

    bool isReadLockedByThisThread() const;
    bool isWriteLockedByThisThread() const;

private:
    bool othersRead(std::thread::id self) const;
    bool mayEnter(std::thread::id self) const;
    void readerWaited();

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::unordered_map<std::thread::id, int> m_readers; ///< depth of each reading thread
    std::thread::id m_writer;
    int m_writeDepth = 0;
    int m_waitingWriters = 0;
    int m_waitingReaders = 0;
    bool m_readersTurn = false; ///< those that wait go before the next writer
    bool m_upgrading = false;
};
