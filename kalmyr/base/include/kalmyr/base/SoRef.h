#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

/// Holds one reference on an object derived from SoRefCounter.
/// The pointer may be null. The object's type must be complete only where references are taken or
/// released.
template <typename T>
class SoRef {
public:
    constexpr SoRef() = default;
    constexpr SoRef(std::nullptr_t) {}
    SoRef(T* object) : m_object(object)
    {
        if (m_object) {
            m_object->ref();
        }
    }
    SoRef(const SoRef& other) : SoRef(other.m_object) {}
    SoRef(SoRef&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    template <typename U>
    requires(std::is_convertible_v<U*, T*> && !std::is_same_v<U, T>) SoRef(const SoRef<U>& other)
        : SoRef(other.get())
    {
    }
    ~SoRef()
    {
        if (m_object) {
            m_object->unref();
        }
    }

    /// Takes over a reference that the caller holds already.
    static SoRef adopt(T* object)
    {
        SoRef r;
        r.m_object = object;
        return r;
    }

    SoRef& operator=(const SoRef& other)
    {
        SoRef(other).swap(*this);
        return *this;
    }
    SoRef& operator=(SoRef&& other) noexcept
    {
        SoRef(std::move(other)).swap(*this);
        return *this;
    }
    SoRef& operator=(T* object)
    {
        SoRef(object).swap(*this);
        return *this;
    }

    void reset(T* object = nullptr) { *this = object; }

    /// Gives up the reference without destroying the object, and returns it; it may have none left.
    [[nodiscard]] T* release()
    {
        T* object = std::exchange(m_object, nullptr);
        if (object) {
            object->unrefNoDelete();
        }
        return object;
    }

    void swap(SoRef& other) noexcept { std::swap(m_object, other.m_object); }
    friend void swap(SoRef& a, SoRef& b) noexcept { a.swap(b); }

    T* get() const { return m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object; }

    template <typename U>
    friend bool operator==(const SoRef& a, const SoRef<U>& b)
    {
        return a.get() == b.get();
    }
    friend bool operator==(const SoRef& a, const T* b) { return a.m_object == b; }
    friend bool operator==(const SoRef& a, std::nullptr_t) { return !a.m_object; }
    friend bool operator<(const SoRef& a, const SoRef& b)
    {
        return std::less<const T*>()(a.m_object, b.m_object);
    }

private:
    T* m_object = nullptr;
};

template <typename T>
struct std::hash<SoRef<T>> {
    std::size_t operator()(const SoRef<T>& r) const noexcept
    {
        return std::hash<const T*>()(r.get());
    }
};
