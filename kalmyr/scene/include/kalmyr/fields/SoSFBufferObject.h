#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/fields/SoBufferObject.h>
#include <kalmyr/fields/SoFieldMacros.h>

/// Holds a buffer, or none, with a reference and a listener. Buffers are shared, not copied.
///
/// As text: NULL, or the size and the bytes in hexadecimal: BufferObject { 3 "01ff00" }.
class KALMYR_API SoSFBufferObject final : public SoSField {
    SO_FIELD_HEADER(SoSFBufferObject)

    SoSFBufferObject() = default;
    ~SoSFBufferObject() override;

    SoBufferObject* getValue() const
    {
        evaluate();
        return m_buffer;
    }
    operator SoBufferObject*() const { return getValue(); }
    void setValue(SoBufferObject* buffer);
    SoSFBufferObject& operator=(SoBufferObject* buffer)
    {
        setValue(buffer);
        return *this;
    }
    void initValue(SoBufferObject* buffer);

    /// Equal bytes are the same value.
    bool isSame(const SoField& other) const override;
    void copyFrom(const SoField& other) override;
    bool readValue(SoFieldReader& in) override;
    void writeValue(SoFieldWriter& out) const override;

private:
    SoBufferObject* m_buffer = nullptr; // Holds a reference.
};
