#include "Ascii85.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kalmyr::detail {

std::string encodeAscii85(std::string_view bytes)
{
    constexpr std::size_t kColumns = 80;
    std::string text;
    text.reserve(bytes.size() / 4 * 5 + bytes.size() / 60 + 16);
    std::size_t column = 0;
    const auto put = [&](char letter) {
        if (column == kColumns) {
            text += '\n';
            column = 0;
        }
        if (column == 0 && letter == '%') {
            text += ' ';
            ++column;
        }
        text += letter;
        ++column;
    };
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        const std::size_t count = std::min<std::size_t>(4, bytes.size() - i);
        std::uint32_t word = 0;
        for (std::size_t k = 0; k < 4; ++k)
            word = word << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0);
        if (word == 0 && count == 4) {
            put('z');
            continue;
        }
        std::array<char, 5> letters;
        for (std::size_t k = 5; k-- > 0; word /= 85)
            letters[k] = static_cast<char>('!' + word % 85);
        for (std::size_t k = 0; k <= count; ++k)
            put(letters[k]);
    }
    return text + "~>\n";
}

} // namespace kalmyr::detail
