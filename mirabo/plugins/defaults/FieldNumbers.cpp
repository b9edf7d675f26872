#include "FieldNumbers.h"

#include "NumberText.h"

#include <kalmyr/fields/SoValueFields.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Kind = FieldNumbers::Kind;

template <class T>
constexpr Kind kindOf()
{
    if constexpr (std::is_same_v<T, float>)
        return Kind::Float;
    else if constexpr (std::is_same_v<T, double>)
        return Kind::Double;
    else if constexpr (std::is_same_v<T, std::int32_t>)
        return Kind::Int32;
    else if constexpr (std::is_same_v<T, std::uint32_t>)
        return Kind::UInt32;
    else if constexpr (std::is_same_v<T, std::int16_t>)
        return Kind::Int16;
    else
        return static_cast<std::enable_if_t<std::is_same_v<T, std::uint16_t>, Kind>>(Kind::UInt16);
}

/// Whether a number of type T holds the number.
template <class T>
bool fits(double& number)
{
    return fitNumber(kindOf<T>(), number);
}

// How a value type is made of numbers: `Number`, `kCount`, get() and setAll() of all of them, and
// set() of one.

/// A value that is an array of numbers; `Pointer` gives its start.
template <class T, class N, int Count, N* (*Pointer)(T&)>
struct Array {
    using Number = N;
    static constexpr int kCount = Count;

    static void get(const T& value, double* numbers)
    {
        T copy = value;
        std::copy_n(Pointer(copy), Count, numbers);
    }
    static bool set(T& value, int component, double number)
    {
        if (!fits<N>(number))
            return false;
        Pointer(value)[component] = static_cast<N>(number);
        return true;
    }
    static bool setAll(T& value, const double* numbers)
    {
        T made = value;
        for (int i = 0; i < Count; ++i)
            if (!set(made, i, numbers[i]))
                return false;
        value = made;
        return true;
    }
};

template <class T>
T* ownAddress(T& value)
{
    return &value;
}

template <class V>
typename V::Value* components(V& vector)
{
    return vector.getValue();
}

inline float* elements(SbMatrix& matrix)
{
    return matrix[0];
}

/// A plain number.
template <class T>
struct Parts : Array<T, T, 1, ownAddress<T>> {
};

template <class V>
requires(V::kSize >= 2) struct Parts<V> : Array<V, typename V::Value, V::kSize, components<V>> {
};

template <>
struct Parts<SbMatrix> : Array<SbMatrix, float, 16, elements> {
};

template <>
struct Parts<SbTime> {
    using Number = double;
    static constexpr int kCount = 1;

    static void get(SbTime value, double* numbers) { *numbers = value.getValue(); }
    static bool set(SbTime& value, int, double number)
    {
        value.setValue(number);
        return true;
    }
    static bool setAll(SbTime& value, const double* numbers) { return set(value, 0, *numbers); }
};

/// Minimum, then maximum.
template <class B>
requires requires
{
    typename B::Vec;
}
struct Parts<B> {
    using Vec = typename B::Vec;
    using Corner = Parts<Vec>;
    using Number = typename Vec::Value;
    static constexpr int kCount = 2 * Vec::kSize;

    static void get(const B& value, double* numbers)
    {
        Corner::get(value.getMin(), numbers);
        Corner::get(value.getMax(), numbers + Vec::kSize);
    }
    static bool set(B& value, int component, double number)
    {
        Vec corners[2] = {value.getMin(), value.getMax()};
        if (!Corner::set(corners[component / Vec::kSize], component % Vec::kSize, number))
            return false;
        value.setBounds(corners[0], corners[1]);
        return true;
    }
    static bool setAll(B& value, const double* numbers)
    {
        Vec min, max;
        if (!Corner::setAll(min, numbers) || !Corner::setAll(max, numbers + Vec::kSize))
            return false;
        value.setBounds(min, max);
        return true;
    }
};

