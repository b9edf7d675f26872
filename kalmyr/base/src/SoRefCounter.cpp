#include <kalmyr/base/SoRefCounter.h>

#include <kalmyr/base/SoDebugError.h>

SoRefCounter::~SoRefCounter() = default;

void SoRefCounter::destroy()
{
    delete this;
}

void SoRefCounter::releaseLast() const
{
    if (m_refCount < 1) {
        SoDebugError::post("SoRefCounter::unref", "object %p has no reference to release",
                           static_cast<const void*>(this));
        return;
    }
    m_refCount = 0;
    const_cast<SoRefCounter*>(this)->destroy();
}

void SoRefCounter::unrefNoDelete() const
{
    if (m_refCount < 1) {
        SoDebugError::post("SoRefCounter::unrefNoDelete", "object %p has no reference to release",
                           static_cast<const void*>(this));
        return;
    }
    --m_refCount;
}
