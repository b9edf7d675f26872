#pragma once

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldIO.h>

#include <algorithm>
#include <utility>
#include <vector>

class SoNodeCopier;

/// Base of fields that hold objects, or none, with a reference. The objects are shared,
/// not copied. Derived says by static functions when two are the same value (`isSameObject`), and
/// how one is read and written (`readObject`, `writeObject`).
template <class Derived, class T>
class SoSFReference : public SoSField {
public:
    T* getValue() const
    {
        evaluate();
        return m_object.get();
    }
    operator T*() const { return getValue(); }
    void setValue(T* object)
    {
        const SoRef<T> old(m_object); // lives until everybody has heard of the change
        m_object = object;
        valueChanged();
    }
    void initValue(T* object) { m_object = object; }

    bool isSame(const SoField& other) const override
    {
        return other.getTypeId() == getTypeId()
               && Derived::isSameObject(static_cast<const SoSFReference&>(other).getValue(),
                                        getValue());
    }
    void copyFrom(const SoField& other) override
    {
        if (canCopy(other))
            setValue(static_cast<const SoSFReference&>(other).getValue());
    }
    bool readValue(SoFieldReader& in) override
    {
        SoRef<T> object;
        if (!Derived::readObject(in, object))
            return false;
        setValue(object.get());
        return true;
    }
    void writeValue(SoFieldWriter& out) const override { Derived::writeObject(out, getValue()); }

private:
    SoRef<T> m_object;
};

/// The same for any number of objects, null among them. Broken contracts (indices and counts out of
/// range) change nothing and post an error.
template <class Derived, class T>
class SoMFReference : public SoMField {
public:
    /// More than this are refused.
    static constexpr int kMaxNum = 1 << 28;

    int getNum() const override { return static_cast<int>(values().size()); }
    /// Null for an index out of range.
    T* operator[](int i) const
    {
        const auto& objects = values();
        if (!kalmyr::holds(i >= 0 && i < static_cast<int>(objects.size()), "0 <= index < getNum()"))
            return nullptr;
        return objects[static_cast<std::size_t>(i)].get();
    }
    /// Makes the field hold exactly one.
    void setValue(T* object) { assign({SoRef<T>(object)}); }
    /// At or beyond the end the field grows by nulls.
    void set1Value(int index, T* object)
    {
        if (!isIndex(index, kMaxNum))
            return;
        evaluate();
        const auto at = static_cast<std::size_t>(index);
        if (at >= m_objects.size())
            m_objects.resize(at + 1);
        const SoRef<T> old(m_objects[at]);
        m_objects[at] = object;
        valueChanged();
    }
    /// Index of the first that is the same, or -1.
    int find(const T* object) const
    {
        const auto& objects = values();
        const auto at = std::find_if(objects.begin(), objects.end(), [object](const auto& o) {
            return Derived::isSameObject(o.get(), object);
        });
        return at == objects.end() ? -1 : static_cast<int>(at - objects.begin());
    }

    void setNum(int num) override
    {
        if (!kalmyr::holds(num >= 0 && num <= kMaxNum, "0 <= num <= kMaxNum"))
            return;
        std::vector<SoRef<T>> objects = values();
        objects.resize(static_cast<std::size_t>(num));
        assign(std::move(objects));
    }
    void deleteValues(int start, int count = -1) override
    {
        const int n = countToDelete(getNum(), start, count);
        if (n == 0)
            return;
        std::vector<SoRef<T>> objects = values();
        objects.erase(objects.begin() + start, objects.begin() + start + n);
        assign(std::move(objects));
    }
    void insertSpace(int start, int count) override
    {
        if (!canInsert(getNum(), start, count, kMaxNum))
            return;
        std::vector<SoRef<T>> objects = values();
        objects.resize(std::max(objects.size(), static_cast<std::size_t>(start)));
        objects.insert(objects.begin() + start, static_cast<std::size_t>(count), SoRef<T>());
        assign(std::move(objects));
    }
    bool replaceValues(int start, int removed, const SoMField& source, int from, int count) override
    {
        if (!canReplace(start, removed, source, from, count, kMaxNum))
            return false;
        std::vector<SoRef<T>> objects = values();
        const auto& others = static_cast<const SoMFReference&>(source).values();
        objects.erase(objects.begin() + start, objects.begin() + start + removed);
        objects.insert(objects.begin() + start, others.begin() + from,
                       others.begin() + from + count);
        assign(std::move(objects));
        return true;
    }
    bool isSame(const SoField& other) const override
    {
        if (other.getTypeId() != getTypeId())
            return false;
        const auto& others = static_cast<const SoMFReference&>(other).values();
        return std::equal(
            values().begin(), values().end(), others.begin(), others.end(),
            [](const auto& a, const auto& b) { return Derived::isSameObject(a.get(), b.get()); });
    }
    void copyFrom(const SoField& other) override
    {
        if (&other != this && canCopy(other))
            assign(static_cast<const SoMFReference&>(other).values());
    }
    bool read1Value(int index, SoFieldReader& in) override
    {
        SoRef<T> object;
        if (!isIndex(index, kMaxNum) || !Derived::readObject(in, object))
            return false;
        set1Value(index, object.get());
        return true;
    }
    void write1Value(int index, SoFieldWriter& out) const override
    {
        if (isIndex(index, getNum()))
            Derived::writeObject(out, (*this)[index]);
    }

protected:
    bool readList(SoFieldReader& in) override
    {
        std::vector<SoRef<T>> objects;
        while (!in.text.accept(']'))
            if (!Derived::readObject(in, objects.emplace_back()))
                return false;
        assign(std::move(objects));
        return true;
    }
    const std::vector<SoRef<T>>& values() const
    {
        evaluate();
        return m_objects;
    }
    /// Those that go live until everybody has heard of it.
    void assign(std::vector<SoRef<T>> objects)
    {
        objects.swap(m_objects);
        valueChanged();
    }

private:
    std::vector<SoRef<T>> m_objects;
};

/// Assignment of a value, for the classes derived from SoSFReference.
#define SO_REFERENCE_ASSIGNMENT(Class, T)                                                          \
    Class& operator=(T* object)                                                                    \
    {                                                                                              \
        setValue(object);                                                                          \
        return *this;                                                                              \
    }
