#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/elements/SoFontElement.h>

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace kalmyr::detail {

/// A character as flat triangles, in ems: the baseline begins at the origin.
struct Glyph {
    std::vector<SbVec2f> points;
    std::vector<std::uint32_t> triangles; ///< counter-clockwise
    float advance = 0;                    ///< to the next character of the line
};

class Font;

/// A glyph of shaped text: where it stands relative to the pen, and how far the pen goes on (ems).
struct ShapedGlyph {
    const Glyph* glyph = nullptr;
    SbVec2f offset;
    float advance = 0;
    std::uint32_t character = 0; ///< number of the first character that it stands for
    Font* font = nullptr;        ///< that it is of
    std::uint32_t index = 0;     ///< its number in the font
};

/// How much of each pixel a glyph covers, of 255; nothing for a blank.
struct Coverage {
    int left = 0, bottom = 0; ///< from the pen, on the baseline
    int width = 0, height = 0;
    std::vector<unsigned char> values; ///< row by row from the bottom
};

/// Characters of one font, script and direction within a line.
struct TextRun {
    std::span<const char32_t> line; ///< all characters, whose neighbours matter
    std::uint32_t begin = 0, end = 0;
    std::uint32_t script = 0; ///< as HarfBuzz names it
    bool rightToLeft = false;
    const char* language = ""; ///< a tag like "sr"; empty: not known
};

/// The glyphs of one font of the system. Each is made when first asked for and kept.
class Font {
public:
    virtual ~Font() = default;
    virtual bool has(char32_t character) const = 0;
    /// Appends the glyphs of a run from left to right. Never fails: a character that the font lacks
    /// is a box.
    virtual void shape(const TextRun& run, std::vector<ShapedGlyph>& glyphs) = 0;
    /// A glyph of this font at so many pixels an em, its pen a fraction of a pixel to the right.
    virtual Coverage paint(const ShapedGlyph& glyph, float size, float fraction) = 0;
    virtual float ascent() const = 0;  ///< of a line above its baseline, ems
    virtual float descent() const = 0; ///< below, positive
};

/// The font that is nearest to a wish, and those of the system that have what it lacks.
/// Lives as long as the process. Hold a FontLock while using it.
class FontChoice {
public:
    virtual ~FontChoice() = default;
    /// One that only has boxes on a system without fonts.
    virtual Font& first() = 0;
    /// The first font that has all of a character and its marks, or the character at least; one
    /// that has boxes only for what no font has.
    virtual Font& choose(std::span<const char32_t> cluster) = 0;
    /// A tag like "sr"; empty: not known.
    virtual const char* language() const = 0;

    static FontChoice& find(const SoFontValues& wish);
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

/// Whether a character belongs to the one before it: marks, joiners, selectors of variants.
bool continuesCluster(char32_t character);

} // namespace kalmyr::detail
