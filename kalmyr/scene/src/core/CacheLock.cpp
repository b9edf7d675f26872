#include "core/CacheLock.h"

#include "core/Threads.h"

#include <mutex>

namespace {

std::recursive_mutex& mutex()
{
    static auto* m = new std::recursive_mutex; // graphs may outlive statics
    return *m;
}

} // namespace

kalmyr::detail::CacheLock::CacheLock() : m_locked(!isOnlyThread())
{
    if (m_locked)
        mutex().lock();
}

kalmyr::detail::CacheLock::~CacheLock()
{
    if (m_locked)
        mutex().unlock();
}
