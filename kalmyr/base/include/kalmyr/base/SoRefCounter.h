#pragma once

#include <kalmyr/base/Export.h>

#include <atomic>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

/// Base of objects that live as long as somebody holds a reference on them.
/// A new object has no reference; the release of the last one destroys it.
/// Threads: references may be taken and given back in any thread. Whoever gives the last one back
/// destroys the object there, which for parts of a scene graph needs the database's write lock.
class KALMYRBASE_API SoRefCounter {
public:
    SoRefCounter(const SoRefCounter&) = delete;
    SoRefCounter& operator=(const SoRefCounter&) = delete;

    void ref() const
    {
        if (isOnlyThread())
            m_refCount.store(getRefCount() + 1, std::memory_order_relaxed);
        else
            m_refCount.fetch_add(1, std::memory_order_relaxed);
    }
    /// The same unless the last reference has gone; for tables of objects that they do not hold.
    bool refIfAlive() const;
    /// Releases a reference; with the last one the object is destroyed.
    /// One release too many is a critical error (SoErrorStack) and does nothing.
    void unref() const
    {
        int count = getRefCount();
        if (isOnlyThread() && count > 1) {
            m_refCount.store(count - 1, std::memory_order_relaxed);
            return;
        }
        while (count > 1)
            if (m_refCount.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel))
                return;
        releaseLast();
    }
    /// Releases a reference and keeps the object alive even without any. For handing out new
    /// objects.
    void unrefNoDelete() const;
    int getRefCount() const { return m_refCount.load(std::memory_order_relaxed); }

protected:
    SoRefCounter() = default;
    virtual ~SoRefCounter();

    /// Called once when the last reference is gone; the count is 0. Deletes the object unless
    /// overridden.
    virtual void destroy();

private:
    /// While there is one thread only, plain arithmetic does.
    static bool isOnlyThread()
    {
#if __has_include(<sys/single_threaded.h>)
        return __libc_single_threaded;
#else
        return false;
#endif
    }
    void releaseLast() const;

    mutable std::atomic<int> m_refCount = 0;
};
