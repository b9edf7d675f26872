#pragma once

#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/fields/SoFieldMacros.h>
#include <kalmyr/fields/SoValueArray.h>
#include <kalmyr/fields/SoValueEquality.h>
#include <kalmyr/fields/SoValueText.h>

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <memory>
#include <span>
#include <type_traits>

/// Implementation of a multiple-value field of value type T; `Derived` is the concrete class.
///
/// One contiguous array; a single value of at most 16 bytes is kept in place without allocation.
/// Broken contracts (indices and counts out of range, more than kMaxNum values, values from a null
/// pointer) change nothing and post an error; what is read then is a default value.
/// A derived class whose text depends on more than the value shadows readItem() and writeItem()
/// and says so by kOwnText.
template <class Derived, class T>
class SoMFValue : public SoMField {
public:
    using Value = T;
    /// More values than this are refused.
    static constexpr int kMaxNum = static_cast<int>(std::min<std::size_t>(
        std::numeric_limits<int>::max() / 2, std::numeric_limits<std::size_t>::max() / sizeof(T)));

    int getNum() const override
    {
        evaluate();
        return m_array.size();
    }
    /// The array, getNum() values, from `start` on; valid until the next edit.
    const T* getValues(int start = 0) const
    {
        evaluate();
        if (!kalmyr::holds(start >= 0 && start <= m_array.size(), "0 <= start <= getNum()"))
            start = m_array.size();
        return m_array.data() + start;
    }
    std::span<const T> values() const
    {
        evaluate();
        return {m_array.data(), static_cast<std::size_t>(m_array.size())};
    }
    const T& operator[](int i) const
    {
        evaluate();
        if (!kalmyr::holds(i >= 0 && i < m_array.size(), "0 <= index < getNum()"))
            return noValue();
        return m_array.data()[i];
    }

    /// Makes the field hold exactly one value.
    void setValue(const T& value)
    {
        setOnly(value);
        valueChanged();
    }
    template <class... A, class = std::enable_if_t<(sizeof...(A) > 1)>>
    void setValue(A... args)
    {
        setValue(T(args...));
    }
    Derived& operator=(const T& value)
    {
        setValue(value);
        return static_cast<Derived&>(*this);
    }
    /// One value or several without notification, and the default flag stays: for constructors.
    template <class... A>
    void initValue(A... args)
    {
        setOnly(T(args...));
    }
    void initValues(std::initializer_list<T> values) { assign({values.begin(), values.size()}); }

    /// Replaces one value, growing the field by default values when `index` is at or beyond its
    /// end.
    void set1Value(int index, const T& value)
    {
        if (!kalmyr::holds(index >= 0 && index < kMaxNum, "0 <= index < kMaxNum"))
            return;
        evaluate();
        const T copy = value;
        if (index >= m_array.size())
            m_array.resize(index + 1);
        m_array.data()[index] = copy;
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
        if (!kalmyr::holds(start >= 0 && start <= kMaxNum
                               && values.size() <= static_cast<std::size_t>(kMaxNum - start),
                           "0 <= start, and at most kMaxNum values in all"))
            return;
        evaluate();
        store(start, values);
        valueChanged();
    }
    void setValues(int start, int num, const T* values)
    {
        if (!kalmyr::holds(num == 0 || (num > 0 && values), "num values, at least none"))
            return;
        setValues(start, std::span<const T>(values, static_cast<std::size_t>(num)));
    }
    /// Replaces everything.
    void setValues(std::initializer_list<T> values)
    {
        assign({values.begin(), values.size()});
        valueChanged();
    }
    void setNum(int num) override
    {
        evaluate();
        if (!isNum(num))
            return;
        m_array.resize(num);
        valueChanged();
    }
    void deleteValues(int start, int count = -1) override
    {
        evaluate();
        const int num = m_array.size();
        const int n = countToDelete(num, start, count);
        if (n == 0)
            return;
        T* at = m_array.data();
        std::move(at + start + n, at + num, at + start);
        m_array.resize(num - n);
        valueChanged();
    }
    void insertSpace(int start, int count) override
    {
        evaluate();
        const int old = m_array.size();
        if (!canInsert(old, start, count, kMaxNum))
            return;
        m_array.resize(std::max(start, old) + count);
        if (start < old) {
            T* at = m_array.data();
            std::move_backward(at + start, at + old, at + old + count);
            std::fill(at + start, at + start + count, T{});
        }
        valueChanged();
    }
    bool replaceValues(int start, int removed, const SoMField& source, int from, int count) override
    {
        if (!canReplace(start, removed, source, from, count, kMaxNum))
            return false;
        const T* values = static_cast<const SoMFValue&>(source).m_array.data() + from;
        const int old = m_array.size();
        const int num = old - removed + count;
        if (num > old)
            m_array.resize(num);
        T* at = m_array.data();
        if (num > old)
            std::move_backward(at + start + removed, at + old, at + num);
        else if (num < old)
            std::move(at + start + removed, at + old, at + start + count);
        std::copy_n(values, count, at + start);
        if (num < old)
            m_array.resize(num);
        valueChanged();
        return true;
    }

