#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/elements/SoFontElement.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace kalmyr::detail {

/// A character as flat triangles, in ems: the baseline begins at the origin.
struct Glyph {
    std::vector<SbVec2f> points;
    std::vector<std::uint32_t> triangles; ///< counter-clockwise
    float advance = 0;                    ///< to the next character of the line
};

/// The characters of one font of the system. Each is made when first asked for and kept.
class Font {
public:
    virtual ~Font() = default;
    /// Never fails: a character that the font lacks is a box.
    virtual const Glyph& glyph(char32_t character) = 0;
    virtual float ascent() const = 0;  ///< of a line above its baseline, ems
    virtual float descent() const = 0; ///< below, positive

    /// The font that is nearest to the wish; one that only has boxes on a system without fonts.
    /// Lives as long as the process. Hold a FontLock while using it.
    static Font& find(const SoFontValues& wish);
};

/// Fonts are shared by all threads.
class FontLock {
public:
    FontLock();
    ~FontLock();
    FontLock(const FontLock&) = delete;
    FontLock& operator=(const FontLock&) = delete;
};

/// UTF-8; bytes that are none are taken as Latin-1.
std::vector<char32_t> charactersOf(std::string_view text);

} // namespace kalmyr::detail
