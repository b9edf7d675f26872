#pragma once

#include <cstddef>
#include <cstdint>

/// \file
/// Numbers of scene text, for the types float, double and whole numbers of 16 and 32 bits. The text
/// ends in a zero at `end`.

namespace kalmyr::detail {

/// End of the number at `p`, or null when there is none of this type.
template <class T>
const char* scanNumber(const char* p, const char* end, T& value);

/// Reads at most `max` numbers, with separators and comments before each, and moves `at` behind the
/// last, or in front of what is no number of the type. Returns how many there were. The values are
/// those of scanNumber(), to the last bit.
template <class T>
std::size_t scanNumbers(const char*& at, const char* end, T* to, std::size_t max);

} // namespace kalmyr::detail
