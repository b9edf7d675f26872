#pragma once

#include "Glyphs.h"

namespace kalmyr::detail {

/// A line of text as glyphs from left to right.
struct ShapedLine {
    std::vector<ShapedGlyph> glyphs;
    float advance = 0; ///< of all, ems

    /// Lays characters out by the Unicode bidirectional algorithm, whose direction is that of the
    /// first letter that has one; from right to left throughout when `reversed`. Each run of
    /// characters is shaped by the first font that has them.
    void shape(std::span<const char32_t> characters, FontChoice& fonts, bool reversed);
};

} // namespace kalmyr::detail
