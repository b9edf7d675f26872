#pragma once

#include <cstdint>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

class SoField;
class SoFieldContainer;
class SoRecursiveRWLock;
class SoType;

/// \file
/// Thread support of the toolkit: who owns what is kept beside the graphs (queued sensors,
/// bound nodes, followers of the time), and when that passes from one thread to another.

namespace kalmyr::detail {

/// True while no second thread was ever started: nothing has to be guarded.
inline bool isOnlyThread()
{
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded;
#else
    return false;
#endif
}

/// Number of the calling thread, from 1; no other thread of the process ever gets it.
std::uint32_t threadNumber();

/// The database's lock.
SoRecursiveRWLock& sceneLock();
/// Takes and gives back the write lock. Giving it up for good hands over first. False as the
/// functions of the lock; tryWriteLock() does not wait.
[[nodiscard]] bool writeLock();
[[nodiscard]] bool tryWriteLock();
bool writeUnlock();
/// Whether this thread holds the write lock: what it edits may be known to other threads.
bool isEditingShared();

/// Whether this thread serves the sensors of its graphs itself, without being the application's:
/// then it keeps them, and all else, when it gives up the write lock.
bool isServing();
void setServing(bool on);

/// How a thread comes to hand over.
enum class HandOver : std::uint8_t {
    UNLOCK,   ///< it gives up the write lock, holds it still, and does not serve its sensors
    EXPLICIT, ///< it says so
    END       ///< it ends
};
/// Adds a function that gives what the calling thread keeps for its own graphs to the application.
/// For initialisation; the functions are called in this order, for ever.
void addHandOver(void (*function)(HandOver));
/// Calls them. A thread that ever asked for its number does so by itself when it ends.
void handOver(HandOver how);

/// Fields of that type of container, such as the global ones, have followers in graphs of many
/// threads. Their lists of followers are guarded, and `choose` says which field of several of the
/// same name one that is connected in this thread is to follow. For initialisation.
void setGlobalFields(SoType type, SoField* (*choose)(SoField* master));
bool isGlobal(const SoFieldContainer* container);
SoField* chooseMaster(SoField* master);

/// Lets go of what a thread keeps for its notifications when it ends.
void initNotification();

/// Held while the toolkit edits a graph by itself in a thread that serves sensors. In the
/// application's thread that needs the write lock, for the graph may be shared, and is not waited
/// for: a reader may wait for the application.
class SharedEdit {
public:
    explicit SharedEdit(bool isApplication);
    ~SharedEdit();
    SharedEdit(const SharedEdit&) = delete;
    SharedEdit& operator=(const SharedEdit&) = delete;

    /// False: try again later.
    explicit operator bool() const { return m_may; }

private:
    bool m_locked;
    bool m_may;
};

} // namespace kalmyr::detail
