#pragma once

#include <bit>
#include <cstdint>

namespace kalmyr::detail {

/// Mixes ids into a key; unlike SoElement::mix() zeros count, so that the same id in another place
/// gives another key.
inline std::uint64_t addToKey(std::uint64_t key, std::uint64_t id)
{
    return (std::rotl(key, 23) ^ id) * 0x9e3779b97f4a7c15ULL + 0x632be59bd9b4e019ULL;
}

} // namespace kalmyr::detail
