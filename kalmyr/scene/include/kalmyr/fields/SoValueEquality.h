#pragma once

#include <cstring>
#include <type_traits>

namespace kalmyr {

/// Whether two values are equal or have the same bits, as a not-a-number has with itself.
template <class T>
bool isSameValue(const T& a, const T& b)
{
    if (a == b)
        return true;
    if constexpr (std::is_trivially_copyable_v<T> && !std::is_integral_v<T>)
        return std::memcmp(&a, &b, sizeof(T)) == 0;
    else
        return false;
}

} // namespace kalmyr
