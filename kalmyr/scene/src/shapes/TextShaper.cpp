#include "TextShaper.h"

#include <algorithm>

#include <fribidi.h>
#include <hb.h>

namespace kalmyr::detail {

namespace {

static_assert(sizeof(FriBidiChar) == sizeof(char32_t));

/// No character below runs from right to left or says that others do.
constexpr char32_t kFirstRightToLeft = 0x590;

struct Run {
    TextRun text;
    Font* font;
    int level; ///< odd: from right to left
};

std::vector<FriBidiLevel> levelsOf(std::span<const char32_t> line, bool reversed)
{
    std::vector<FriBidiLevel> levels(line.size(), reversed ? 1 : 0);
    const bool isPlain =
        std::all_of(line.begin(), line.end(), [](char32_t c) { return c < kFirstRightToLeft; });
    if (reversed || isPlain)
        return levels;
    const auto size = static_cast<FriBidiStrIndex>(line.size());
    const auto* characters = reinterpret_cast<const FriBidiChar*>(line.data());
    std::vector<FriBidiCharType> types(line.size());
    std::vector<FriBidiBracketType> brackets(line.size());
    fribidi_get_bidi_types(characters, size, types.data());
    fribidi_get_bracket_types(characters, size, types.data(), brackets.data());
    FriBidiParType direction = FRIBIDI_PAR_ON;
    if (fribidi_get_par_embedding_levels_ex(types.data(), brackets.data(), size, &direction,
                                            levels.data())
        == 0)
        std::fill(levels.begin(), levels.end(), FriBidiLevel(0)); // no memory
    // Whitespace at the end stands on the side of the paragraph's end.
    const FriBidiLevel outer = FRIBIDI_IS_RTL(direction) ? 1 : 0;
    for (std::size_t i = line.size(); i-- > 0 && FRIBIDI_IS_EXPLICIT_OR_BN_OR_WS(types[i]);)
        levels[i] = outer;
    return levels;
}

/// The script of each character; those of every script take that of their neighbours.
std::vector<hb_script_t> scriptsOf(std::span<const char32_t> line)
{
    hb_unicode_funcs_t* unicode = hb_unicode_funcs_get_default();
    std::vector<hb_script_t> scripts;
    scripts.reserve(line.size());
    hb_script_t last = HB_SCRIPT_COMMON;
    for (const char32_t c : line) {
        const hb_script_t script = hb_unicode_script(unicode, c);
        if (script != HB_SCRIPT_COMMON && script != HB_SCRIPT_INHERITED)
            last = script;
        scripts.push_back(last);
    }
    for (std::size_t i = scripts.size(); i-- > 1;) {
        if (scripts[i - 1] == HB_SCRIPT_COMMON)
            scripts[i - 1] = scripts[i];
    }
    return scripts;
}

std::vector<Run> runsOf(std::span<const char32_t> line, FontChoice& fonts, bool reversed)
{
    const std::vector<FriBidiLevel> levels = levelsOf(line, reversed);
    const std::vector<hb_script_t> scripts = scriptsOf(line);
    std::vector<Run> runs;
    const auto size = static_cast<std::uint32_t>(line.size());
    for (std::uint32_t begin = 0, end = 0; begin < size; begin = end) {
        end = begin + 1;
        while (end < size && continuesCluster(line[end]))
            ++end;
        Font* font = &fonts.choose(line.subspan(begin, end - begin));
        if (!runs.empty() && runs.back().font == font && runs.back().level == levels[begin]
            && runs.back().text.script == scripts[begin]) {
            runs.back().text.end = end;
            continue;
        }
        const bool rightToLeft = levels[begin] % 2 != 0;
        runs.push_back({{line, begin, end, scripts[begin], rightToLeft, fonts.language()},
                        font,
                        levels[begin]});
    }
    return runs;
}

/// From every level down to the lowest odd one, what is at least as deep is turned round.
void putInVisualOrder(std::vector<Run>& runs)
{
    int deepest = 0;
    for (const Run& run : runs)
        deepest = std::max(deepest, run.level);
    for (int level = deepest; level > 0; --level) {
        for (auto at = runs.begin(); at != runs.end();) {
            const auto first =
                std::find_if(at, runs.end(), [=](const Run& r) { return r.level >= level; });
            at = std::find_if(first, runs.end(), [=](const Run& r) { return r.level < level; });
            std::reverse(first, at);
        }
    }
}

} // namespace

void ShapedLine::shape(std::span<const char32_t> characters, FontChoice& fonts, bool reversed)
{
    std::vector<Run> runs = runsOf(characters, fonts, reversed);
    putInVisualOrder(runs);
    for (const Run& run : runs)
        run.font->shape(run.text, glyphs);
    for (const ShapedGlyph& glyph : glyphs)
        advance += glyph.advance;
}

} // namespace kalmyr::detail
