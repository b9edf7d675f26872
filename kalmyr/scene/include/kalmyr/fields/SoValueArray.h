#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

namespace kalmyr {

/// The growing array inside a multiple-value field: 8 bytes of counts, then the address of the
/// values or, for one value of a small plain type, the value itself.
///
/// Arrays of plain types grow by reallocation, which moves pages instead of bytes once they are
/// large.
template <class T>
class SoValueArray {
public:
    static constexpr bool kPlain =
        std::is_trivially_copyable_v<T> && alignof(T) <= alignof(std::max_align_t);
    static constexpr bool kInPlace = kPlain && sizeof(T) <= 16;

    SoValueArray() {}
    ~SoValueArray()
    {
        if (m_capacity) {
            release(m_values);
        }
    }
    SoValueArray(const SoValueArray&) = delete;
    SoValueArray& operator=(const SoValueArray&) = delete;

    int size() const { return m_num; }
    int capacity() const { return m_capacity ? m_capacity : (kInPlace ? 1 : 0); }
    T* data() { return m_capacity ? m_values : inPlace(); }
    const T* data() const { return m_capacity ? m_values : inPlace(); }
    /// Whether an address lies inside the array.
    bool contains(const T* at) const
    {
        const std::less<const T*> before;
        return !before(at, data()) && before(at, data() + m_num);
    }

    /// New values are default ones.
    void resize(int num)
    {
        const int old = m_num;
        resizeRaw(num);
        if (num > old && kPlain) {
            std::uninitialized_fill(data() + old, data() + num, T{});
        }
    }
    /// New values of plain types are left without a value; others are default ones. Values that
    /// go are freed of what they hold.
    void resizeRaw(int num)
    {
        if (num > capacity()) {
            grow(num);
        }
        if constexpr (!kPlain) {
            if (num < m_num) {
                std::fill(data() + num, data() + m_num, T{});
            }
        }
        m_num = num;
    }
    void reserve(int num)
    {
        if (num > capacity()) {
            reallocate(num);
        }
    }
    /// Gives memory back when more than a quarter is unused.
    void trim()
    {
        if (kPlain && m_capacity > kTrimAbove && m_num < m_capacity - m_capacity / 4) {
            reallocate(std::max(m_num, 1));
        }
    }

private:
    static constexpr int kTrimAbove = 64;

    T* inPlace() const
    {
        if constexpr (kInPlace) {
            return const_cast<T*>(reinterpret_cast<const T*>(m_place));
        } else {
            return nullptr;
        }
    }
    void grow(int num)
    {
        // By half, so that appending is linear; a first allocation is exact.
        const std::int64_t half =
            m_num > 1 ? static_cast<std::int64_t>(m_num) + m_num / 2 : std::int64_t(0);
        reallocate(
            static_cast<int>(std::clamp<std::int64_t>(half, num, std::numeric_limits<int>::max())));
    }
    static void release(T* values)
    {
        if constexpr (kPlain) {
            std::free(values);
        } else {
            delete[] values;
        }
    }
    void reallocate(int capacity)
    {
        T* values;
        if constexpr (kPlain) {
            values =
                static_cast<T*>(std::realloc(static_cast<void*>(m_capacity ? m_values : nullptr),
                                             static_cast<std::size_t>(capacity) * sizeof(T)));
            if (!values) {
                throw std::bad_alloc();
            }
            if (kInPlace && !m_capacity) {
                std::copy(data(), data() + m_num, values);
            }
        } else {
            values = new T[static_cast<std::size_t>(capacity)];
            std::move(data(), data() + m_num, values);
            if (m_capacity) {
                release(m_values);
            }
        }
        m_values = values;
        m_capacity = capacity;
    }

    int m_num = 0;
    int m_capacity = 0; ///< 0 while the value is in place
    union {
        T* m_values;
        alignas(8) unsigned char m_place[kInPlace && sizeof(T) > 8 ? 16 : 8];
    };
};

} // namespace kalmyr