    /// Direct access for bulk edits: exactly one notification, sent by finishEditing().
    T* startEditing()
    {
        evaluate();
        return m_array.data();
    }
    void finishEditing() { valueChanged(); }
    /// Sets the number of values without notification, to be followed by startEditing() and
    /// finishEditing(). New values are default ones.
    void setNumQuietly(int num)
    {
        if (isNum(num))
            m_array.resize(num);
    }
    /// The same, but new values of plain types have no value until they are written. Null, and the
    /// number as it was, for a number out of range.
    T* setNumRaw(int num)
    {
        evaluate();
        if (!isNum(num))
            return nullptr;
        m_array.resizeRaw(num);
        return m_array.data();
    }
    /// Takes memory for `num` values in advance.
    void reserve(int num)
    {
        if (isNum(num))
            m_array.reserve(num);
    }

    /// Index of the first equal value, or -1.
    int find(const T& value) const
    {
        const auto all = values();
        const auto at = std::find(all.begin(), all.end(), value);
        return at == all.end() ? -1 : static_cast<int>(at - all.begin());
    }

    bool isSame(const SoField& other) const override
    {
        if (other.getTypeId() != getTypeId()) {
            return false;
        }
        const auto a = values(), b = static_cast<const SoMFValue&>(other).values();
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), kalmyr::isSameValue<T>);
    }
    void copyFrom(const SoField& other) override
    {
        if (&other == this || !canCopy(other))
            return;
        assign(static_cast<const SoMFValue&>(other).values());
        valueChanged();
    }

    bool readValue(SoFieldReader& in) override
    {
        if (in.text.accept('[')) {
            return readList(in);
        }
        T value{};
        if (!self().readItem(in, value)) {
            return false;
        }
        setValue(value);
        return true;
    }
    void writeValue(SoFieldWriter& out) const override
    {
        const auto all = values();
        if (all.size() == 1) {
            self().writeItem(out, all[0]);
            return;
        }
        out.text += '[';
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (i > 0) {
                out.text += ',';
            }
            startItem(out, i);
            self().writeItem(out, all[i]);
        }
        out.text += " ]";
    }
    bool read1Value(int index, SoFieldReader& in) override
    {
        T value{};
        if (!isIndex(index, kMaxNum) || !self().readItem(in, value))
            return false;
        set1Value(index, value);
        return true;
    }
    void write1Value(int index, SoFieldWriter& out) const override
    {
        if (isIndex(index, getNum()))
            self().writeItem(out, (*this)[index]);
    }

protected:
    static constexpr bool kOwnText = false;
    bool readItem(SoFieldReader& in, T& value) const { return kalmyr::readText(in.text, value); }
    void writeItem(SoFieldWriter& out, const T& value) const { kalmyr::writeText(out.text, value); }

    bool readList(SoFieldReader& in) override
    {
        m_array.resize(0);
        bool ok;
        if constexpr (Derived::kOwnText) {
            ok = readItems(in);
        } else {
            ok = kalmyr::readTextList(in.text, [this](int count) { return extend(count); });
        }
        m_array.trim();
        valueChanged();
        return ok;
    }

private:
    static bool isNum(int num)
    {
        return kalmyr::holds(num >= 0 && num <= kMaxNum, "0 <= num <= kMaxNum");
    }
    /// Stands for values that the field does not have.
    static const T& noValue()
    {
        static const T value{};
        return value;
    }

    // Written lists have this many values on a line.
    static constexpr int kNumbers =
        std::is_same_v<T, bool> ? 1 : static_cast<int>(sizeof(T) / (sizeof(T) < 4 ? sizeof(T) : 4));
    static constexpr std::size_t kPerLine = kNumbers <= 1 ? 12 : kNumbers == 2 ? 4 : 1;

    Derived& self() { return static_cast<Derived&>(*this); }
    const Derived& self() const { return static_cast<const Derived&>(*this); }

    void startItem(SoFieldWriter& out, std::size_t i) const
    {
        if (i % kPerLine == 0) {
            out.flushIfLarge();
            out.breakLine();
        } else {
            out.text += ' ';
        }
    }
    bool readItems(SoFieldReader& in)
    {
        while (!in.text.accept(']')) {
            T value{};
            if (!self().readItem(in, value)) {
                return false;
            }
            *extend(1) = value;
        }
        return true;
    }
    void setOnly(const T& value)
    {
        const T copy = value;
        m_array.resize(1);
        m_array.data()[0] = copy;
    }
    void assign(std::span<const T> values)
    {
        m_array.resize(0);
        m_array.resizeRaw(static_cast<int>(values.size()));
        std::copy(values.begin(), values.end(), m_array.data());
    }
    void store(int start, std::span<const T> values)
    {
        const int end = start + static_cast<int>(values.size());
        if (end > m_array.capacity() && m_array.contains(values.data())) {
            const auto copy = std::make_unique<T[]>(values.size()); // growing would take it away
            std::copy(values.begin(), values.end(), copy.get());
            store(start, {copy.get(), values.size()});
            return;
        }
        if (start > m_array.size()) {
            m_array.resize(start);
        }
        if (end > m_array.size()) {
            m_array.resizeRaw(end);
        }
        std::copy(values.begin(), values.end(), m_array.data() + start);
    }
    /// `count` more values at the end; the address of the first new one.
    T* extend(int count)
    {
        const int old = m_array.size();
        m_array.resizeRaw(old + count);
        return m_array.data() + std::min(old, old + count);
    }

    kalmyr::SoValueArray<T> m_array;
};
