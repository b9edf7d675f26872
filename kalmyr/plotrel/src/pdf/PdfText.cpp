#include "PdfText.h"

#include <algorithm>
#include <array>

namespace kalmyr::detail {

namespace {

/// Codes 128 to 159 of Windows-1252; 0 where there is none.
constexpr std::array<char16_t, 32> kHighCodes{
    0x20ac, 0,      0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017d, 0,      0,      0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
    0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0,      0x017e, 0x0178};

/// Codes 32 to 255.
constexpr std::array<std::uint16_t, 224> kWidths{
    278,  278, 355, 556, 556, 889,  667,  191,  333, 333,  389, 584, 278,  333, 278, 278, //
    556,  556, 556, 556, 556, 556,  556,  556,  556, 556,  278, 278, 584,  584, 584, 556, //
    1015, 667, 667, 722, 722, 667,  611,  778,  722, 278,  500, 667, 556,  833, 722, 778, //
    667,  778, 722, 667, 611, 722,  667,  944,  667, 667,  611, 278, 278,  278, 469, 556, //
    333,  556, 556, 500, 556, 556,  278,  556,  556, 222,  222, 500, 222,  833, 556, 556, //
    556,  556, 333, 500, 278, 556,  500,  722,  500, 500,  500, 334, 260,  334, 584, 350, //
    556,  350, 222, 556, 333, 1000, 556,  556,  333, 1000, 667, 333, 1000, 350, 611, 350, //
    350,  222, 222, 333, 333, 350,  556,  1000, 333, 1000, 500, 333, 944,  350, 500, 667, //
    278,  333, 556, 556, 556, 556,  260,  556,  333, 737,  370, 556, 584,  333, 737, 333, //
    400,  584, 333, 333, 333, 556,  537,  278,  333, 333,  365, 556, 834,  834, 834, 611, //
    667,  667, 667, 667, 667, 667,  1000, 722,  667, 667,  667, 667, 278,  278, 278, 278, //
    722,  722, 778, 778, 778, 778,  778,  584,  778, 722,  722, 722, 722,  667, 667, 611, //
    556,  556, 556, 556, 556, 556,  889,  500,  556, 556,  556, 556, 278,  278, 278, 278, //
    556,  556, 556, 556, 556, 556,  556,  584,  611, 556,  556, 556, 556,  500, 556, 500};

/// 0 where the encoding has none.
unsigned char winAnsi(char32_t character)
{
    if ((character >= 0x20 && character < 0x7f) || (character >= 0xa0 && character <= 0xff))
        return static_cast<unsigned char>(character);
    const auto at = std::find(kHighCodes.begin(), kHighCodes.end(), character);
    return at == kHighCodes.end() || character == 0
               ? 0
               : static_cast<unsigned char>(0x80 + (at - kHighCodes.begin()));
}

std::string utf16Hex(const std::vector<char32_t>& characters)
{
    std::string text = "<FEFF";
    const auto unit = [&text](char32_t value) {
        for (int shift = 12; shift >= 0; shift -= 4)
            text += "0123456789ABCDEF"[value >> shift & 15];
    };
    for (char32_t one : characters) {
        if (one >= 0x10000) {
            one -= 0x10000;
            unit(0xd800 + (one >> 10));
            unit(0xdc00 + (one & 0x3ff));
        } else {
            unit(one);
        }
    }
    return text + ">";
}

bool isContinuation(char byte)
{
    return (byte & 0xc0) == 0x80;
}

} // namespace

std::vector<char32_t> decodeUtf8(std::string_view text)
{
    constexpr char32_t kReplacement = 0xfffd;
    std::vector<char32_t> result;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i++]);
        const int more = lead < 0x80 ? 0 : lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : 1;
        static constexpr std::array<char32_t, 4> kLeast{0, 0x80, 0x800, 0x10000};
        char32_t value = more == 0 ? lead : lead & (0x3f >> more);
        int found = 0;
        for (; found < more && i < text.size() && isContinuation(text[i]); ++found)
            value = value << 6 | (text[i++] & 0x3f);
        const bool isWrong = found < more || value < kLeast[more] || value > 0x10ffff
                             || (value >= 0xd800 && value < 0xe000) || lead >= 0xf8
                             || (lead >= 0x80 && lead < 0xc0);
        result.push_back(isWrong ? kReplacement : value);
    }
    return result;
}

std::string pdfLiteral(std::string_view bytes)
{
    std::string text = "(";
    for (const char one : bytes) {
        const auto code = static_cast<unsigned char>(one);
        if (one == '(' || one == ')' || one == '\\') {
            text += '\\';
            text += one;
        } else if (code < 32 || code > 126) {
            text += '\\';
            for (int shift = 6; shift >= 0; shift -= 3)
                text += static_cast<char>('0' + (code >> shift & 7));
        } else {
            text += one;
        }
    }
    return text + ")";
}

std::string pdfTextString(std::string_view utf8)
{
    const bool isAscii =
        std::all_of(utf8.begin(), utf8.end(), [](char one) { return one >= ' ' && one <= '~'; });
    return isAscii ? pdfLiteral(utf8) : utf16Hex(decodeUtf8(utf8));
}

std::vector<PdfTextPiece> pdfTextPieces(std::string_view utf8)
{
    std::vector<PdfTextPiece> pieces;
    const std::vector<char32_t> characters = decodeUtf8(utf8);
    for (auto at = characters.begin(); at != characters.end();) {
        // A word, or the blanks before the next one.
        const bool blank = *at == U' ';
        const auto end =
            std::find_if(at, characters.end(), [&](char32_t c) { return (c == U' ') != blank; });
        PdfTextPiece piece;
        bool complete = true;
        for (; at != end; ++at) {
            const unsigned char code = winAnsi(*at);
            complete = complete && code != 0;
            piece.codes += code ? static_cast<char>(code) : '?';
        }
        if (!complete)
            piece.actualText =
                utf16Hex({end - static_cast<std::ptrdiff_t>(piece.codes.size()), end});
        if (complete && !pieces.empty() && pieces.back().actualText.empty())
            pieces.back().codes += piece.codes;
        else
            pieces.push_back(std::move(piece));
    }
    return pieces;
}

int helveticaWidth(unsigned char code)
{
    return code < 32 ? 0 : kWidths[code - 32];
}

} // namespace kalmyr::detail
