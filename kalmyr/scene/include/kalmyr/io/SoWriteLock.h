#pragma once

#include <kalmyr/io/SoDB.h>

/// Holds the scene database's write lock for a scope, if it could be had; see SoDB::writelock().
///
/// Whoever edits asks first, and leaves the graph alone when the lock was refused:
///
///     const SoWriteLock lock;
///     if (!lock)
///         return false; // an error was posted
class [[nodiscard]] SoWriteLock {
public:
    SoWriteLock() : m_isHeld(SoDB::writelock()) {}
    ~SoWriteLock()
    {
        if (m_isHeld)
            SoDB::writeunlock();
    }
    SoWriteLock(const SoWriteLock&) = delete;
    SoWriteLock& operator=(const SoWriteLock&) = delete;

    [[nodiscard]] explicit operator bool() const { return m_isHeld; }

private:
    bool m_isHeld;
};
