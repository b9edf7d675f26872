#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kalmyr::detail {

/// The characters of UTF-8; broken sequences become U+FFFD.
std::vector<char32_t> decodeUtf8(std::string_view text);

/// A text string of the document's information: literal where all is ASCII, else UTF-16.
std::string pdfTextString(std::string_view utf8);

/// Part of a line of text in one font with WinAnsi encoding.
struct PdfTextPiece {
    std::string codes;
    /// The Unicode text of the codes as a text string; empty when the codes are that text.
    std::string actualText;
};

/// Words that the encoding lacks are pieces of their own, with question marks for the characters.
std::vector<PdfTextPiece> pdfTextPieces(std::string_view utf8);

/// Of Helvetica, in thousandths of its size.
int helveticaWidth(unsigned char code);

/// A literal string with its parentheses.
std::string pdfLiteral(std::string_view bytes);

} // namespace kalmyr::detail
