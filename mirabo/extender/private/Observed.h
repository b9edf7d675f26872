#pragma once

#include "mirabo/extender/private/GraphFollower.h"

#include <atomic>

namespace mirabo {

/// A pointer at an object of the host that holds no reference on it: null once the object has died,
/// in whatever thread.
template <class T>
class Observed {
public:
    Observed() = default;
    Observed(const Observed&) = delete;
    Observed& operator=(const Observed&) = delete;

    /// Null also when another thread edits at the time: nobody could tell of the death.
    void reset(T* object = nullptr)
    {
        m_follower.release();
        m_object = object;
        if (object && !m_follower.follow(object, {.dying = [this] { m_object = nullptr; }}))
            m_object = nullptr;
    }
    T* get() const { return m_object; }
    /// Keeps the object, or the container of a field, alive for a look at it under a GraphReading;
    /// null when it is dead or dying.
    SoRef<const SoRefCounter> hold() const { return m_follower.hold(); }
    T* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    std::atomic<T*> m_object = nullptr; // Not owned; forgotten when it dies.
    GraphFollower m_follower;           // last: it goes before what it writes
};

} // namespace mirabo
