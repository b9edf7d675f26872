#include "core/CacheLock.h"

#include <mutex>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace {

std::recursive_mutex& mutex()
{
    static auto* m = new std::recursive_mutex; // graphs may outlive statics
    return *m;
}

bool isOnlyThread()
{
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded;
#else
    return false;
#endif
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
