#include "TextLayout.h"

#include "TextShaper.h"

#include <kalmyr/details/SoTextDetail.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace kalmyr::detail {

namespace {

/// A line before it is put in its place: from 0 on along its direction, in object units.
struct Line {
    struct Place {
        ShapedGlyph glyph;
        float at;    ///< where its cell begins along the line
        float room;  ///< to the next cell
        float inset; ///< of the glyph's pen across a column, ems
    };
    std::vector<Place> places;
    float length = 0;
    float stretch = 1;
};

void measureRow(const TextLayout& text, FontChoice& fonts, std::span<const char32_t> characters,
                Line& line)
{
    ShapedLine shaped;
    shaped.shape(characters, fonts, !text.leftToRight);
    for (const ShapedGlyph& glyph : shaped.glyphs) {
        const float room = glyph.advance * text.font.size;
        line.places.push_back({glyph, line.length, room, 0});
        line.length += room;
    }
}

/// Each character of a column stands with its marks in the middle of a cell.
void measureColumn(const TextLayout& text, FontChoice& fonts, std::span<const char32_t> characters,
                   Line& line)
{
    for (std::size_t begin = 0, end = 0; begin < characters.size(); begin = end) {
        end = begin + 1;
        while (end < characters.size() && continuesCluster(characters[end]))
            ++end;
        ShapedLine shaped;
        shaped.shape(characters.subspan(begin, end - begin), fonts, false);
        float pen = (1 - shaped.advance) / 2;
        for (ShapedGlyph& glyph : shaped.glyphs) {
            glyph.character += static_cast<std::uint32_t>(begin);
            line.places.push_back({glyph, line.length, text.font.size, pen});
            pen += glyph.advance;
        }
        line.length += text.font.size;
    }
}

Line measure(const TextLayout& text, FontChoice& fonts, const SbString& string, std::size_t& budget)
{
    Line line;
    std::vector<char32_t> characters = charactersOf(string.view());
    characters.resize(std::min(characters.size(), budget));
    budget -= characters.size();
    if (text.horizontal)
        measureRow(text, fonts, characters, line);
    else
        measureColumn(text, fonts, characters, line);
    return line;
}

void stretch(const TextLayout& text, std::vector<Line>& lines)
{
    float longest = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        Line& line = lines[i];
        if (i < text.lengths.size() && text.lengths[i] > 0 && line.length > 0)
            line.stretch = text.lengths[i] / line.length;
        longest = std::max(longest, line.length * line.stretch);
    }
    if (!(text.maxExtent > 0) || longest <= text.maxExtent)
        return;
    for (Line& line : lines)
        line.stretch *= text.maxExtent / longest;
}

/// Where a line of that length begins, when it runs in the positive direction.
float beginAlong(TextLayout::Justify justify, bool forward, float length)
{
    if (justify == TextLayout::MIDDLE)
        return -length / 2;
    return (justify == TextLayout::END) == forward ? -length : 0;
}

/// Offset of the whole block across the lines: upwards for rows, to the right for columns.
float shiftAcross(const TextLayout& text, const Font& font, std::size_t numLines)
{
    const float size = text.font.size;
    const float block = size * text.spacing * static_cast<float>(numLines - 1);
    const float above = text.horizontal ? font.ascent() * size : 0;
    const float below = text.horizontal ? font.descent() * size : size;
    // The first line's edge towards the beginning, and the last line's towards the end.
    const bool down = text.horizontal ? text.topToBottom : !text.leftToRight;
    const float high = down ? above : block + above;
    const float low = down ? -block - below : -below;
    const float top = text.horizontal ? high : (down ? below : block + below);
    const float bottom = text.horizontal ? low : (down ? -block : 0.0f);
    switch (text.minor) {
    case TextLayout::FIRST:
        return 0;
    case TextLayout::BEGIN:
        return down ? -top : -bottom;
    case TextLayout::MIDDLE:
        return -(top + bottom) / 2;
    default:
        return down ? -bottom : -top;
    }
}

using Use = std::function<void(const PlacedGlyph&)>;

