#pragma once

#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/elements/SoFontElement.h>

#include <functional>
#include <memory>
#include <span>

class SoDetail;
class SoGeometry;

namespace kalmyr::detail {

struct Glyph;
struct ShapedGlyph;

/// A glyph in its place: points of the glyph times `scale`, then moved to `origin`.
struct PlacedGlyph {
    const Glyph& glyph;
    const ShapedGlyph& shaped;
    SbVec2f origin;
    SbVec2f scale; ///< object units an em
    int line;
    std::uint32_t character; ///< number in the line of the first one that it stands for
    SbVec2f cell;            ///< where its room begins and ends along the line

    SbVec2f at(const SbVec2f& p) const
    {
        return {origin[0] + p[0] * scale[0], origin[1] + p[1] * scale[1]};
    }
};

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
    /// False: all characters of a row run from right to left. True: as their scripts run.
    bool leftToRight = true;
    bool topToBottom = true;

    /// Calls back for each glyph, line by line, rows from left to right, while fonts are locked.
    void place(const std::function<void(const PlacedGlyph&)>& use) const;
    /// Flat letters that face +z; one face a line.
    void build(SoGeometry& geometry) const;
    /// An SoTextDetail of the character that is nearest to a place on a triangle of the geometry,
    /// whose faces are the lines.
    std::unique_ptr<SoDetail> createDetail(const SoGeometry& geometry, std::size_t triangle,
                                           const SbVec2f& place) const;
};

} // namespace kalmyr::detail
