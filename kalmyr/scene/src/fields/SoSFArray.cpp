#include <kalmyr/fields/SoSFArray.h>

#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueText.h>

#include <algorithm>
#include <cstring>
#include <utility>

SO_FIELD_SOURCE(SoSFArray, SoSField, "SFArray")

namespace {

constexpr SoEnumEntry kTypes[] = {
    {"SIGNED_BYTE", SoSFArray::SIGNED_BYTE},
    {"UNSIGNED_BYTE", SoSFArray::UNSIGNED_BYTE},
    {"SIGNED_SHORT", SoSFArray::SIGNED_SHORT},
    {"UNSIGNED_SHORT", SoSFArray::UNSIGNED_SHORT},
    {"SIGNED_INT32", SoSFArray::SIGNED_INT32},
    {"UNSIGNED_INT32", SoSFArray::UNSIGNED_INT32},
    {"FLOAT", SoSFArray::FLOAT},
    {"DOUBLE", SoSFArray::DOUBLE},
};

/// Calls `use` with a value of the C++ type that stands for the data type.
template <class Use>
auto withType(SoSFArray::DataType type, Use use)
{
    switch (type) {
    case SoSFArray::SIGNED_BYTE:
        return use(std::int8_t());
    case SoSFArray::UNSIGNED_BYTE:
        return use(std::uint8_t());
    case SoSFArray::SIGNED_SHORT:
        return use(std::int16_t());
    case SoSFArray::UNSIGNED_SHORT:
        return use(std::uint16_t());
    case SoSFArray::SIGNED_INT32:
        return use(std::int32_t());
    case SoSFArray::UNSIGNED_INT32:
        return use(std::uint32_t());
    case SoSFArray::DOUBLE:
        return use(double());
    case SoSFArray::FLOAT:
        break;
    }
    return use(float());
}

template <class T>
T valueAt(const std::byte* bytes, std::size_t index, T)
{
    T value;
    std::memcpy(&value, bytes + index * sizeof(T), sizeof(T));
    return value;
}

/// Number of values, or false when it is negative or takes too many bytes.
bool countOf(const SbVec3i32& dimensions, SoSFArray::DataType type, std::size_t& count)
{
    count = SoSFArray::kMaxBytes / SoSFArray::getSizeOf(type);
    const std::size_t most = count;
    std::size_t product = 1;
    for (int i = 0; i < 3; ++i) {
        const auto size = static_cast<std::size_t>(dimensions[i]);
        if (dimensions[i] < 0 || (size > 0 && product > most / size)) {
            return false;
        }
        product *= size;
    }
    count = product;
    return true;
}

} // namespace

std::size_t SoSFArray::getSizeOf(DataType type)
{
    if (!kalmyr::holds(type <= DOUBLE, "a data type"))
        return sizeof(float);
    return withType(type, [](auto value) { return sizeof(value); });
}

const void* SoSFArray::getValues() const
{
    evaluate();
    return m_bytes.empty() ? nullptr : m_bytes.data();
}

double SoSFArray::getValueAt(std::size_t index) const
{
    if (!kalmyr::holds(index < getNumValues(), "index < getNumValues()"))
        return 0;
    return withType(m_type, [&](auto value) {
        return static_cast<double>(valueAt(m_bytes.data(), index, value));
    });
}

bool SoSFArray::setValue(const SbVec3i32& dimensions, DataType type, const void* values)
{
    std::size_t count = 0;
    if (!kalmyr::holds(type <= DOUBLE && countOf(dimensions, type, count),
                       "a data type, dimensions from 0 on, at most kMaxBytes"))
        return false;
    std::vector<std::byte> bytes(count * getSizeOf(type));
    if (values && !bytes.empty()) {
        std::memcpy(bytes.data(), values, bytes.size());
    }
    m_bytes = std::move(bytes);
    m_dimensions = dimensions;
    m_type = type;
    valueChanged();
    return true;
}

void* SoSFArray::startEditing()
{
    evaluate();
    return m_bytes.empty() ? nullptr : m_bytes.data();
}

bool SoSFArray::isSame(const SoField& other) const
{
    if (other.getTypeId() != getTypeId()) {
        return false;
    }
    const auto& array = static_cast<const SoSFArray&>(other);
    return getDimensions() == array.getDimensions() && getDataType() == array.getDataType()
           && m_bytes == array.m_bytes;
}

void SoSFArray::copyFrom(const SoField& other)
{
    if (&other == this || !canCopy(other))
        return;
    const auto& array = static_cast<const SoSFArray&>(other);
    setValue(array.getDimensions(), array.getDataType(), array.getValues());
}

bool SoSFArray::readValues(SoFieldReader& in, DataType type, std::size_t count,
                           std::vector<std::byte>& bytes) const
{
    // A value and its separator take two bytes at least.
    if (count > in.text.getRemaining() / 2 + 1) {
        return in.text.fail("expected a smaller array: the text is too short for this size");
    }
    bytes.resize(count * getSizeOf(type));
    return withType(type, [&](auto value) {
        for (std::size_t i = 0; i < count; ++i) {
            if (!kalmyr::readText(in.text, value)) {
                return false;
            }
            std::memcpy(bytes.data() + i * sizeof value, &value, sizeof value);
        }
        return true;
    });
}

bool SoSFArray::readValue(SoFieldReader& in)
{
    int type = FLOAT;
    SbVec3i32 dimensions;
    if (!kalmyr::readEnum(in.text, kTypes, type) || !kalmyr::readText(in.text, dimensions)) {
        return false;
    }
    const auto dataType = static_cast<DataType>(std::clamp<int>(type, SIGNED_BYTE, DOUBLE));
    std::size_t count = 0;
    if (dataType != type || !countOf(dimensions, dataType, count)) {
        return in.text.fail("expected the type and size of an array");
    }
    std::vector<std::byte> bytes;
    if (!in.text.expect('[') || !readValues(in, dataType, count, bytes) || !in.text.expect(']')) {
        return false;
    }
    m_bytes = std::move(bytes);
    m_dimensions = dimensions;
    m_type = dataType;
    valueChanged();
    return true;
}

void SoSFArray::writeValue(SoFieldWriter& out) const
{
    constexpr std::size_t kPerLine = 12;
    kalmyr::writeEnum(out.text, kTypes, getDataType());
    out.text += ' ';
    kalmyr::writeText(out.text, m_dimensions);
    out.text += " [";
    withType(m_type, [&](auto value) {
        for (std::size_t i = 0; i < getNumValues(); ++i) {
            out.text += i > 0 ? "," : "";
            if (i % kPerLine == 0) {
                out.flushIfLarge();
                out.breakLine();
            } else {
                out.text += ' ';
            }
            kalmyr::writeText(out.text, valueAt(m_bytes.data(), i, value));
        }
    });
    out.text += " ]";
}
