#include "Glyphs.h"

#include "GlyphTessellator.h"

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

/// Stands in where the system has no font.
class BoxFont final : public Font {
public:
    BoxFont()
    {
        m_box.advance = m_blank.advance = kAdvance;
        m_box.points = {{0.05f, 0}, {0.5f, 0}, {0.5f, 0.7f}, {0.05f, 0.7f}};
        m_box.triangles = {0, 1, 2, 0, 2, 3};
    }
    const Glyph& glyph(char32_t character) override { return character == ' ' ? m_blank : m_box; }
    float ascent() const override { return 0.8f; }
    float descent() const override { return 0.2f; }

private:
    static constexpr float kAdvance = 0.55f;
    Glyph m_box, m_blank;
};

/// An outline font in a file.
class FileFont final : public Font {
public:
    explicit FileFont(FT_Face face) : m_face(face), m_scale(1.0f / face->units_per_EM) {}
    const Glyph& glyph(char32_t character) override
    {
        const auto [at, isNew] = m_glyphs.try_emplace(character);
        if (isNew)
            load(character, at->second);
        return at->second;
    }
    float ascent() const override { return static_cast<float>(m_face->ascender) * m_scale; }
    float descent() const override { return static_cast<float>(-m_face->descender) * m_scale; }

private:
    void load(char32_t character, Glyph& glyph)
    {
        const FT_UInt index = FT_Get_Char_Index(m_face, character);
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

    FT_Face m_face; // Lives as long as the process.
    float m_scale;
    std::unordered_map<char32_t, Glyph> m_glyphs;
};

using Wish = std::tuple<SbName, int, int>;

struct Fonts {
    std::recursive_mutex mutex;
    FT_Library library = nullptr;
    std::map<Wish, Font*> byWish;
    std::map<std::pair<std::string, int>, std::unique_ptr<Font>> byFile;
    BoxFont boxes;
};

Fonts& fonts()
{
    static auto* f = new Fonts; // never freed: shapes may outlive statics
    return *f;
}

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

/// The file that the system offers for the wish, and the number of the face in it.
std::pair<std::string, int> findFile(const Wish& wish)
{
    const auto& [name, family, style] = wish;
    using Pattern = std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)>;
    const Pattern pattern(FcPatternCreate(), FcPatternDestroy);
    if (!name.isEmpty())
        add(pattern.get(), FC_FAMILY, name.getString());
    add(pattern.get(), FC_FAMILY, familyName(family));
    FcPatternAddInteger(pattern.get(), FC_WEIGHT,
                        style & SoFontValues::BOLD ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
    FcPatternAddInteger(pattern.get(), FC_SLANT,
                        style & SoFontValues::ITALIC ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    FcResult result = FcResultNoMatch;
    const Pattern found(FcFontMatch(nullptr, pattern.get(), &result), FcPatternDestroy);
    FcChar8* file = nullptr;
    int index = 0;
    if (!found || FcPatternGetString(found.get(), FC_FILE, 0, &file) != FcResultMatch)
        return {};
    FcPatternGetInteger(found.get(), FC_INDEX, 0, &index);
    // The upper half names an instance of a variable font.
    return {reinterpret_cast<const char*>(file), index & 0xffff};
}

Font& openFont(Fonts& all, const Wish& wish)
{
    const std::pair<std::string, int> file = findFile(wish);
    std::unique_ptr<Font>& known = all.byFile[file];
    FT_Face face = nullptr;
    const bool ready = all.library || FT_Init_FreeType(&all.library) == 0;
    if (!known && ready && !file.first.empty()
        && FT_New_Face(all.library, file.first.c_str(), file.second, &face) == 0) {
        if (FT_IS_SCALABLE(face) && face->units_per_EM > 0)
            known = std::make_unique<FileFont>(face);
        else
            FT_Done_Face(face);
    }
    return known ? *known : all.boxes;
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

Font& Font::find(const SoFontValues& wish)
{
    Fonts& all = fonts();
    const Wish key(wish.name, wish.family, wish.style);
    Font*& font = all.byWish[key];
    if (!font)
        font = &openFont(all, key);
    return *font;
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
