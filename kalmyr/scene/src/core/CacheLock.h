#pragma once

namespace kalmyr::detail {

/// Held while something that is kept beside the graph (a cached box or geometry, a value that
/// follows another, a path's entry at a node) is looked up or replaced by threads that may only
/// read the graph. One for all, and recursive. Costs nothing while the process has one thread.
///
/// Whoever holds it must not wait for the database's lock: its holders wait for this one.
class CacheLock {
public:
    CacheLock();
    ~CacheLock();
    CacheLock(const CacheLock&) = delete;
    CacheLock& operator=(const CacheLock&) = delete;

private:
    bool m_locked; ///< there was more than one thread
};

} // namespace kalmyr::detail
