#include <kalmyr/base/SoRefCounter.h>

#include <kalmyr/base/SoErrorStack.h>

SoRefCounter::~SoRefCounter() = default;

void SoRefCounter::destroy()
{
    delete this;
}

void SoRefCounter::releaseLast() const
{
    int count = getRefCount();
    while (count > 0) {
        // Whoever finds the object in a table may be faster and keep it.
        if (!m_refCount.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel))
            continue;
        if (count == 1)
            const_cast<SoRefCounter*>(this)->destroy();
        return;
    }
    SoErrorStack::post("SoRefCounter::unref: object %p has no reference to release",
                       static_cast<const void*>(this));
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
