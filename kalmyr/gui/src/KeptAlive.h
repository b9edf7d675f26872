#pragma once

#include <kalmyr/base/SoRef.h>

/// Keeps an object alive for a scope in which code of the program runs, which may let go of it. An
/// object that nobody held before stays so.
template <class T>
class KeptAlive {
public:
    explicit KeptAlive(T* object) : m_isHeld(object->getRefCount() > 0), m_object(object) {}
    ~KeptAlive()
    {
        if (!m_isHeld)
            (void)m_object.release();
    }
    KeptAlive(const KeptAlive&) = delete;
    KeptAlive& operator=(const KeptAlive&) = delete;

private:
    bool m_isHeld;
    SoRef<T> m_object;
};
