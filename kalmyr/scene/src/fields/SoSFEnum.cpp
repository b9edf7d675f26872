#include <kalmyr/fields/SoSFEnum.h>

#include <kalmyr/base/SbNumber.h>

#include <algorithm>
#include <string>

namespace kalmyr {

bool findEnumValue(std::span<const SoEnumEntry> enums, std::string_view name, int& value)
{
    const auto at = std::find_if(enums.begin(), enums.end(),
                                 [name](const SoEnumEntry& e) { return name == e.name; });
    if (at == enums.end()) {
        return false;
    }
    value = at->value;
    return true;
}

int enumAt(std::span<const SoEnumEntry> enums, int index, SbName& name)
{
    name = SbName::empty();
    if (!kalmyr::holds(index >= 0 && static_cast<std::size_t>(index) < enums.size(),
                       "0 <= index < getNumEnums()"))
        return 0;
    const SoEnumEntry& entry = enums[static_cast<std::size_t>(index)];
    name = SbName(entry.name);
    return entry.value;
}

const char* findEnumName(std::span<const SoEnumEntry> enums, int value)
{
    const auto at = std::find_if(enums.begin(), enums.end(),
                                 [value](const SoEnumEntry& e) { return value == e.value; });
    return at == enums.end() ? nullptr : at->name;
}

namespace {

// An error lists the names, unless there are too many to be of help.
constexpr std::size_t kMaxListed = 12;

std::string expectation(std::span<const SoEnumEntry> enums)
{
    if (enums.empty()) {
        return "expected a whole number";
    }
    if (enums.size() > kMaxListed) {
        return "expected the name of a value";
    }
    std::string text = "expected ";
    for (std::size_t i = 0; i < enums.size(); ++i) {
        text += i == 0 ? "" : i + 1 == enums.size() ? " or " : ", ";
        text += enums[i].name;
    }
    return text;
}

int allBits(std::span<const SoEnumEntry> enums)
{
    int all = 0;
    for (const SoEnumEntry& e : enums) {
        all |= e.value;
    }
    return all;
}

bool readBits(SoTokenizer& in, std::span<const SoEnumEntry> enums, int& value)
{
    const std::size_t start = in.getOffset();
    std::string_view name;
    if (!in.readIdentifier(name)) {
        return readEnum(in, enums, value);
    }
    if (findEnumValue(enums, name, value)) {
        return true;
    }
    value = name == "ALL" ? allBits(enums) : 0;
    if (name == "ALL" || name == "NONE") {
        return true;
    }
    in.setOffset(start);
    return in.fail(expectation(enums));
}

} // namespace

bool readEnum(SoTokenizer& in, std::span<const SoEnumEntry> enums, int& value)
{
    const char next = in.peek();
    if ((next >= '0' && next <= '9') || next == '-' || next == '+') {
        return in.readInt(value);
    }
    const std::size_t start = in.getOffset();
    std::string_view name;
    if (in.readIdentifier(name) && findEnumValue(enums, name, value)) {
        return true;
    }
    in.setOffset(start);
    return in.fail(expectation(enums));
}

void writeEnum(std::string& out, std::span<const SoEnumEntry> enums, int value)
{
    if (const char* name = findEnumName(enums, value)) {
        out += name;
    } else {
        SbNumber::appendInt(out, value);
    }
}

bool readBitMask(SoTokenizer& in, std::span<const SoEnumEntry> enums, int& value)
{
    if (!in.accept('(')) {
        return readBits(in, enums, value);
    }
    int sum = 0;
    do {
        int bits = 0;
        if (!readBits(in, enums, bits)) {
            return false;
        }
        sum |= bits;
    } while (in.accept('|'));
    value = sum;
    return in.accept(')') || in.fail("expected '|' or ')'");
}

void writeBitMask(std::string& out, std::span<const SoEnumEntry> enums, int value)
{
    if (const char* name = findEnumName(enums, value)) {
        out += name;
        return;
    }
    if (value == 0 || (!enums.empty() && value == allBits(enums))) {
        out += value == 0 ? "NONE" : "ALL";
        return;
    }
    std::string names;
    int rest = value;
    for (const SoEnumEntry& e : enums) {
        if (e.value != 0 && (rest & e.value) == e.value) {
            names += names.empty() ? "" : " | ";
            names += e.name;
            rest &= ~e.value;
        }
    }
    if (names.empty()) {
        SbNumber::appendInt(out, value);
        return;
    }
    if (rest != 0) {
        names += " | ";
        SbNumber::appendHex(names, static_cast<std::uint32_t>(rest));
    }
    out += '(' + names + ')';
}

} // namespace kalmyr

SO_FIELD_SOURCE(SoSFEnum, SoSField, "SFEnum")
SO_FIELD_SOURCE(SoSFBitMask, SoSField, "SFBitMask")
SO_FIELD_SOURCE(SoMFEnum, SoMField, "MFEnum")

bool SoSFEnum::readValue(SoFieldReader& in)
{
    int value = 0;
    if (!kalmyr::readEnum(in.text, getEnums(), value)) {
        return false;
    }
    setValue(value);
    return true;
}

void SoSFEnum::writeValue(SoFieldWriter& out) const
{
    kalmyr::writeEnum(out.text, getEnums(), getValue());
}

bool SoSFBitMask::readValue(SoFieldReader& in)
{
    int value = 0;
    if (!kalmyr::readBitMask(in.text, getEnums(), value)) {
        return false;
    }
    setValue(value);
    return true;
}

void SoSFBitMask::writeValue(SoFieldWriter& out) const
{
    kalmyr::writeBitMask(out.text, getEnums(), getValue());
}

void SoMFEnum::prepareTwin(SoField& twin) const
{
    static_cast<SoMFEnum&>(twin).setEnums(m_enums);
}

bool SoMFEnum::readItem(SoFieldReader& in, int& value) const
{
    return kalmyr::readEnum(in.text, m_enums, value);
}

void SoMFEnum::writeItem(SoFieldWriter& out, int value) const
{
    kalmyr::writeEnum(out.text, m_enums, value);
}
