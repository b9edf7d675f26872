#include <kalmyr/base/SoRefCounter.h>

#include <kalmyr/base/SoErrorStack.h>

SoRefCounter::~SoRefCounter() = default;

void SoRefCounter::destroy()
{
    delete this;
}

void SoRefCounter::releaseLast() const
{
    // Sees all that those did who had a reference before.
    if (m_refCount.load(std::memory_order_acquire) < 1) {
        SoErrorStack::post("SoRefCounter::unref: object %p has no reference to release",
                           static_cast<const void*>(this));
        return;
    }
    m_refCount.store(0, std::memory_order_relaxed);
    const_cast<SoRefCounter*>(this)->destroy();
}

bool SoRefCounter::refIfAlive() const
{
    int count = getRefCount();
    while (count > 0)
        if (m_refCount.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel))
            return true;
    return false;
}

void SoRefCounter::unrefNoDelete() const
{
    if (m_refCount < 1) {
        SoErrorStack::post("SoRefCounter::unrefNoDelete: object %p has no reference to release",
                           static_cast<const void*>(this));
        return;
    }
    m_refCount.fetch_sub(1, std::memory_order_acq_rel);
}
