#include <kalmyr/fields/SoSFBufferObject.h>

#include <kalmyr/base/SbNumber.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/fields/SoValueText.h>

#include <algorithm>
#include <charconv>
#include <string>
#include <utility>

SO_FIELD_SOURCE(SoSFBufferObject, SoSField, "SFBufferObject")

namespace {

bool readBytes(SoTokenizer& in, std::vector<std::byte>& bytes)
{
    std::uint32_t size = 0;
    std::string digits;
    if (!in.readUInt(size) || !in.readString(digits)) {
        return false;
    }
    if (digits.size() != 2 * static_cast<std::size_t>(size)) {
        return in.fail("expected two hexadecimal digits for every byte of the buffer");
    }
    bytes.resize(size);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char* at = digits.data() + 2 * i;
        unsigned value = 0;
        if (std::from_chars(at, at + 2, value, 16).ptr != at + 2) {
            return in.fail("expected hexadecimal digits");
        }
        bytes[i] = static_cast<std::byte>(value);
    }
    return true;
}

} // namespace

SoSFBufferObject::~SoSFBufferObject()
{
    initValue(nullptr);
}

void SoSFBufferObject::initValue(SoBufferObject* buffer)
{
    if (buffer) {
        buffer->ref();
        buffer->addAuditor(this, SoAuditor::FIELD);
    }
    SoBufferObject* old = std::exchange(m_buffer, buffer);
    if (old) {
        old->removeAuditor(this);
        old->unref();
    }
}

void SoSFBufferObject::setValue(SoBufferObject* buffer)
{
    const SoRef<SoBufferObject> old(m_buffer); // lives until everybody has heard of the change
    initValue(buffer);
    valueChanged();
}

bool SoSFBufferObject::isSame(const SoField& other) const
{
    if (other.getTypeId() != getTypeId()) {
        return false;
    }
    const SoBufferObject* a = getValue();
    const SoBufferObject* b = static_cast<const SoSFBufferObject&>(other).getValue();
    return a == b || (a && b && std::ranges::equal(a->getBytes(), b->getBytes()));
}

void SoSFBufferObject::copyFrom(const SoField& other)
{
    if (canCopy(other))
        setValue(static_cast<const SoSFBufferObject&>(other).getValue());
}

bool SoSFBufferObject::readValue(SoFieldReader& in)
{
    if (in.text.acceptWord("NULL")) {
        setValue(nullptr);
        return true;
    }
    if (!in.text.acceptWord("BufferObject")) {
        return in.text.fail("expected BufferObject or NULL");
    }
    std::vector<std::byte> bytes;
    if (!in.text.expect('{') || !readBytes(in.text, bytes) || !in.text.expect('}')) {
        return false;
    }
    const SoRef<SoBufferObject> buffer(new SoBufferObject);
    buffer->adopt(std::move(bytes));
    setValue(buffer.get());
    return true;
}

void SoSFBufferObject::writeValue(SoFieldWriter& out) const
{
    const SoBufferObject* buffer = getValue();
    if (!buffer) {
        out.text += "NULL";
        return;
    }
    constexpr char kDigits[] = "0123456789abcdef";
    out.text += "BufferObject { ";
    SbNumber::appendUInt(out.text, buffer->getSize());
    out.text += " \"";
    for (const std::byte b : buffer->getBytes()) {
        out.text += kDigits[std::to_integer<unsigned>(b) >> 4];
        out.text += kDigits[std::to_integer<unsigned>(b) & 15];
    }
    out.text += "\" }";
}
