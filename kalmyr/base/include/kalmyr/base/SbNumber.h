#pragma once

#include <kalmyr/base/Export.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

/// Numbers at the border to text, free of any locale. White space is never skipped.
namespace SbNumber {

enum class Status : std::uint8_t {
    Ok,
    /// The text does not start with a number; the value is untouched.
    NotANumber,
    /// The number does not fit; the value is the nearest one (an infinity, a zero, or a
    /// whole-number limit).
    OutOfRange
};

struct Result {
    /// Just behind the number; the start of the text when there is none.
    const char* end;
    Status status;

    /// True when the value was set, out of range or not.
    explicit operator bool() const { return status != Status::NotANumber; }
};

namespace detail {

// The rare cases, kept out of line.
KALMYRBASE_API Result finishFloat(const char* first, const char* last, const char* end,
                                  float& value);
KALMYRBASE_API Result finishFloat(const char* first, const char* last, const char* end,
                                  double& value);

template <typename T>
Result parseFloating(const char* first, const char* last, T& value)
{
    const char* start = first;
    if (start != last && *start == '+') {
        ++start;
        if (start != last && *start == '-') {
            return {first, Status::NotANumber};
        }
    }
    const auto [end, error] = std::from_chars(start, last, value);
    if (error == std::errc()) {
        return {end, Status::Ok};
    }
    if (error == std::errc::result_out_of_range) {
        return finishFloat(start, last, end, value);
    }
    return {first, Status::NotANumber};
}

} // namespace detail

/// Decimal numbers with an optional sign (`+` too), fraction and exponent, and `inf`, `infinity`
/// and `nan` in any case.
inline Result parseFloat(const char* first, const char* last, float& value)
{
    return detail::parseFloating(first, last, value);
}
inline Result parseDouble(const char* first, const char* last, double& value)
{
    return detail::parseFloating(first, last, value);
}

/// Whole numbers, decimal or hexadecimal (`0x1F`), with an optional sign. A hexadecimal number
/// without a sign may use all bits of the type: 0xFFFFFFFF is -1 as a signed 32-bit number. An
/// unsigned type refuses `-`.
KALMYRBASE_API Result parseInt(const char* first, const char* last, std::int32_t& value);
KALMYRBASE_API Result parseInt(const char* first, const char* last, std::int64_t& value);
KALMYRBASE_API Result parseUInt(const char* first, const char* last, std::uint32_t& value);
KALMYRBASE_API Result parseUInt(const char* first, const char* last, std::uint64_t& value);

/// True when the whole text is one number in range.
inline bool toFloat(std::string_view text, float& value)
{
    const Result r = parseFloat(text.data(), text.data() + text.size(), value);
    return r.status == Status::Ok && r.end == text.data() + text.size();
}
inline bool toDouble(std::string_view text, double& value)
{
    const Result r = parseDouble(text.data(), text.data() + text.size(), value);
    return r.status == Status::Ok && r.end == text.data() + text.size();
}
inline bool toInt(std::string_view text, std::int32_t& value)
{
    const Result r = parseInt(text.data(), text.data() + text.size(), value);
    return r.status == Status::Ok && r.end == text.data() + text.size();
}

/// Enough room for any number that the writers below make.
inline constexpr int kMaxChars = 32;

/// Writes the shortest text that reads back as the same number, at most kMaxChars bytes and no
/// final zero; returns its end. Not-a-number is `nan` (sign and payload are lost), infinities are
/// `inf` and `-inf`.
template <typename T>
requires std::is_floating_point_v<T>
char* write(char* to, T value)
{
    if (value != value) {
        value = std::fabs(value);
    }
    return std::to_chars(to, to + kMaxChars, value).ptr;
}
template <typename T>
requires std::is_integral_v<T>
char* write(char* to, T value)
{
    return std::to_chars(to, to + kMaxChars, value).ptr;
}

inline void appendFloat(std::string& text, float value)
{
    char buffer[kMaxChars];
    text.append(buffer, write(buffer, value));
}
inline void appendDouble(std::string& text, double value)
{
    char buffer[kMaxChars];
    text.append(buffer, write(buffer, value));
}
inline void appendInt(std::string& text, std::int64_t value)
{
    char buffer[kMaxChars];
    text.append(buffer, write(buffer, value));
}
inline void appendUInt(std::string& text, std::uint64_t value)
{
    char buffer[kMaxChars];
    text.append(buffer, write(buffer, value));
}
/// As `0x` and hexadecimal digits, at least `digits` of them.
KALMYRBASE_API void appendHex(std::string& text, std::uint64_t value, int digits = 1);

} // namespace SbNumber
