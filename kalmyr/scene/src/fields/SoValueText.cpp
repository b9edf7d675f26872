#include <kalmyr/fields/SoValueText.h>

#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbNumber.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace kalmyr {

namespace {

template <class T>
bool readByte(SoTokenizer& in, T& value)
{
    using Limits = std::numeric_limits<T>;
    const std::size_t start = in.getOffset();
    std::int32_t number = 0;
    if (!in.readInt(number)) {
        return false;
    }
    if (number < Limits::min() || number > Limits::max()) {
        in.setOffset(start);
        return in.fail("expected a whole number from " + std::to_string(Limits::min()) + " to "
                       + std::to_string(Limits::max()));
    }
    value = static_cast<T>(number);
    return true;
}

} // namespace

bool readText(SoTokenizer& in, std::int8_t& value)
{
    return readByte(in, value);
}

bool readText(SoTokenizer& in, std::uint8_t& value)
{
    return readByte(in, value);
}

void writeText(std::string& out, bool value)
{
    out += value ? "TRUE" : "FALSE";
}

void writeText(std::string& out, float value)
{
    SbNumber::appendFloat(out, value);
}

void writeText(std::string& out, double value)
{
    SbNumber::appendDouble(out, value);
}

void writeText(std::string& out, std::int32_t value)
{
    SbNumber::appendInt(out, value);
}

void writeText(std::string& out, std::uint32_t value)
{
    SbNumber::appendUInt(out, value);
}

bool readText(SoTokenizer& in, SbTime& value)
{
    double seconds = 0;
    if (!in.readDouble(seconds)) {
        return false;
    }
    value = SbTime(seconds);
    return true;
}

void writeText(std::string& out, SbTime value)
{
    SbNumber::appendDouble(out, value.getValue());
}

bool readText(SoTokenizer& in, SbMatrix& value)
{
    for (int i = 0; i < 16; ++i) {
        if (!in.readFloat(value[i / 4][i % 4])) {
            return false;
        }
    }
    return true;
}

void writeText(std::string& out, const SbMatrix& value)
{
    for (int i = 0; i < 16; ++i) {
        if (i > 0) {
            out += ' ';
        }
        SbNumber::appendFloat(out, value[i / 4][i % 4]);
    }
}

bool readText(SoTokenizer& in, SbPlane& value)
{
    // A normal this near to length 1 is taken as it is, so that writing and reading keeps its bits.
    constexpr double kUnitTolerance = 1e-6;
    const std::size_t start = in.getOffset();
    SbVec4f numbers;
    if (!readText(in, numbers)) {
        return false;
    }
    const SbVec3f normal(numbers.getValue());
    const double square = SbVec3d(normal).sqrLength();
    if (square == 0) {
        in.setOffset(start);
        return in.fail("expected a normal that is not zero");
    }
    static_assert(sizeof(SbPlane) == sizeof(SbVec4f));
    value = std::fabs(square - 1) > kUnitTolerance ? SbPlane(normal, numbers[3])
                                                   : std::bit_cast<SbPlane>(numbers);
    return true;
}

void writeText(std::string& out, const SbPlane& value)
{
    writeText(out, value.getNormal());
    out += ' ';
    SbNumber::appendFloat(out, value.getDistanceFromOrigin());
}

void writeQuoted(std::string& out, std::string_view text)
{
    out += '"';
    for (;;) {
        const std::size_t at = text.find_first_of("\"\\");
        out += text.substr(0, at);
        if (at == std::string_view::npos) {
            break;
        }
        out += '\\';
        out += text[at];
        text.remove_prefix(at + 1);
    }
    out += '"';
}

bool readText(SoTokenizer& in, SbString& value)
{
    std::string text;
    if (!in.readString(text)) {
        return false;
    }
    value = SbString(std::move(text));
    return true;
}

void writeText(std::string& out, const SbString& value)
{
    writeQuoted(out, value.view());
}

