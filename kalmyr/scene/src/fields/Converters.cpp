#include "Converters.h"

#include <kalmyr/core/SoFieldConverter.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFEngine.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoSFPath.h>
#include <kalmyr/fields/SoSFTrigger.h>
#include <kalmyr/fields/SoValueFields.h>

#include <cmath>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

namespace kalmyr::detail {

namespace {

template <class Field>
constexpr bool kIsMultiple = std::is_base_of_v<SoMField, Field>;

/// The values of a field of a value type, one for a single-value field.
template <class Field>
std::span<const typename Field::Value> valuesOf(const SoField& field)
{
    const auto& typed = static_cast<const Field&>(field);
    if constexpr (kIsMultiple<Field>)
        return typed.values();
    else
        return {&typed.getValue(), 1};
}

/// Replaces all values of a field; a single-value field takes the first, and keeps its own where
/// there is none.
template <class Field, class Source, class Convert>
void setFrom(SoField& field, std::span<const Source> values, Convert convert)
{
    using Target = typename Field::Value;
    auto& typed = static_cast<Field&>(field);
    if constexpr (!kIsMultiple<Field>) {
        if (!values.empty())
            typed.setValue(static_cast<Target>(convert(values[0])));
    } else {
        typed.setNumQuietly(static_cast<int>(values.size()));
        Target* to = typed.startEditing();
        for (std::size_t i = 0; i < values.size(); ++i)
            to[i] = static_cast<Target>(convert(values[i]));
        typed.finishEditing();
    }
}

template <class From, class To, auto kConvert>
void convertValues(const SoField& from, SoField& to)
{
    setFrom<To>(to, valuesOf<From>(from), kConvert);
}

/// Between a single- and a multiple-value field of one value type, both ways.
template <class Single, class Multiple>
void registerPair()
{
    constexpr auto kSame = [](const typename Single::Value& value) { return value; };
    SoFieldConverter::set(Single::getClassTypeId(), Multiple::getClassTypeId(),
                          convertValues<Single, Multiple, kSame>);
    SoFieldConverter::set(Multiple::getClassTypeId(), Single::getClassTypeId(),
                          convertValues<Multiple, Single, kSame>);
}

// ---- numbers: every kind of them becomes every other by way of doubles, which hold all exactly

/// Beyond the range of the target the nearest value, and 0 for no number.
template <class T>
T toNumber(double value)
{
    if constexpr (std::is_same_v<T, bool>) {
        return value != 0;
    } else if constexpr (std::is_same_v<T, SbTime>) {
        return SbTime(value);
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(value);
    } else {
        using Limits = std::numeric_limits<T>;
        if (std::isnan(value))
            return T(0);
        if (value <= static_cast<double>(Limits::lowest()))
            return Limits::lowest();
        return value >= static_cast<double>(Limits::max()) ? Limits::max() : static_cast<T>(value);
    }
}

double toDouble(SbTime value)
{
    return value.getValue();
}
template <class T>
double toDouble(T value)
{
    return static_cast<double>(value);
}

/// How many numbers a value is, and of what type.
template <class T>
struct Parts {
    using Number = T;
    static constexpr int kCount = 1;
    static T* of(T& value) { return &value; }
    static const T* of(const T& value) { return &value; }
};
template <class T>
requires(!std::is_same_v<typename NumberLayout<T>::Number, void> && NumberLayout<T>::kCount > 1
         && !std::is_same_v<T, SbMatrix>) struct Parts<T> {
    using Number = typename NumberLayout<T>::Number;
    static constexpr int kCount = NumberLayout<T>::kCount;
    static Number* of(T& value) { return value.getValue(); }
    static const Number* of(const T& value) { return value.getValue(); }
};

struct NumberType {
    SoType type;
    int count;
    void (*read)(const SoField& field, std::vector<double>& numbers);
    void (*write)(SoField& field, std::span<const double> numbers);
};

template <class Field>
void readNumbers(const SoField& field, std::vector<double>& numbers)
{
    using Value = typename Field::Value;
    const auto values = valuesOf<Field>(field);
    numbers.clear();
    numbers.reserve(values.size() * Parts<Value>::kCount);
    for (const Value& value : values)
        for (int i = 0; i < Parts<Value>::kCount; ++i)
            numbers.push_back(toDouble(Parts<Value>::of(value)[i]));
}

template <class Value>
Value valueOf(const double* numbers)
{
    Value value{};
    for (int i = 0; i < Parts<Value>::kCount; ++i)
        Parts<Value>::of(value)[i] = toNumber<typename Parts<Value>::Number>(numbers[i]);
    return value;
}

template <class Field>
void writeNumbers(SoField& field, std::span<const double> numbers)
{
    using Value = typename Field::Value;
    constexpr int kCount = Parts<Value>::kCount;
    auto& typed = static_cast<Field&>(field);
    const std::size_t num = numbers.size() / kCount;
    if constexpr (!kIsMultiple<Field>) {
        if (num > 0)
            typed.setValue(valueOf<Value>(numbers.data()));
    } else {
        typed.setNumQuietly(static_cast<int>(num));
        Value* to = typed.startEditing();
        for (std::size_t i = 0; i < num; ++i)
            to[i] = valueOf<Value>(numbers.data() + i * kCount);
        typed.finishEditing();
    }
}

std::vector<NumberType>& numberTypes()
{
    static auto* types = new std::vector<NumberType>; // by type index; empty entries between
    return *types;
}

const NumberType* numberTypeOf(SoType type)
{
    const auto index = static_cast<std::size_t>(type.getIndex());
    const auto& types = numberTypes();
    return index < types.size() && types[index].read ? &types[index] : nullptr;
}

template <class Field>
void registerNumber()
{
    const SoType type = Field::getClassTypeId();
    const auto index = static_cast<std::size_t>(type.getIndex());
    if (numberTypes().size() <= index)
        numberTypes().resize(index + 1);
    numberTypes()[index] = {type, Parts<typename Field::Value>::kCount, readNumbers<Field>,
                            writeNumbers<Field>};
}

template <class... Fields>
void registerNumbers()
{
    (registerNumber<Fields>(), ...);
}

void convertNumbers(const SoField& from, SoField& to)
{
    const NumberType* source = numberTypeOf(from.getTypeId());
    const NumberType* target = numberTypeOf(to.getTypeId());
    std::vector<double> numbers;
    source->read(from, numbers);
    target->write(to, numbers);
}

// ---- texts

std::string textOf(const SoField& field)
{
    SbString text;
    field.get(text);
    return text.toStdString();
}

void toTexts(const SoField& from, SoField& to)
{
    auto& texts = static_cast<SoMFString&>(to);
    if (!from.isOfType(SoMField::getClassTypeId())) {
        texts.setValue(SbString(textOf(from)));
        return;
    }
    const auto& list = static_cast<const SoMField&>(from);
    const int num = list.getNum();
    texts.setNumQuietly(num);
    SbString* to1 = texts.startEditing();
    for (int i = 0; i < num; ++i)
        list.get1(i, to1[i]);
    texts.finishEditing();
}

void toText(const SoField& from, SoField& to)
{
    static_cast<SoSFString&>(to).setValue(SbString(textOf(from)));
}

/// Read without a word of error: a text that is no value leaves the field as it is.
void readText(const std::string& text, SoField& to)
{
    const std::unique_ptr<SoField> twin(static_cast<SoField*>(to.getTypeId().createInstance()));
    SoTokenizer tokens(text.data(), text.size());
    SoFieldReader reader(tokens);
    if (twin && twin->readValue(reader) && tokens.atEnd())
        to.copyFrom(*twin);
}

void fromText(const SoField& from, SoField& to)
{
    readText(static_cast<const SoSFString&>(from).getValue().toStdString(), to);
}

void fromTexts(const SoField& from, SoField& to)
{
    const auto texts = static_cast<const SoMFString&>(from).values();
    if (!to.isOfType(SoMField::getClassTypeId())) {
        if (!texts.empty())
            readText(texts[0].toStdString(), to);
        return;
    }
    std::string list("[");
    for (const SbString& text : texts)
        list.append(" ").append(text.view()).append(",");
    readText(list + " ]", to);
}

void toTrigger(const SoField&, SoField& to)
{
    static_cast<SoSFTrigger&>(to).trigger();
}

// ---- everything else

template <class Single, class Multiple>
void registerHolders()
{
    SoFieldConverter::set(
        Single::getClassTypeId(), Multiple::getClassTypeId(), [](const SoField& from, SoField& to) {
            static_cast<Multiple&>(to).setValue(static_cast<const Single&>(from).getValue());
        });
    SoFieldConverter::set(Multiple::getClassTypeId(), Single::getClassTypeId(),
                          [](const SoField& from, SoField& to) {
                              const auto& list = static_cast<const Multiple&>(from);
                              static_cast<Single&>(to).setValue(list.getNum() ? list[0] : nullptr);
                          });
}

SbString stringOf(const SbName& name)
{
    return SbString(name.view());
}
SbName nameOf(const SbString& text)
{
    return SbName(text);
}
SbMatrix matrixOf(const SbRotation& rotation)
{
    SbMatrix matrix;
    matrix.setRotate(rotation);
    return matrix;
}
SbRotation rotationOf(const SbMatrix& matrix)
{
    return SbRotation(matrix);
}
SbVec3f opaque(const SbColorRGBA& color)
{
    return SbVec3f(color[0], color[1], color[2]);
}
SbColorRGBA withAlpha(const SbColor& color)
{
    return SbColorRGBA(color[0], color[1], color[2], 1);
}

template <class FromS, class FromM, class ToS, class ToM, auto kConvert>
void registerFour()
{
    SoFieldConverter::set(FromS::getClassTypeId(), ToS::getClassTypeId(),
                          convertValues<FromS, ToS, kConvert>);
    SoFieldConverter::set(FromS::getClassTypeId(), ToM::getClassTypeId(),
                          convertValues<FromS, ToM, kConvert>);
    SoFieldConverter::set(FromM::getClassTypeId(), ToS::getClassTypeId(),
                          convertValues<FromM, ToS, kConvert>);
    SoFieldConverter::set(FromM::getClassTypeId(), ToM::getClassTypeId(),
                          convertValues<FromM, ToM, kConvert>);
}

bool isText(SoType type)
{
    return type == SoSFString::getClassTypeId() || type == SoMFString::getClassTypeId();
}

/// Pairs that no table entry names: numbers of one count, texts, triggers.
SoFieldConverter::Function* findGeneral(SoType from, SoType to)
{
    if (to == SoSFTrigger::getClassTypeId())
        return toTrigger;
    const NumberType* source = numberTypeOf(from);
    const NumberType* target = numberTypeOf(to);
    if (source && target)
        return source->count == target->count ? convertNumbers : nullptr;
    if (from == SoSFTrigger::getClassTypeId())
        return nullptr;
    if (to == SoSFString::getClassTypeId())
        return toText;
    if (to == SoMFString::getClassTypeId())
        return toTexts;
    if (!isText(from) || !to.canCreateInstance())
        return nullptr;
    return from == SoSFString::getClassTypeId() ? fromText : fromTexts;
}

void initNumbers()
{
    registerNumbers<SoSFBool, SoMFBool, SoSFInt32, SoMFInt32, SoSFUInt32, SoMFUInt32, SoSFShort,
                    SoMFShort, SoSFUShort, SoMFUShort, SoSFFloat, SoMFFloat, SoSFDouble, SoMFDouble,
                    SoSFTime, SoMFTime, SoSFEnum, SoMFEnum, SoSFBitMask>();
    registerNumbers<SoSFVec2f, SoMFVec2f, SoSFVec2d, SoMFVec2d, SoSFVec2s, SoMFVec2s, SoSFVec2i32,
                    SoMFVec2i32>();
    registerNumbers<SoSFVec3f, SoMFVec3f, SoSFVec3d, SoMFVec3d, SoSFVec3s, SoMFVec3s, SoSFVec3i32,
                    SoMFVec3i32, SoSFColor, SoMFColor>();
    registerNumbers<SoSFVec4f, SoMFVec4f, SoSFVec4d, SoMFVec4d, SoSFVec4s, SoMFVec4s, SoSFVec4i32,
                    SoMFVec4i32, SoSFColorRGBA, SoMFColorRGBA>();
}

} // namespace

void initConverters()
{
    initNumbers();
    registerPair<SoSFString, SoMFString>();
    registerPair<SoSFName, SoMFName>();
    registerPair<SoSFRotation, SoMFRotation>();
    registerPair<SoSFMatrix, SoMFMatrix>();
    registerPair<SoSFPlane, SoMFPlane>();
    registerHolders<SoSFNode, SoMFNode>();
    registerHolders<SoSFPath, SoMFPath>();
    registerHolders<SoSFEngine, SoMFEngine>();
    registerFour<SoSFName, SoMFName, SoSFString, SoMFString, stringOf>();
    registerFour<SoSFString, SoMFString, SoSFName, SoMFName, nameOf>();
    registerFour<SoSFRotation, SoMFRotation, SoSFMatrix, SoMFMatrix, matrixOf>();
    registerFour<SoSFMatrix, SoMFMatrix, SoSFRotation, SoMFRotation, rotationOf>();
    registerFour<SoSFColorRGBA, SoMFColorRGBA, SoSFColor, SoMFColor, opaque>();
    registerFour<SoSFColor, SoMFColor, SoSFColorRGBA, SoMFColorRGBA, withAlpha>();
    SoFieldConverter::setFallback(findGeneral);
}

} // namespace kalmyr::detail
