#pragma once

#include <array>
#include <string_view>
#include <utility>

/// \file
/// What the characters of scene text may be part of.

namespace kalmyr::detail {

using Classes = unsigned char;
inline constexpr Classes kSeparator = 1;
inline constexpr Classes kWordStart = 2;
inline constexpr Classes kWordRest = 4;
inline constexpr Classes kIdentStart = 8;
inline constexpr Classes kIdentRest = 16;
inline constexpr Classes kBare = 32;        ///< strings without quotes
inline constexpr Classes kLineEnd = 64;     ///< ends a comment
inline constexpr Classes kQuoteEvent = 128; ///< to be looked at inside a quoted string

constexpr bool isOneOf(char c, std::string_view set)
{
    return set.find(c) != std::string_view::npos;
}

constexpr Classes classOf(unsigned char u)
{
    const char c = static_cast<char>(u);
    const bool digit = c >= '0' && c <= '9';
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    const bool printable = u > 0x20 && u != 0x7f;
    const bool rest = printable && !isOneOf(c, "\"#',.[\\]{}");
    const std::pair<bool, Classes> memberships[] = {
        {isOneOf(c, " \t\n\r\f\v,"), kSeparator},
        {rest && !digit && c != '+' && c != '-', kWordStart},
        {rest, kWordRest},
        {letter, kIdentStart},
        {letter || digit, kIdentRest},
        {printable && !isOneOf(c, "\"#',[]{}"), kBare},
        {c == '\n' || c == '\r', kLineEnd},
        {c == '"' || c == '\\', kQuoteEvent},
    };
    Classes result = 0;
    for (const auto& [member, bit] : memberships) {
        result = static_cast<Classes>(result | (member ? bit : 0));
    }
    return result;
}

inline constexpr auto kClasses = [] {
    std::array<Classes, 256> table{};
    for (unsigned i = 0; i < table.size(); ++i) {
        table[i] = classOf(static_cast<unsigned char>(i));
    }
    return table;
}();

inline bool is(char c, Classes classes)
{
    return (kClasses[static_cast<unsigned char>(c)] & classes) != 0;
}

inline const char* skipComment(const char* p, const char* end)
{
    while (p < end && !is(*p, kLineEnd)) {
        ++p;
    }
    return p;
}

/// The zero behind the text is no separator, so no bounds test is needed.
inline const char* skipSeparators(const char* p, const char* end)
{
    for (;;) {
        while (is(*p, kSeparator)) {
            ++p;
        }
        if (*p != '#') {
            return p;
        }
        p = skipComment(p, end);
    }
}

} // namespace kalmyr::detail
