#pragma once

#include <kalmyr/io/SoDB.h>

#include <mutex>

/// Holds the scene database's read lock for a scope; see SoDB::readlock().
///
/// The only way in which this project takes the lock: a lock that is taken is given back on every
/// way out.
class [[nodiscard]] SoReadLock {
public:
    /// Waits until no other thread edits.
    SoReadLock() { SoDB::readlock(); }
    /// Does not wait; ask whether the lock is held.
    explicit SoReadLock(std::try_to_lock_t) : m_isHeld(SoDB::tryReadlock()) {}
    /// Waits no longer than that; ask whether the lock is held.
    explicit SoReadLock(const SbTime& patience) : m_isHeld(SoDB::tryReadlock(patience)) {}
    ~SoReadLock()
    {
        if (m_isHeld)
            SoDB::readunlock();
    }
    SoReadLock(const SoReadLock&) = delete;
    SoReadLock& operator=(const SoReadLock&) = delete;

    [[nodiscard]] explicit operator bool() const { return m_isHeld; }

private:
    bool m_isHeld = true;
};
