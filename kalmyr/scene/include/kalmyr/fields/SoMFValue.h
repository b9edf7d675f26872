#pragma once

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/fields/SoFieldMacros.h>
#include <kalmyr/fields/SoValueText.h>

#include <algorithm>
#include <cassert>
#include <initializer_list>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

/// Implementation of a multiple-value field of value type T; `Derived` is the concrete class.
///
/// One contiguous array; a single value of at most 16 bytes is kept in place without allocation.
template <class Derived, class T> class SoMFValue : public SoMField {
public:
    using Value = T;

    ~SoMFValue() override { release(); }

    int getNum() const override
    {
        evaluate();
        return m_num;
    }
    /// The array, getNum() values; valid until the next edit.
    const T *getValues(int start = 0) const
    {
        evaluate();
        return data() + start;
    }
    std::span<const T> values() const { return {getValues(), static_cast<std::size_t>(getNum())}; }
    const T &operator[](int i) const { return getValues()[i]; }

    /// Makes the field hold exactly one value.
    void setValue(const T &value)
    {
        const T copy = value;
        resize(1, false);
        data()[0] = copy;
        valueChanged();
    }
    template <class... A, class = std::enable_if_t<(sizeof...(A) > 1)>> void setValue(A... args)
    {
        setValue(T(args...));
    }
    Derived &operator=(const T &value)
    {
        setValue(value);
        return static_cast<Derived &>(*this);
    }
    template <class... A> void initValue(A... args)
    {
        resize(1, false);
        data()[0] = T(args...);
    }

    /// Replaces one value, growing the field when `index` is at or beyond its end.
    void set1Value(int index, const T &value)
    {
        assert(index >= 0);
        const T copy = value;
        if (index >= m_num) resize(index + 1, true);
        data()[index] = copy;
        valueChanged();
    }
    template <class... A, class = std::enable_if_t<(sizeof...(A) > 1)>>
    void set1Value(int index, A... args)
    {
        set1Value(index, T(args...));
    }
    /// Replaces `values.size()` values from `start`, growing the field when needed.
    void setValues(int start, std::span<const T> values)
    {
        assert(start >= 0);
        const int end = start + static_cast<int>(values.size());
        if (end > m_num) resize(end, true);
        std::copy(values.begin(), values.end(), data() + start);
        valueChanged();
    }
    void setValues(int start, int num, const T *values)
    {
        setValues(start, std::span<const T>(values, static_cast<std::size_t>(num)));
    }
    void setValues(std::initializer_list<T> values)
    {
        resize(0, false);
        setValues(0, std::span<const T>(values.begin(), values.size()));
    }
    void setNum(int num) override
    {
        resize(std::max(num, 0), true);
        valueChanged();
    }
    void deleteValues(int start, int count = -1) override
    {
        if (start < 0 || start >= m_num) return;
        const int n = count < 0 ? m_num - start : std::min(count, m_num - start);
        std::move(data() + start + n, data() + m_num, data() + start);
        resize(m_num - n, true);
        valueChanged();
    }
    void insertSpace(int start, int count) override
    {
        if (start < 0 || count <= 0) return;
        const int old = m_num;
        resize(std::max(start, old) + count, true);
        if (start < old) {
            std::move_backward(data() + start, data() + old, data() + old + count);
            std::fill(data() + start, data() + start + count, T{});
        }
        valueChanged();
    }

    /// Direct access for bulk edits: exactly one notification, sent by finishEditing().
    T *startEditing()
    {
        evaluate();
        return data();
    }
    void finishEditing() { valueChanged(); }
    /// Room for `num` values whose content is to be written by startEditing() style access;
    /// no notification.
    void setNumQuietly(int num) { resize(num, true); }
    /// Takes memory for `num` values in advance.
    void reserve(int num) { grow(num); }

    /// Index of the first equal value, or -1.
    int find(const T &value) const
    {
        const auto all = values();
        const auto at = std::find(all.begin(), all.end(), value);
        return at == all.end() ? -1 : static_cast<int>(at - all.begin());
    }

    bool isSame(const SoField &other) const override
    {
        if (other.getTypeId() != getTypeId()) return false;
        const auto a = values(), b = static_cast<const SoMFValue &>(other).values();
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }
    void copyFrom(const SoField &other) override
    {
        if (&other == this) return;
        const auto from = static_cast<const SoMFValue &>(other).values();
        resize(static_cast<int>(from.size()), false);
        std::copy(from.begin(), from.end(), data());
        valueChanged();
    }
    bool read1Value(int index, SoFieldReader &in) override
    {
        T value{};
        if (!kalmyr::readText(in.text, value)) return false;
        set1Value(index, value);
        return true;
    }
    void write1Value(int index, SoFieldWriter &out) const override
    {
        kalmyr::writeText(out.text, (*this)[index]);
    }

protected:
    bool readList(SoFieldReader &in) override
    {
        resize(0, false);
        const bool ok = kalmyr::readTextList(in.text, [this](int count) { return extend(count); });
        m_flags |= 0;
        valueChanged();
        return ok;
    }

    /// `count` more values at the end; the address of the first new one.
    T *extend(int count)
    {
        const int old = m_num;
        resize(old + count, true);
        return data() + old;
    }

    static constexpr bool kInPlace = sizeof(T) <= 16 && std::is_trivially_copyable_v<T>;

    const T *data() const { return m_capacity ? m_values : inPlace(); }
    T *data() { return m_capacity ? m_values : inPlace(); }

    void resize(int num, bool keep)
    {
        if (num > capacity()) grow(keep ? std::max(num, m_num + m_num / 2) : num, keep);
        if (num > m_num) std::fill(data() + m_num, data() + num, T{});
        m_num = num;
    }

private:
    int capacity() const { return m_capacity ? m_capacity : (kInPlace ? 1 : 0); }
    T *inPlace() const
    {
        if constexpr (kInPlace) return const_cast<T *>(reinterpret_cast<const T *>(m_place));
        return nullptr;
    }
    void grow(int num, bool keep = true)
    {
        if (num <= capacity()) return;
        T *values = new T[static_cast<std::size_t>(num)]();
        if (keep) std::move(data(), data() + m_num, values);
        if (m_capacity) delete[] m_values;
        m_values = values;
        m_capacity = num;
        if (!keep) m_num = 0;
    }
    void release()
    {
        if (m_capacity) delete[] m_values;
    }

    int m_num = 0;
    int m_capacity = 0; ///< 0 while the values are in place
    union {
        T *m_values;
        alignas(8) unsigned char m_place[kInPlace ? (sizeof(T) > 8 ? sizeof(T) : 8) : 8];
    };
};
