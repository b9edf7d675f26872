#pragma once

#include <kalmyr/base/Export.h>

/// Base of objects that live as long as somebody holds a reference on them.
/// A new object has no reference; the release of the last one destroys it.
/// Threads: counts are plain numbers. Change them in the thread that owns the scene graph, or under
/// the scene database's write lock.
class KALMYRBASE_API SoRefCounter {
public:
    SoRefCounter(const SoRefCounter&) = delete;
    SoRefCounter& operator=(const SoRefCounter&) = delete;

    void ref() const { ++m_refCount; }
    /// Releases a reference; with the last one the object is destroyed.
    /// One release too many posts a debug error and does nothing.
    void unref() const
    {
        if (m_refCount > 1) {
            --m_refCount;
        } else {
            releaseLast();
        }
    }
    /// Releases a reference and keeps the object alive even without any. For handing out new
    /// objects.
    void unrefNoDelete() const;
    int getRefCount() const { return m_refCount; }

protected:
    SoRefCounter() = default;
    virtual ~SoRefCounter();

    /// Called once when the last reference is gone; the count is 0. Deletes the object unless
    /// overridden.
    virtual void destroy();

private:
    void releaseLast() const;

    mutable int m_refCount = 0;
};
