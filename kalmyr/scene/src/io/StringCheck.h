#pragma once

#include <string_view>

namespace kalmyr::detail {

/// A liberty in the text of string values, where other readers would refuse them.
struct OddString {
    const char* at = nullptr; ///< null: there is none
    const char* what = "";
};

/// Finds the first string without quotes, or with bytes that are no UTF-8.
OddString findOddString(std::string_view text);

} // namespace kalmyr::detail
