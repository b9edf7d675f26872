#pragma once

#include <kalmyr/base/SbString.h>
#include <kalmyr/elements/SoFontElement.h>

#include <span>

class SoGeometry;

namespace kalmyr::detail {

/// Lines of text, laid out as VRML97 describes it, flat at z = 0.
struct TextLayout {
    enum Justify { FIRST, BEGIN, MIDDLE, END };
    /// Longer texts are cut, over all lines (characters).
    static constexpr std::size_t kMaxCharacters = 10'000;

    SoFontValues font;
    std::span<const SbString> lines;
    std::span<const float> lengths; ///< of the lines in object units; 0 or missing: as they come
    float maxExtent = 0;            ///< longer lines shrink all of them to it; 0: any
    float spacing = 1;              ///< of the lines in heights of the font
    Justify major = BEGIN;          ///< along the lines
    Justify minor = FIRST;          ///< across them
    bool horizontal = true;
    bool leftToRight = true;
    bool topToBottom = true;

    /// One face a line.
    void build(SoGeometry& geometry) const;
};

} // namespace kalmyr::detail
