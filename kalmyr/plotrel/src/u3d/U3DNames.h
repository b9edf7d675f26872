#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace kalmyr::detail {

/// Makes names of one kind unique: what is taken already gets a number.
class U3DNames {
public:
    /// `wanted` as valid UTF-8 of a sensible length if it is free, else with a number from 2 up.
    /// Costs the same however often a name is wanted.
    std::string makeUnique(std::string_view wanted);
    /// The same for things without a name: always with a number, from 1 up.
    std::string makeNumbered(std::string_view kind);

private:
    std::string number(const std::string& stem, int first);

    std::unordered_set<std::string> m_taken;
    std::unordered_map<std::string, int> m_next; ///< number to try first, by stem
};

} // namespace kalmyr::detail
