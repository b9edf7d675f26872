#include "StringCheck.h"

#include <cstddef>

namespace kalmyr::detail {

namespace {

/// Bytes of the character at the beginning of `text`; 0 when they are no UTF-8.
std::size_t sizeOfCharacter(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(0);
    const std::size_t size = first < 0x80                    ? 1
                             : first >= 0xC2 && first < 0xE0 ? 2
                             : first >= 0xE0 && first < 0xF0 ? 3
                             : first >= 0xF0 && first < 0xF5 ? 4
                                                             : 0;
    if (size == 0 || size > text.size())
        return 0;
    for (std::size_t i = 1; i < size; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    const unsigned second = size > 1 ? byte(1) : 0;
    const bool isLonger = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool isBeyond = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
    return isLonger || isBeyond ? 0 : size;
}

} // namespace

OddString findOddString(std::string_view text)
{
    bool inQuotes = false;
    for (std::size_t i = 0; i < text.size();) {
        const char c = text[i];
        if (!inQuotes && c == '#') {
            const std::size_t end = text.find_first_of("\r\n", i);
            i = end == text.npos ? text.size() : end;
            continue;
        }
        const bool isBare =
            !inQuotes && c != '"' && std::string_view(" \t\r\n\f\v,[]\0", 10).find(c) == text.npos;
        if (isBare)
            return {text.data() + i, "there are no quotes around a string"};
        const std::size_t size = sizeOfCharacter(text.substr(i));
        if (size == 0)
            return {text.data() + i, "a string has bytes that are no UTF-8"};
        const bool isEscape = inQuotes && c == '\\' && i + 1 < text.size();
        inQuotes = inQuotes != (c == '"');
        i += isEscape ? 2 : size;
    }
    return {};
}

} // namespace kalmyr::detail
