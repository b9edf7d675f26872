#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

namespace kalmyr::detail {

/// A hash of names for tables of open addressing that take the lower bits as the first slot.
///
/// Programs number the names that they make. Eight of one series in a row get eight slots in a row,
/// so that a file's names, which come in order, do not each cost a line of the cache.
inline std::size_t hashName(std::string_view name)
{
    constexpr std::size_t kMaxDigits = 9;
    constexpr std::size_t kRow = 8;
    std::size_t digits = 0;
    std::uint64_t number = 0;
    std::uint64_t power = 1;
    for (; digits < name.size() && digits < kMaxDigits; ++digits, power *= 10) {
        const auto digit = static_cast<unsigned char>(name[name.size() - 1 - digits] - '0');
        if (digit > 9)
            break;
        number += digit * power;
    }
    const std::string_view series = name.substr(0, name.size() - digits);
    if (digits == 0)
        return std::hash<std::string_view>()(series);
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
    const std::uint64_t row = (std::hash<std::string_view>()(series) + number / kRow) * kFactor;
    return static_cast<std::size_t>(((row ^ row >> 32) & ~(kRow - 1)) + number % kRow);
}

} // namespace kalmyr::detail