bool readText(SoTokenizer& in, SbName& value)
{
    std::string text;
    if (!in.readString(text)) {
        return false;
    }
    value = SbName(text);
    return true;
}

void writeText(std::string& out, const SbName& value)
{
    const std::string_view text = value.view();
    // IS instead of a value would tie the field to one of a prototype.
    const bool bare = !text.empty() && SbName::isIdentStartChar(text[0]) && text != "IS"
                      && std::all_of(text.begin(), text.end(), SbName::isIdentChar);
    if (bare) {
        out += text;
    } else {
        writeQuoted(out, text);
    }
}

namespace {

// ---- Rotations. The four numbers are floats to people, but a quaternion is four rounded numbers
// and seldom of length 1 exactly, so that axis and angle in floats do not always bring it back.
// Numbers with more digits than floats have are therefore taken as doubles, and the length of such
// an axis is that of the quaternion, as far as it is a matter of rounding.
constexpr int kFloatDigits = std::numeric_limits<float>::max_digits10;
constexpr double kUnitTolerance = 4e-7;

using Bits = std::array<std::uint32_t, 4>;

Bits bitsOf(const SbRotation& r)
{
    static_assert(sizeof(SbRotation) == sizeof(Bits));
    return std::bit_cast<Bits>(r);
}

struct AxisAngle {
    SbVec3d axis;
    double angle = 0;
    bool precise = false; // the axis is
};

SbRotation rotationOf(const AxisAngle& from)
{
    const double angle = from.angle;
    SbVec3d axis = from.axis;
    const double length = axis.normalize();
    if (!(length > 0) || !std::isfinite(length) || !std::isfinite(angle)) {
        return {};
    }
    double sine = std::sin(angle / 2);
    double cosine = std::cos(angle / 2);
    // Their values at a half and a whole turn are the rounding of pi.
    if (std::fabs(cosine) < 1.5e-16) {
        cosine = 0;
    } else if (cosine < 0 && std::fabs(sine) < 3e-16) {
        sine = 0;
    }
    const bool scaled = from.precise && std::fabs(length * length - 1) <= kUnitTolerance;
    const double scale = scaled ? length : 1;
    const SbVec4d q(axis * (sine * scale), cosine * scale);
    return std::bit_cast<SbRotation>(SbVec4f(q));
}

int significantDigits(std::string_view number)
{
    int digits = 0;
    for (const char c : number.substr(0, number.find_first_of("eE"))) {
        digits += c > '0' && c <= '9' ? 1 : c == '0' && digits > 0 ? 1 : 0;
    }
    return digits;
}

/// Returns the value that a number stands for in a rotation, given its text.
double inRotation(std::string_view text, double value, bool& precise)
{
    if (text.size() > std::size_t(kFloatDigits) && significantDigits(text) > kFloatDigits) {
        precise = true;
        return value;
    }
    return static_cast<float>(value);
}

bool readNumber(SoTokenizer& in, double& value, bool& precise)
{
    in.peek();
    const std::size_t start = in.getOffset();
    if (!in.readDouble(value)) {
        return false;
    }
    value = inRotation({in.getText() + start, in.getOffset() - start}, value, precise);
    return true;
}

/// Appends a number with that many digits, and returns what is read of it.
double writeNumber(std::string& out, double value, int digits, bool& precise)
{
    char buffer[SbNumber::kMaxChars];
    char* const end =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, digits)
            .ptr;
    out.append(buffer, end);
    double read = 0;
    std::from_chars(buffer, end, read);
    return inRotation({buffer, static_cast<std::size_t>(end - buffer)}, read, precise);
}

AxisAngle writeNumbers(std::string& out, const AxisAngle& numbers, int digits)
{
    AxisAngle read;
    for (int i = 0; i < 3; ++i) {
        read.axis[i] = writeNumber(out, numbers.axis[i], digits, read.precise);
        out += ' ';
    }
    bool ignored = false;
    read.angle = writeNumber(out, numbers.angle, digits, ignored);
    return read;
}

} // namespace

