#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

/// What stands in the text of a scene file itself: nothing is inlined or expanded.
struct TextCounts {
    std::map<std::string, std::uint64_t, std::less<>> nodes; ///< bodies outside of prototypes
    std::map<std::string, std::uint64_t, std::less<>>
        protoNodes; ///< and inside, default values too
    std::uint64_t def = 0;
    std::uint64_t use = 0;
    std::uint64_t route = 0;
    std::uint64_t proto = 0;
    std::uint64_t externproto = 0;
};

/// Counts by looking at words, strings and brackets only. `text` begins behind the header line.
TextCounts countText(std::string_view text);
