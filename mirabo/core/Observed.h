#pragma once

#include <kalmyr/core/SoAuditor.h>
#include <kalmyr/core/SoBase.h>

namespace mirabo {

/// A pointer at an object of the host that holds no reference on it: null once the object has died.
template <class T>
class Observed final : private SoAuditor {
public:
    Observed() = default;
    ~Observed() { reset(); }
    Observed(const Observed&) = delete;
    Observed& operator=(const Observed&) = delete;

    void reset(T* object = nullptr)
    {
        if (m_object)
            m_object->removeAuditor(this);
        m_object = object;
        if (m_object)
            m_object->addAuditor(this, SENSOR);
    }
    T* get() const { return m_object; }
    T* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    void auditedChanged(SoNotification&) override {}
    void auditedDying() override { m_object = nullptr; }

    T* m_object = nullptr; // Not owned; forgotten when it dies.
};

} // namespace mirabo