/// Four numbers of which three are a direction: a value cannot be changed in one of them alone.
template <class T, class Self>
struct Made {
    using Number = float;
    static constexpr int kCount = 4;

    static bool set(T& value, int component, double number)
    {
        double numbers[kCount];
        Self::get(value, numbers);
        numbers[component] = number;
        return Self::setAll(value, numbers);
    }
};

template <>
struct Parts<SbPlane> : Made<SbPlane, Parts<SbPlane>> {
    static void get(const SbPlane& value, double* numbers)
    {
        std::copy_n(value.getNormal().getValue(), 3, numbers);
        numbers[3] = value.getDistanceFromOrigin();
    }
    static bool setAll(SbPlane& value, const double* numbers)
    {
        // As the toolkit reads planes: a normal this near to length 1 is taken as it is.
        constexpr double kUnitTolerance = 1e-6;
        SbVec4f plane;
        if (!Parts<SbVec4f>::setAll(plane, numbers))
            return false;
        const SbVec3f normal(plane.getValue());
        const double square = SbVec3d(normal).sqrLength();
        if (!(square > 0) || !std::isfinite(square))
            return false;
        static_assert(sizeof(SbPlane) == sizeof(SbVec4f));
        value = std::fabs(square - 1) > kUnitTolerance ? SbPlane(normal, plane[3])
                                                       : std::bit_cast<SbPlane>(plane);
        return true;
    }
};

template <>
struct Parts<SbRotation> : Made<SbRotation, Parts<SbRotation>> {
    static void get(const SbRotation& value, double* numbers)
    {
        const SbVec4d q{SbVec4f(value.getValue())};
        SbVec3d axis(q.getValue());
        const double sine = axis.normalize();
        if (sine > 0)
            std::copy_n(axis.getValue(), 3, numbers);
        else
            numbers[0] = numbers[1] = 0, numbers[2] = 1;
        numbers[3] = 2 * std::atan2(sine, q[3]);
        // People read these: round numbers, where they make the same rotation.
        double round[kCount];
        std::transform(numbers, numbers + kCount, round, [](double number) {
            constexpr double kDecimals = 1e6;
            return std::round(number * kDecimals) / kDecimals + 0.0; // no negative zero
        });
        SbRotation made;
        const double* shown = setAll(made, round) && made == value ? round : numbers;
        std::transform(shown, shown + kCount, numbers, [](double number) {
            return static_cast<double>(static_cast<float>(number));
        });
    }
    static bool setAll(SbRotation& value, const double* numbers)
    {
        SbVec4f single;
        if (!Parts<SbVec4f>::setAll(single, numbers))
            return false;
        SbVec3d axis(numbers);
        const double length = axis.normalize();
        if (!(length > 0) || !std::isfinite(length) || !std::isfinite(numbers[3]))
            return false;
        const double half = numbers[3] / 2;
        const SbVec3f v(axis * std::sin(half));
        value.setValue(v[0], v[1], v[2], static_cast<float>(std::cos(half)));
        return true;
    }
};

template <class Field>
class NumbersOf final : public FieldNumbers {
    using Value = typename Field::Value;
    using P = Parts<Value>;
    static constexpr bool kIsMultiple = std::is_base_of_v<SoMField, Field>;

public:
    explicit NumbersOf(QStringList labels)
        : FieldNumbers(kindOf<typename P::Number>(), std::move(labels))
    {
        static_assert(P::kCount <= kMaxCount);
    }

    void get(const SoField& field, int index, double* numbers) const override
    {
        if (const Value* value = find(field, index))
            P::get(*value, numbers);
    }
    bool set(SoField& field, int index, int component, double number) const override
    {
        return change(field, index, [component, number](Value& value) {
            return component >= 0 && component < P::kCount && P::set(value, component, number);
        });
    }
    bool setAll(SoField& field, int index, const double* numbers) const override
    {
        return change(field, index, [numbers](Value& value) { return P::setAll(value, numbers); });
    }