void placeLine(const TextLayout& text, const Font& font, const Line& line, float across, int number,
               const Use& use)
{
    const float size = text.font.size;
    const bool forward = text.horizontal ? text.leftToRight : !text.topToBottom;
    const float length = line.length * line.stretch;
    const float begin = beginAlong(text.major, forward, length);
    for (const Line::Place& place : line.places) {
        const ShapedGlyph& shaped = place.glyph;
        const float room = place.room * line.stretch;
        const float passed = place.at * line.stretch;
        if (text.horizontal) { // glyphs are in order from left to right already
            const SbVec2f pen(begin + passed + shaped.offset[0] * size * line.stretch,
                              across + shaped.offset[1] * size);
            use({*shaped.glyph,
                 shaped,
                 pen,
                 {size * line.stretch, size},
                 number,
                 shaped.character,
                 {begin + passed, begin + passed + room}});
            continue;
        }
        const float along = begin + (forward ? passed : length - passed - room);
        const float base = font.descent() * room / (font.ascent() + font.descent());
        const SbVec2f pen(across + (place.inset + shaped.offset[0]) * size,
                          along + base + shaped.offset[1] * size * line.stretch);
        use({*shaped.glyph,
             shaped,
             pen,
             {size, size * line.stretch},
             number,
             shaped.character,
             {along, along + room}});
    }
}

} // namespace

void TextLayout::place(const Use& use) const
{
    if (!(font.size > 0) || !std::isfinite(font.size) || lines.empty())
        return;
    const FontLock lock;
    FontChoice& fonts = FontChoice::find(font);
    std::size_t budget = kMaxCharacters;
    std::vector<Line> measured;
    for (const SbString& line : lines)
        measured.push_back(measure(*this, fonts, line, budget));
    stretch(*this, measured);
    const Font& letters = fonts.first();
    const float shift = shiftAcross(*this, letters, measured.size());
    const bool down = horizontal ? topToBottom : !leftToRight;
    for (std::size_t i = 0; i < measured.size(); ++i) {
        const float step = font.size * spacing * static_cast<float>(i);
        placeLine(*this, letters, measured[i], shift + (down ? -step : step), static_cast<int>(i),
                  use);
    }
}

void TextLayout::build(SoGeometry& geometry) const
{
    place([&](const PlacedGlyph& placed) {
        const Glyph& glyph = placed.glyph;
        const auto first = static_cast<std::uint32_t>(geometry.positions.size());
        for (const SbVec2f& p : glyph.points) {
            const SbVec2f at = placed.at(p);
            geometry.positions.emplace_back(at[0], at[1], 0.0f);
            geometry.normals.emplace_back(0.0f, 0.0f, 1.0f);
            geometry.texCoords.push_back(at / font.size);
        }
        for (const std::uint32_t corner : glyph.triangles)
            geometry.triangles.push_back(first + corner);
        geometry.triangleFaces.insert(geometry.triangleFaces.end(), glyph.triangles.size() / 3,
                                      placed.line);
    });
}

std::unique_ptr<SoDetail> TextLayout::createDetail(const SoGeometry& geometry, std::size_t triangle,
                                                   const SbVec2f& place) const
{
    auto detail = std::make_unique<SoTextDetail>();
    if (triangle < geometry.triangleFaces.size())
        detail->setStringIndex(geometry.triangleFaces[triangle]);
    const float at = place[horizontal ? 0 : 1];
    float nearest = std::numeric_limits<float>::max();
    this->place([&](const PlacedGlyph& placed) {
        // Within its own room it is the nearest; marks have none.
        const float distance =
            std::max({placed.cell[0] - at, at - placed.cell[1], 0.0f})
            + (placed.cell[1] > placed.cell[0] ? 0 : std::numeric_limits<float>::min());
        if (placed.line != detail->getStringIndex() || !(distance < nearest))
            return;
        nearest = distance;
        detail->setCharacterIndex(static_cast<int>(placed.character));
    });
    return detail;
}

} // namespace kalmyr::detail
