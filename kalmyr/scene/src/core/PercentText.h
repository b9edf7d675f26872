#pragma once

#include <string>
#include <string_view>

namespace kalmyr::detail {

/// The bytes that a part of an address stands for: "%20" is a blank.
std::string decodePercent(std::string_view text);

} // namespace kalmyr::detail
