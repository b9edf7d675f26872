#pragma once

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/fields/SoFieldMacros.h>
#include <kalmyr/fields/SoValueEquality.h>
#include <kalmyr/fields/SoValueText.h>

#include <type_traits>
#include <utility>

/// Implementation of a single-value field of value type T; `Derived` is the concrete field class.
template <class Derived, class T>
class SoSFValue : public SoSField {
public:
    using Value = T;

    const T& getValue() const
    {
        evaluate();
        return m_value;
    }
    operator const T&() const { return getValue(); }

    /// Sets the value and notifies; also when it equals the old one (intended: a set is an event).
    void setValue(const T& value)
    {
        m_value = value;
        valueChanged();
    }
    /// From whatever T is constructed from, such as three floats for a vector.
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
    /// Value without notification, and the default flag stays: for constructors.
    template <class... A>
    void initValue(A... args)
    {
        m_value = T(args...);
    }

    /// As isSame(): equal values, or values with the same bits.
    bool operator==(const SoSFValue& other) const
    {
        return kalmyr::isSameValue(getValue(), other.getValue());
    }

    bool isSame(const SoField& other) const override
    {
        return other.getTypeId() == getTypeId()
               && kalmyr::isSameValue(static_cast<const SoSFValue&>(other).getValue(), getValue());
    }
    void copyFrom(const SoField& other) override
    {
        if (canCopy(other))
            setValue(static_cast<const SoSFValue&>(other).getValue());
    }
    bool readValue(SoFieldReader& in) override
    {
        T value{};
        if (!kalmyr::readText(in.text, value)) {
            return false;
        }
        m_value = std::move(value);
        valueChanged();
        return true;
    }
    void writeValue(SoFieldWriter& out) const override { kalmyr::writeText(out.text, getValue()); }

protected:
    T m_value{};
};
