#include "Glyphs.h"

#include "GlyphTessellator.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>
#include <unordered_map>

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_SIZES_H
#include <hb-ft.h>

namespace kalmyr::detail {

namespace {

/// Straight pieces of a curve.
constexpr int kCurveSteps = 4;

/// Collects the outline of a character as closed lines of points, in font units.
struct Outline {
    std::vector<std::vector<SbVec2f>> contours;
    float scale = 1;

    SbVec2f point(const FT_Vector* p) const
    {
        return SbVec2f(static_cast<float>(p->x), static_cast<float>(p->y)) * scale;
    }
    void move(const FT_Vector* to) { contours.push_back({point(to)}); }
    void line(const FT_Vector* to) { contours.back().push_back(point(to)); }
    void curve(const SbVec2f& b, const SbVec2f& c, const SbVec2f& d)
    {
        const SbVec2f a = contours.back().back();
        for (int i = 1; i <= kCurveSteps; ++i) {
            const float t = static_cast<float>(i) / kCurveSteps, u = 1 - t;
            contours.back().push_back(a * (u * u * u) + b * (3 * u * u * t) + c * (3 * u * t * t)
                                      + d * (t * t * t));
        }
    }
    void conic(const FT_Vector* control, const FT_Vector* to)
    {
        const SbVec2f a = contours.back().back(), b = point(control), c = point(to);
        curve((a + b * 2.0f) / 3.0f, (c + b * 2.0f) / 3.0f, c);
    }
};

Outline& self(void* user)
{
    return *static_cast<Outline*>(user);
}

const FT_Outline_Funcs kOutlineFunctions = {
    [](const FT_Vector* to, void* user) { return self(user).move(to), 0; },
    [](const FT_Vector* to, void* user) { return self(user).line(to), 0; },
    [](const FT_Vector* b, const FT_Vector* to, void* user) { return self(user).conic(b, to), 0; },
    [](const FT_Vector* b, const FT_Vector* c, const FT_Vector* to, void* user) {
        return self(user).curve(self(user).point(b), self(user).point(c), self(user).point(to)), 0;
    },
    0,
    0,
};

/// Stands in where the system has no font, or none has a character.
class BoxFont final : public Font {
public:
    BoxFont()
    {
        m_box.advance = m_blank.advance = kAdvance;
        // A frame.
        m_box.points = {{0.05f, 0},    {0.5f, 0},      {0.5f, 0.7f},   {0.05f, 0.7f},
                        {0.1f, 0.05f}, {0.45f, 0.05f}, {0.45f, 0.65f}, {0.1f, 0.65f}};
        for (std::uint32_t i = 0; i < 4; ++i) {
            const std::uint32_t next = (i + 1) % 4;
            m_box.triangles.insert(m_box.triangles.end(), {i, next, 4 + next, i, 4 + next, 4 + i});
        }
    }
    bool has(char32_t) const override { return true; }
    void shape(const TextRun& run, std::vector<ShapedGlyph>& glyphs) override
    {
        for (std::uint32_t i = run.begin; i < run.end; ++i) {
            const std::uint32_t at = run.rightToLeft ? run.begin + run.end - 1 - i : i;
            const Glyph* glyph = run.line[at] <= ' ' ? &m_blank : &m_box;
            glyphs.push_back({glyph, {}, kAdvance, at, this, glyph == &m_box ? 1u : 0u});
        }
    }
    Coverage paint(const ShapedGlyph& glyph, float size, float) override
    {
        if (glyph.index == 0)
            return {};
        Coverage box{std::max(1, static_cast<int>(0.05f * size)),
                     0,
                     std::max(2, static_cast<int>(0.45f * size)),
                     std::max(3, static_cast<int>(0.7f * size)),
                     {}};
        const int edge = std::max(1, static_cast<int>(0.05f * size));
        for (int y = 0; y < box.height; ++y) {
            for (int x = 0; x < box.width; ++x) {
                const bool inside =
                    x >= edge && x < box.width - edge && y >= edge && y < box.height - edge;
                box.values.push_back(inside ? 0 : 255);
            }
        }
        return box;
    }
    float ascent() const override { return 0.8f; }
    float descent() const override { return 0.2f; }

private:
    static constexpr float kAdvance = 0.55f;
    Glyph m_box, m_blank;
};

Coverage copyOf(const FT_GlyphSlotRec& slot)
{
    const FT_Bitmap& bitmap = slot.bitmap;
    Coverage copy{slot.bitmap_left,
                  slot.bitmap_top - static_cast<int>(bitmap.rows),
                  static_cast<int>(bitmap.width),
                  static_cast<int>(bitmap.rows),
                  {}};
    for (int y = copy.height - 1; y >= 0; --y) { // a bitmap begins at the top
        const unsigned char* row = bitmap.buffer + static_cast<std::ptrdiff_t>(y) * bitmap.pitch;
        copy.values.insert(copy.values.end(), row, row + bitmap.width);
    }
    return copy;
}

/// An outline font in a file.
class FileFont final : public Font {
public:
    explicit FileFont(FT_Face face) : m_face(face), m_scale(1.0f / face->units_per_EM)
    {
        // So that HarfBuzz measures in 64ths of font units. Painting has a size of its own.
        FT_Set_Pixel_Sizes(face, 0, face->units_per_EM);
        m_measured = face->size;
        m_shaper = hb_ft_font_create(face, nullptr);
        hb_ft_font_set_load_flags(m_shaper, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP);
    }
    bool has(char32_t character) const override
    {
        return FT_Get_Char_Index(m_face, character) != 0;
    }
    void shape(const TextRun& run, std::vector<ShapedGlyph>& glyphs) override;
    Coverage paint(const ShapedGlyph& glyph, float size, float fraction) override;
    float ascent() const override { return static_cast<float>(m_face->ascender) * m_scale; }
    float descent() const override { return static_cast<float>(-m_face->descender) * m_scale; }

private:
    const Glyph& glyph(FT_UInt index)
    {
        const auto [at, isNew] = m_glyphs.try_emplace(index);
        if (isNew)
            load(index, at->second);
        return at->second;
    }
    void load(FT_UInt index, Glyph& glyph)
    {
        if (FT_Load_Glyph(m_face, index, FT_LOAD_NO_SCALE) != 0)
            return;
        const FT_GlyphSlot slot = m_face->glyph;
        glyph.advance = static_cast<float>(slot->metrics.horiAdvance) * m_scale;
        if (slot->format != FT_GLYPH_FORMAT_OUTLINE)
            return;
        Outline outline;
        outline.scale = m_scale;
        if (FT_Outline_Decompose(&slot->outline, &kOutlineFunctions, &outline) == 0)
            tessellateContours(outline.contours, glyph);
    }

