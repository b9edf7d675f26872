#include <kalmyr/core/SoRecursiveRWLock.h>

bool SoRecursiveRWLock::othersRead(std::thread::id self) const
{
    return m_readers.size() > (m_readers.count(self) ? 1u : 0u);
}

/// Whether a thread that does not wait yet may read.
bool SoRecursiveRWLock::mayEnter(std::thread::id self) const
{
    return m_writer == self || m_readers.count(self) > 0
           || (m_writeDepth == 0 && (m_waitingWriters == 0 || m_readersTurn));
}

void SoRecursiveRWLock::readerWaited()
{
    if (--m_waitingReaders > 0 || !m_readersTurn)
        return;
    m_readersTurn = false;
    m_changed.notify_all();
}

void SoRecursiveRWLock::readLock()
{
    const auto self = std::this_thread::get_id();
    std::unique_lock lock(m_mutex);
    if (!mayEnter(self)) {
        ++m_waitingReaders;
        m_changed.wait(lock, [&] { return mayEnter(self); });
        readerWaited();
    }
    ++m_readers[self];
}

bool SoRecursiveRWLock::tryReadLock(std::chrono::nanoseconds patience)
{
    const auto self = std::this_thread::get_id();
    std::unique_lock lock(m_mutex);
    bool enters = mayEnter(self);
    if (!enters && patience.count() > 0) {
        ++m_waitingReaders;
        enters = m_changed.wait_for(lock, patience, [&] { return mayEnter(self); });
        readerWaited();
    }
    if (enters)
        ++m_readers[self];
    return enters;
}

bool SoRecursiveRWLock::readUnlock()
{
    const std::scoped_lock lock(m_mutex);
    const auto at = m_readers.find(std::this_thread::get_id());
    if (at == m_readers.end())
        return false;
    if (--at->second == 0) {
        m_readers.erase(at);
        m_changed.notify_all();
    }
    return true;
}

bool SoRecursiveRWLock::writeLock()
{
    const auto self = std::this_thread::get_id();
    std::unique_lock lock(m_mutex);
    if (m_writer == self) {
        ++m_writeDepth;
        return true;
    }
    const bool upgrade = m_readers.count(self) > 0;
    if (upgrade && m_upgrading)
        return false;
    if (upgrade)
        m_upgrading = true;
    ++m_waitingWriters;
    m_changed.wait(lock, [&] {
        return m_writeDepth == 0 && !othersRead(self) && (upgrade || !m_readersTurn);
    });
    --m_waitingWriters;
    if (upgrade)
        m_upgrading = false;
    m_writer = self;
    m_writeDepth = 1;
    return true;
}

bool SoRecursiveRWLock::tryWriteLock()
{
    const auto self = std::this_thread::get_id();
    const std::scoped_lock lock(m_mutex);
    // A reader that is alone goes before those that wait: they wait for it.
    const bool isReader = m_readers.count(self) > 0;
    const bool othersFirst = !isReader && (m_waitingWriters > 0 || m_readersTurn);
    if (m_writer != self && (m_writeDepth > 0 || othersRead(self) || othersFirst))
        return false;
    m_writer = self;
    ++m_writeDepth;
    return true;
}

bool SoRecursiveRWLock::writeUnlock()
{
    const std::scoped_lock lock(m_mutex);
    if (m_writer != std::this_thread::get_id())
        return false;
    if (--m_writeDepth == 0) {
        m_writer = {};
        m_readersTurn = m_waitingReaders > 0;
        m_changed.notify_all();
    }
    return true;
}

bool SoRecursiveRWLock::isReadLockedByThisThread() const
{
    const std::scoped_lock lock(m_mutex);
    return m_readers.count(std::this_thread::get_id()) > 0;
}

bool SoRecursiveRWLock::isWriteLockedByThisThread() const
{
    const std::scoped_lock lock(m_mutex);
    return m_writer == std::this_thread::get_id();
}
