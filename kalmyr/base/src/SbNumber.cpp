#include <kalmyr/base/SbNumber.h>

#include <cstdlib>
#include <limits>

namespace {

// Whether a decimal number that fits no double is too large, rather than too small: looks at the
// power of ten of its first digit that is not zero.
bool isHuge(const char* first, const char* end)
{
    long long power = 0;
    bool pointSeen = false;
    bool digitSeen = false;
    const char* p = first;
    for (; p != end && *p != 'e' && *p != 'E'; ++p) {
        if (*p == '.') {
            pointSeen = true;
        } else if (*p >= '0' && *p <= '9') {
            power += digitSeen && !pointSeen ? 1 : 0;
            power -= !digitSeen && pointSeen ? 1 : 0;
            digitSeen = digitSeen || *p != '0';
        }
    }
    if (p == end) {
        return power > 0;
    }
    ++p;
    const bool negative = *p == '-';
    p += *p == '+' || *p == '-' ? 1 : 0;
    long long exponent = 0;
    const auto [rest, error] = std::from_chars(p, end, exponent);
    if (error != std::errc()) {
        return !negative;
    }
    return power + (negative ? -exponent : exponent) > 0;
}

template <typename T>
SbNumber::Result clampFloating(const char* first, const char* end, bool huge, T& value)
{
    value = huge ? std::numeric_limits<T>::infinity() : T(0);
    if (*first == '-') {
        value = -value;
    }
    return {end, SbNumber::Status::OutOfRange};
}

template <typename T>
SbNumber::Result finishWhole(const char* start, const char* last, int base, bool negative, T& value)
{
    using Unsigned = std::make_unsigned_t<T>;
    using Limits = std::numeric_limits<T>;
    Unsigned magnitude = 0;
    const auto [end, error] = std::from_chars(start, last, magnitude, base);
    if (error == std::errc::invalid_argument) {
        return {nullptr, SbNumber::Status::NotANumber};
    }
    const Unsigned most = negative ? Unsigned(0) - static_cast<Unsigned>(Limits::min())
                                   : static_cast<Unsigned>(Limits::max());
    const bool allBits = base == 16 && !negative;
    if (error == std::errc::result_out_of_range || (magnitude > most && !allBits)) {
        value = negative ? Limits::min() : Limits::max();
        return {end, SbNumber::Status::OutOfRange};
    }
    value = static_cast<T>(negative ? Unsigned(0) - magnitude : magnitude);
    return {end, SbNumber::Status::Ok};
}

template <typename T>
SbNumber::Result parseWhole(const char* first, const char* last, T& value)
{
    const char* p = first;
    const bool negative = p != last && *p == '-';
    if (p != last && (*p == '+' || *p == '-')) {
        ++p;
    }
    const bool hex = last - p > 2 && p[0] == '0' && (p[1] == 'x' || p[1] == 'X');
    SbNumber::Result r{nullptr, SbNumber::Status::NotANumber};
    if (!negative || std::is_signed_v<T>) {
        r = hex ? finishWhole(p + 2, last, 16, negative, value) : r;
        // "0x" without digits is the number 0 and an x.
        r = r.status == SbNumber::Status::NotANumber ? finishWhole(p, last, 10, negative, value)
                                                     : r;
    }
    r.end = r.status == SbNumber::Status::NotANumber ? first : r.end;
    return r;
}

} // namespace

namespace SbNumber {

Result detail::finishFloat(const char* first, const char*, const char* end, double& value)
{
    return clampFloating(first, end, isHuge(first, end), value);
}

Result detail::finishFloat(const char* first, const char*, const char* end, float& value)
{
    return clampFloating(first, end, isHuge(first, end), value);
}

Result parseInt(const char* first, const char* last, std::int32_t& value)
{
    return parseWhole(first, last, value);
}

Result parseInt(const char* first, const char* last, std::int64_t& value)
{
    return parseWhole(first, last, value);
}

Result parseUInt(const char* first, const char* last, std::uint32_t& value)
{
    return parseWhole(first, last, value);
}

Result parseUInt(const char* first, const char* last, std::uint64_t& value)
{
    return parseWhole(first, last, value);
}

void appendHex(std::string& text, std::uint64_t value, int digits)
{
    char buffer[kMaxChars];
    const char* const end = std::to_chars(buffer, buffer + kMaxChars, value, 16).ptr;
    text += "0x";
    for (auto length = end - buffer; length < digits; ++length) {
        text += '0';
    }
    text.append(buffer, static_cast<std::size_t>(end - buffer));
}

} // namespace SbNumber
