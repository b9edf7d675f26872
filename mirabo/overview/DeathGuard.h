#pragma once

#include <kalmyr/core/SoAuditor.h>

#include <functional>
#include <utility>

namespace mirabo {

/// Tells when a node or a field dies, and nothing else: what a hidden pane keeps of what it shows.
/// Holds no reference.
template <class T>
class DeathGuard final : public SoAuditor {
public:
    using Callback = std::function<void()>;

    /// `died` is called when the death begins: a node and its fields are still whole then, a field
    /// has lost its value already. The guard has let go by then and may be destroyed inside the
    /// call.
    DeathGuard(T* object, Callback died) : m_object(object), m_died(std::move(died))
    {
        m_object->addAuditor(this, SENSOR);
    }
    ~DeathGuard()
    {
        if (m_object)
            m_object->removeAuditor(this);
    }
    DeathGuard(const DeathGuard&) = delete;
    DeathGuard& operator=(const DeathGuard&) = delete;

    void auditedChanged(SoNotification&) override {}
    void auditedDying() override
    {
        m_object = nullptr;
        const Callback died = std::move(m_died); // the callback may destroy this guard
        died();
    }

private:
    T* m_object; // Not owned; null once it died.
    Callback m_died;
};

} // namespace mirabo