    FT_Face m_face; // Lives as long as the process, as all below.
    FT_Size m_measured;
    FT_Size m_painted = nullptr; ///< made when first needed
    hb_font_t* m_shaper;         ///< of the face
    hb_buffer_t* m_buffer = hb_buffer_create();
    float m_scale;
    std::unordered_map<FT_UInt, Glyph> m_glyphs;
};

void FileFont::shape(const TextRun& run, std::vector<ShapedGlyph>& glyphs)
{
    hb_buffer_reset(m_buffer);
    hb_buffer_add_codepoints(m_buffer, reinterpret_cast<const hb_codepoint_t*>(run.line.data()),
                             static_cast<int>(run.line.size()), run.begin,
                             static_cast<int>(run.end - run.begin));
    hb_buffer_set_direction(m_buffer, run.rightToLeft ? HB_DIRECTION_RTL : HB_DIRECTION_LTR);
    hb_buffer_set_script(m_buffer, static_cast<hb_script_t>(run.script));
    // Without one it would be that of the host's locale, which is not ours.
    hb_buffer_set_language(m_buffer,
                           hb_language_from_string(*run.language ? run.language : "und", -1));
    hb_shape(m_shaper, m_buffer, nullptr, 0);
    unsigned count = 0;
    const hb_glyph_info_t* infos = hb_buffer_get_glyph_infos(m_buffer, &count);
    const hb_glyph_position_t* places = hb_buffer_get_glyph_positions(m_buffer, &count);
    const float scale = m_scale / 64;
    for (unsigned i = 0; i < count; ++i) {
        glyphs.push_back(
            {&glyph(infos[i].codepoint),
             SbVec2f(static_cast<float>(places[i].x_offset), static_cast<float>(places[i].y_offset))
                 * scale,
             static_cast<float>(places[i].x_advance) * scale, infos[i].cluster, this,
             infos[i].codepoint});
    }
}

Coverage FileFont::paint(const ShapedGlyph& glyph, float size, float fraction)
{
    if (!m_painted && FT_New_Size(m_face, &m_painted) != 0)
        return {};
    FT_Activate_Size(m_painted);
    Coverage result;
    // Fitted to whole pixels upwards, where it makes letters sharp and moves none.
    if (FT_Set_Char_Size(m_face, 0, static_cast<FT_F26Dot6>(size * 64), 72, 72) == 0
        && FT_Load_Glyph(m_face, glyph.index, FT_LOAD_TARGET_LIGHT | FT_LOAD_NO_BITMAP) == 0
        && m_face->glyph->format == FT_GLYPH_FORMAT_OUTLINE) {
        const FT_GlyphSlot slot = m_face->glyph;
        FT_Outline_Translate(&slot->outline, static_cast<FT_Pos>(fraction * 64), 0);
        if (FT_Render_Glyph(slot, FT_RENDER_MODE_NORMAL) == 0)
            result = copyOf(*slot);
    }
    FT_Activate_Size(m_measured);
    return result;
}

using Wish = std::tuple<SbName, int, int, SbName>;

class SystemChoice;

struct Fonts {
    std::recursive_mutex mutex;
    FT_Library library = nullptr;
    std::map<Wish, std::unique_ptr<SystemChoice>> byWish;
    std::map<std::pair<std::string, int>, std::unique_ptr<Font>> byFile;
    BoxFont boxes;
};

Fonts& fonts();

const char* familyName(int family)
{
    return family == SoFontValues::SANS         ? "sans-serif"
           : family == SoFontValues::TYPEWRITER ? "monospace"
                                                : "serif";
}

void add(FcPattern* pattern, const char* what, const char* text)
{
    FcPatternAddString(pattern, what, reinterpret_cast<const FcChar8*>(text));
}

using Pattern = std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)>;

/// With a language, fonts for it come first: several share letters, each with forms of its own.
Pattern patternOf(const Wish& wish, const char* language = "")
{
    const auto& [name, family, style, ignored] = wish;
    Pattern pattern(FcPatternCreate(), FcPatternDestroy);
    if (!name.isEmpty())
        add(pattern.get(), FC_FAMILY, name.getString());
    add(pattern.get(), FC_FAMILY, familyName(family));
    FcPatternAddInteger(pattern.get(), FC_WEIGHT,
                        style & SoFontValues::BOLD ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
    FcPatternAddInteger(pattern.get(), FC_SLANT,
                        style & SoFontValues::ITALIC ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    FcPatternAddBool(pattern.get(), FC_OUTLINE, FcTrue);
    if (*language)
        add(pattern.get(), FC_LANG, language);
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    return pattern;
}

/// The file of a font of the system, and the number of the face in it.
std::pair<std::string, int> fileOf(const FcPattern* found)
{
    FcChar8* file = nullptr;
    int index = 0;
    if (!found || FcPatternGetString(found, FC_FILE, 0, &file) != FcResultMatch)
        return {};
    FcPatternGetInteger(found, FC_INDEX, 0, &index);
    // The upper half names an instance of a variable font.
    return {reinterpret_cast<const char*>(file), index & 0xffff};
}

/// Null for a file that holds no outlines.
Font* openFont(Fonts& all, const std::pair<std::string, int>& file)
{
    const auto [at, isNew] = all.byFile.try_emplace(file);
    std::unique_ptr<Font>& known = at->second;
    FT_Face face = nullptr;
    const bool ready = all.library || FT_Init_FreeType(&all.library) == 0;
    if (isNew && ready && !file.first.empty()
        && FT_New_Face(all.library, file.first.c_str(), file.second, &face) == 0) {
        if (FT_IS_SCALABLE(face) && face->units_per_EM > 0)
            known = std::make_unique<FileFont>(face);
        else
            FT_Done_Face(face);
    }
    return known.get();
}

/// The fonts that the system offers for a wish.
class SystemChoice final : public FontChoice {
public:
    explicit SystemChoice(const Wish& wish) : m_wish(wish)
    {
        FcResult result = FcResultNoMatch;
        const Pattern found(FcFontMatch(nullptr, patternOf(wish).get(), &result), FcPatternDestroy);
        Font* font = openFont(fonts(), fileOf(found.get()));
        m_first = font ? font : &fonts().boxes;
    }
    Font& first() override { return *m_first; }
    Font& choose(std::span<const char32_t> cluster) override
    {
        if (cluster.empty() || hasAll(*m_first, cluster))
            return *m_first;
        const std::u32string key(cluster.begin(), cluster.end());
        const auto [at, isNew] = m_known.try_emplace(key, nullptr);
        if (isNew)
            at->second = search(cluster);
        return *at->second;
    }

    const char* language() const override { return std::get<3>(m_wish).getString(); }

private:
    static bool hasAll(const Font& font, std::span<const char32_t> cluster)
    {
        return std::all_of(cluster.begin(), cluster.end(), [&](char32_t c) {
            return font.has(c) || (continuesCluster(c) && !isMark(c));
        });
    }
    static bool isMark(char32_t c)
    {
        const auto category = hb_unicode_general_category(hb_unicode_funcs_get_default(), c);
        return category == HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK
               || category == HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK
               || category == HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK;
    }

    /// Looks through the fonts of the system from the nearest on, and opens only those that say
    /// that they have the character.
    Font* search(std::span<const char32_t> cluster)
    {
        if (!m_isSorted) {
            m_isSorted = true;
            FcResult result = FcResultNoMatch;
            m_sorted =
                FcFontSort(nullptr, patternOf(m_wish, language()).get(), FcTrue, nullptr, &result);
        }
        Font* withoutMarks = m_first->has(cluster[0]) ? m_first : nullptr;
        for (int i = 0; m_sorted && i < m_sorted->nfont; ++i) {
            FcCharSet* characters = nullptr;
            if (FcPatternGetCharSet(m_sorted->fonts[i], FC_CHARSET, 0, &characters) != FcResultMatch
                || !FcCharSetHasChar(characters, cluster[0]))
                continue;
            Font* font = openFont(fonts(), fileOf(m_sorted->fonts[i]));
            if (!font || !font->has(cluster[0]))
                continue;
            if (hasAll(*font, cluster))
                return font;
            if (!withoutMarks)
                withoutMarks = font;
        }
        // The sign that a font itself has for what it lacks may well be blank.
        return withoutMarks ? withoutMarks : &fonts().boxes;
    }

    Wish m_wish;
    Font* m_first;
    bool m_isSorted = false;
    FcFontSet* m_sorted = nullptr; ///< kept
    std::map<std::u32string, Font*> m_known;
};

Fonts& fonts()
{
    static auto* f = new Fonts; // never freed: shapes may outlive statics
    return *f;
}

} // namespace

FontLock::FontLock()
{
    fonts().mutex.lock();
}

FontLock::~FontLock()
{
    fonts().mutex.unlock();
}

FontChoice& FontChoice::find(const SoFontValues& wish)
{
    const Wish key(wish.name, wish.family, wish.style, wish.language);
    std::unique_ptr<SystemChoice>& choice = fonts().byWish[key];
    if (!choice)
        choice = std::make_unique<SystemChoice>(key);
    return *choice;
}

bool continuesCluster(char32_t character)
{
    switch (hb_unicode_general_category(hb_unicode_funcs_get_default(), character)) {
    case HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK:
        return true;
    case HB_UNICODE_GENERAL_CATEGORY_FORMAT:
        return character == 0x200c || character == 0x200d;
    default:
        return false;
    }
}

std::vector<char32_t> charactersOf(std::string_view text)
{
    std::vector<char32_t> characters;
    characters.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t more = lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : lead >= 0xc2 ? 1 : 0;
        char32_t value = more == 3 ? lead & 7U : more == 2 ? lead & 15U : lead & 31U;
        std::size_t k = 1;
        for (; k <= more && i + k < text.size(); ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xc0U) != 0x80)
                break;
            value = (value << 6) | (next & 0x3fU);
        }
        const bool whole = more > 0 && k == more + 1 && value <= 0x10ffff;
        characters.push_back(whole ? value : lead);
        i += whole ? more : 0;
    }
    return characters;
}

} // namespace kalmyr::detail