    static int numberCount() { return P::kCount; }

private:
    static const Value* find(const SoField& field, int index)
    {
        const auto& typed = static_cast<const Field&>(field);
        if constexpr (kIsMultiple)
            return index >= 0 && index < typed.getNum() ? typed.getValues(index) : nullptr;
        else
            return &typed.getValue();
    }
    template <class Edit>
    static bool change(SoField& field, int index, const Edit& edit)
    {
        const Value* present = find(field, index);
        if (!present)
            return false;
        Value value = *present;
        if (!edit(value))
            return false;
        if constexpr (kIsMultiple)
            static_cast<Field&>(field).set1Value(index, value);
        else
            static_cast<Field&>(field).setValue(value);
        return true;
    }
};

QStringList labelsOfVector(int count)
{
    return count == 1 ? QStringList{QString()} : QStringList{"x", "y", "z", "w"}.mid(0, count);
}

QStringList labelsOfBox(int count)
{
    QStringList labels;
    for (const char* corner : {"min ", "max "})
        for (const QString& label : labelsOfVector(count / 2))
            labels << corner + label;
    return labels;
}

QStringList labelsOfColor(int count)
{
    return QStringList{"r", "g", "b", "a"}.mid(0, count);
}

QStringList labelsOfMatrix(int count)
{
    QStringList labels;
    for (int i = 0; i < count; ++i)
        labels << QString("m%1%2").arg(i / 4 + 1).arg(i % 4 + 1);
    return labels;
}

struct Entry {
    SoType (*type)();
    std::unique_ptr<const FieldNumbers> numbers;
};

/// Entries for field types whose numbers have such names.
template <class... Fields>
void add(std::vector<Entry>& table, QStringList (*labels)(int count))
{
    (table.push_back({&Fields::getClassTypeId, std::make_unique<NumbersOf<Fields>>(
                                                   labels(NumbersOf<Fields>::numberCount()))}),
     ...);
}

std::vector<Entry> makeTable()
{
    std::vector<Entry> table;
    add<SoSFInt32, SoMFInt32, SoSFUInt32, SoMFUInt32, SoSFShort, SoMFShort, SoSFUShort, SoMFUShort,
        SoSFFloat, SoMFFloat, SoSFDouble, SoMFDouble, SoSFTime, SoMFTime, SoSFVec2f, SoMFVec2f,
        SoSFVec3f, SoMFVec3f, SoSFVec4f, SoMFVec4f, SoSFVec2d, SoMFVec2d, SoSFVec3d, SoMFVec3d,
        SoSFVec4d, SoMFVec4d, SoSFVec2s, SoMFVec2s, SoSFVec3s, SoMFVec3s, SoSFVec4s, SoMFVec4s,
        SoSFVec2i32, SoMFVec2i32, SoSFVec3i32, SoMFVec3i32, SoSFVec4i32, SoMFVec4i32>(
        table, labelsOfVector);
    add<SoSFBox2f, SoSFBox2s, SoSFBox3f, SoSFBox3s>(table, labelsOfBox);
    add<SoSFColor, SoMFColor, SoSFColorRGBA, SoMFColorRGBA>(table, labelsOfColor);
    add<SoSFMatrix, SoMFMatrix>(table, labelsOfMatrix);
    add<SoSFPlane, SoMFPlane>(table, [](int) {
        return QStringList{"normal x", "normal y", "normal z", "distance"};
    });
    add<SoSFRotation, SoMFRotation>(table, [](int) {
        return QStringList{"axis x", "axis y", "axis z", "angle"};
    });
    return table;
}

} // namespace

FieldNumbers::FieldNumbers(Kind kind, QStringList labels)
    : m_kind(kind), m_labels(std::move(labels))
{
}

const FieldNumbers* FieldNumbers::of(SoType fieldType)
{
    static const std::vector<Entry> s_table = makeTable();
    const auto at = std::find_if(s_table.begin(), s_table.end(), [fieldType](const Entry& entry) {
        return entry.type() == fieldType;
    });
    return at == s_table.end() ? nullptr : at->numbers.get();
}