bool readText(SoTokenizer& in, SbRotation& value)
{
    AxisAngle read;
    for (int i = 0; i < 3; ++i) {
        if (!readNumber(in, read.axis[i], read.precise)) {
            return false;
        }
    }
    bool ignored = false;
    if (!readNumber(in, read.angle, ignored)) {
        return false;
    }
    value = rotationOf(read);
    return true;
}

void writeText(std::string& out, const SbRotation& value)
{
    const SbVec4d q{SbVec4f(value.getValue())};
    AxisAngle numbers{SbVec3d(q.getValue())};
    const double sine = numbers.axis.normalize();
    numbers.axis = sine > 0 ? numbers.axis * q.length() : SbVec3d(0, 0, 1);
    numbers.angle = 2 * std::atan2(sine, q[3]);
    const std::size_t start = out.size();
    // The fewest digits that bring the same bits back: people read these.
    for (const int digits : {6, 8, kFloatDigits, 12, 17}) {
        out.resize(start);
        if (bitsOf(rotationOf(writeNumbers(out, numbers, digits))) == bitsOf(value)) {
            return;
        }
    }
}

namespace {

bool readPixels(SoTokenizer& in, const SbVec3i32& size, int components, SbImage& image)
{
    // A pixel and its separator take two bytes at least.
    const std::size_t most = in.getRemaining() / 2 + 1;
    std::size_t count = 1;
    for (int i = 0; i < 3; ++i) {
        const std::size_t n = i == 2 && size[i] == 0 ? 1 : static_cast<std::size_t>(size[i]);
        if (count > most / n)
            return in.fail("expected a smaller picture: the text is too short for this size");
        count *= n;
    }
    std::vector<unsigned char> bytes;
    bytes.reserve(count * static_cast<std::size_t>(components));
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t pixel = 0;
        if (!in.readUInt(pixel)) {
            return false;
        }
        for (int c = components - 1; c >= 0; --c) {
            bytes.push_back(static_cast<unsigned char>(pixel >> (8 * c)));
        }
        in.reportProgress();
    }
    return image.adopt(size, components, std::move(bytes)) || in.fail("expected a smaller picture");
}

} // namespace

bool readText(SoTokenizer& in, SbImage& value)
{
    const std::size_t start = in.getOffset();
    SbVec3i32 head;
    if (in.acceptWord("VOLUME")) {
        std::int32_t components = 0;
        if (!readText(in, head) || !in.readInt(components))
            return false;
        const bool isSize = head[0] > 0 && head[1] > 0 && head[2] > 0;
        return isSize && components >= 1 && components <= 4
                   ? readPixels(in, head, components, value)
                   : in.fail(
                       "expected the size and 1 to 4 components of a volume in front of this");
    }
    if (!readText(in, head)) {
        return false;
    }
    const bool empty = head[0] == 0 || head[1] == 0 || head[2] == 0;
    if (head[0] < 0 || head[1] < 0 || head[2] < 0 || head[2] > 4) {
        in.setOffset(start);
        return in.fail("expected width, height and 0 to 4 components of a picture");
    }
    if (empty) {
        value.makeNull();
        return true;
    }
    return readPixels(in, {head[0], head[1], 0}, head[2], value);
}

void writeText(std::string& out, const SbImage& value)
{
    const int components = value.getComponents();
    if (value.getDepth() > 0) {
        out += "VOLUME ";
        writeText(out, value.getSize3());
        out += ' ';
        writeText(out, components);
    } else {
        writeText(out, SbVec3i32(value.getWidth(), value.getHeight(), components));
    }
    const unsigned char* byte = value.getBytes();
    const unsigned char* const end = byte + value.getByteCount();
    while (byte != end) {
        std::uint32_t pixel = 0;
        for (int c = 0; c < components; ++c) {
            pixel = pixel << 8 | *byte++;
        }
        out += ' ';
        SbNumber::appendHex(out, pixel, 2 * components);
    }
}

} // namespace kalmyr
