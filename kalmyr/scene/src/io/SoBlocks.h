#pragma once

#include <kalmyr/core/SoTokenizer.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class SoField;

/// \file
/// Binary scenes: text in which long lists of numbers are replaced by "@0", "@1" and so on, and
/// behind it these lists as blocks of bytes, as they lie in memory.

namespace kalmyr::detail {

/// Lists of fewer values stay text.
inline constexpr int kMinBlockValues = 8;

/// The bytes of a field's values; false for a field whose values are no plain numbers, or of which
/// there are too few to be worth it.
bool getBlock(const SoField& field, std::string_view& bytes);
/// Sets the values from such bytes. False, with the field unchanged, when the size does not fit.
bool setBlock(SoField& field, std::string_view bytes);

/// One piece of a binary file: what one use of a write action made.
struct Chunk {
    static constexpr std::uint32_t kByteOrder = 0x01020304;
    static constexpr std::uint32_t kVersion = 1;
    static constexpr std::size_t kAlignment = 8;

    const char* text = "";
    std::size_t textSize = 0;
    std::vector<std::string_view> blocks;
    std::size_t end = 0; ///< offset behind the piece

    /// Takes the piece at `at` apart; null, or what is wrong.
    const char* read(std::string_view file, std::size_t at);
    /// The piece as it is written where `offset` bytes stand already.
    static void write(std::string& out, std::size_t offset, std::string_view text,
                      const std::vector<std::string_view>& blocks);
};

} // namespace kalmyr::detail
