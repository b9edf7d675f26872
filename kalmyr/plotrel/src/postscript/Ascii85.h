#pragma once

#include <string>
#include <string_view>

namespace kalmyr::detail {

/// Bytes as five letters for four, with the end mark, in lines of 80. No line begins with a percent
/// sign: programs that look for structure comments would take it for one.
std::string encodeAscii85(std::string_view bytes);

} // namespace kalmyr::detail
