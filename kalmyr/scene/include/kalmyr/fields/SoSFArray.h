#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/fields/SoFieldMacros.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// A three-dimensional array of numbers of one type, x running fastest.
///
/// As text: type, three dimensions, values: "FLOAT 2 2 1 [ 0, 1, 2, 3 ]".
class KALMYR_API SoSFArray final : public SoSField {
    SO_FIELD_HEADER(SoSFArray)

    enum DataType : std::uint8_t {
        SIGNED_BYTE,
        UNSIGNED_BYTE,
        SIGNED_SHORT,
        UNSIGNED_SHORT,
        SIGNED_INT32,
        UNSIGNED_INT32,
        FLOAT,
        DOUBLE
    };
    /// More bytes than this are refused.
    static constexpr std::size_t kMaxBytes = std::size_t(1) << 31;

    /// Bytes of one value; 4, with an error posted, for what is no type.
    static std::size_t getSizeOf(DataType type);

    SbVec3i32 getDimensions() const
    {
        evaluate();
        return m_dimensions;
    }
    DataType getDataType() const
    {
        evaluate();
        return m_type;
    }
    std::size_t getNumValues() const { return getByteCount() / getSizeOf(getDataType()); }
    std::size_t getByteCount() const
    {
        evaluate();
        return m_bytes.size();
    }
    /// The values, or null while the array is empty; valid until the next edit.
    const void* getValues() const;
    /// A value converted to double; 0, with an error posted, for an index out of range.
    double getValueAt(std::size_t index) const;

    /// Copies the values; without any they become 0. False, with the field unchanged and an error
    /// posted, for what is no type, negative dimensions or too many bytes.
    bool setValue(const SbVec3i32& dimensions, DataType type, const void* values = nullptr);
    /// Direct access to the values, null while there are none; one notification, sent by
    /// finishEditing().
    void* startEditing();
    void finishEditing() { valueChanged(); }

    bool isSame(const SoField& other) const override;
    void copyFrom(const SoField& other) override;
    bool readValue(SoFieldReader& in) override;
    void writeValue(SoFieldWriter& out) const override;

private:
    bool readValues(SoFieldReader& in, DataType type, std::size_t count,
                    std::vector<std::byte>& bytes) const;

    SbVec3i32 m_dimensions;
    DataType m_type = FLOAT;
    std::vector<std::byte> m_bytes;
};
