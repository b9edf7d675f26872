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

// ---- Rotations. A quaternion is four rounded numbers and seldom of length 1 exactly, so axis and
// angle are those of a unit quaternion that rounds to the same bits.

using Bits = std::array<std::uint32_t, 4>;

Bits bitsOf(const SbRotation& r)
{
    static_assert(sizeof(SbRotation) == sizeof(Bits));
    return std::bit_cast<Bits>(r);
}

SbRotation rotationOf(const SbVec3d& axis, double angle)
{
    const double length = axis.length();
    if (!(length > 0) || !std::isfinite(length) || !std::isfinite(angle)) {
        return {};
    }
    const double cosine = std::cos(angle / 2);
    double sine = std::sin(angle / 2);
    // The sine of a whole turn is rounding noise.
    if (cosine < 0 && std::fabs(sine) < 1e-15) {
        sine = 0;
    }
    const SbVec4f q(static_cast<float>(axis[0] / length * sine),
                    static_cast<float>(axis[1] / length * sine),
                    static_cast<float>(axis[2] / length * sine), static_cast<float>(cosine));
    return std::bit_cast<SbRotation>(q);
}

/// The unit quaternion nearest to `r` among those that round to it; `r` itself if none does.
SbVec4d unrounded(const SbRotation& r)
{
    const SbVec4d q{SbVec4f(r.getValue())};
    SbVec4d room;
    double reach = 0;
    for (int i = 0; i < 4; ++i) {
        const float up = std::nextafter(std::fabs(r.getValue()[i]), 2.0f);
        room[i] = 0.499 * (static_cast<double>(up) - std::fabs(q[i]));
        reach += 2 * std::fabs(q[i]) * room[i];
    }
    const double share = reach > 0 ? std::clamp((1 - q.sqrLength()) / reach, -1.0, 1.0) : 0;
    SbVec4d result = q;
    for (int i = 0; i < 4; ++i) {
        result[i] += std::copysign(share * room[i], share * q[i]);
    }
    return result;
}

/// The number with that many digits, and what is read of it.
double rounded(double value, int digits, std::string& text)
{
    char buffer[SbNumber::kMaxChars];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value,
                                   std::chars_format::general, digits)
                         .ptr;
    text.append(buffer, end);
    double result = 0;
    std::from_chars(buffer, end, result);
    return result;
}

} // namespace

bool readText(SoTokenizer& in, SbRotation& value)
{
    SbVec4d numbers;
    if (!readText(in, numbers)) {
        return false;
    }
    value = rotationOf(SbVec3d(numbers.getValue()), numbers[3]);
    return true;
}

void writeText(std::string& out, const SbRotation& value)
{
    const SbVec4d q = unrounded(value);
    SbVec3d axis(q.getValue());
    const double length = axis.normalize();
    if (length == 0) {
        axis = {0, 0, 1};
    }
    const double angle = 2 * std::atan2(length, q[3]);
    const std::size_t start = out.size();
    // The fewest digits that bring the same bits back: people read these.
    for (const int digits : {6, 8, 10, 12, 14, 17}) {
        out.resize(start);
        SbVec3d readAxis;
        for (int i = 0; i < 3; ++i) {
            readAxis[i] = rounded(axis[i], digits, out);
            out += ' ';
        }
        const double readAngle = rounded(angle, digits, out);
        if (bitsOf(rotationOf(readAxis, readAngle)) == bitsOf(value)) {
            return;
        }
    }
}

namespace {

bool readPixels(SoTokenizer& in, const SbVec3i32& size, int components, SbImage& image)
{
    const std::size_t count = static_cast<std::size_t>(size[0]) * static_cast<std::size_t>(size[1]);
    // A pixel and its separator take two bytes at least.
    if (count > in.getRemaining() / 2 + 1) {
        return in.fail("expected a smaller picture: the text is too short for this size");
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
    }
    return image.adopt(size, components, std::move(bytes)) || in.fail("expected a smaller picture");
}

} // namespace

bool readText(SoTokenizer& in, SbImage& value)
{
    const std::size_t start = in.getOffset();
    SbVec3i32 head;
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
    const int height = value.getHeight() * std::max(value.getDepth(), 1);
    writeText(out, SbVec3i32(value.getWidth(), height, components));
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
