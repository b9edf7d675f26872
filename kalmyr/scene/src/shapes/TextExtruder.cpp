#include "TextExtruder.h"

#include "Glyphs.h"

#include <kalmyr/shapes/FaceBuilder.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>

namespace kalmyr::detail {

namespace {

/// Curves are smooth and corners sharp, with the steps that glyphs cut their curves into (radians).
constexpr float kCreaseAngle = 0.6f;

struct Edge {
    std::uint32_t from, to;
    bool isFirst; ///< of a closed line
};
using Edges = std::vector<Edge>;

/// The border of a glyph as closed lines with the letter on their left. It is taken from the
/// triangles: the contours of fonts may overlap.
Edges borderOf(const Glyph& glyph)
{
    // Points at one place count as one.
    std::map<std::pair<float, float>, std::uint32_t> places;
    std::vector<std::uint32_t> same(glyph.points.size());
    for (std::uint32_t i = 0; i < same.size(); ++i)
        same[i] = places.try_emplace({glyph.points[i][0], glyph.points[i][1]}, i).first->second;
    std::set<std::pair<std::uint32_t, std::uint32_t>> open;
    for (std::size_t i = 0; i < glyph.triangles.size(); ++i) {
        const std::size_t next = i % 3 == 2 ? i - 2 : i + 1;
        const std::uint32_t from = same[glyph.triangles[i]], to = same[glyph.triangles[next]];
        if (from != to && open.erase({to, from}) == 0)
            open.insert({from, to});
    }
    Edges edges;
    while (!open.empty()) {
        auto at = open.begin();
        for (bool isFirst = true; at != open.end(); isFirst = false) {
            const auto [from, to] = *at;
            edges.push_back({from, to, isFirst});
            open.erase(at);
            at = open.lower_bound({to, 0});
            if (at != open.end() && at->first != to)
                break;
        }
    }
    return edges;
}

/// Collects the faces of all letters for the face builder.
class Letters {
public:
    Letters(const TextExtruder& extruder, float size) : m_extruder(extruder), m_size(size) {}

    void add(const PlacedGlyph& placed);
    void write(SoGeometry& geometry) const;

private:
    struct Corner {
        std::uint32_t index;
        SbVec2f texCoord;
    };
    void addFace(std::initializer_list<Corner> corners, TextExtruder::Part part);
    void addLids(const Glyph& glyph);
    void addSides(const Glyph& glyph);
    /// Corner of the front or back; the texture of the back is as seen from behind.
    Corner corner(std::uint32_t point, bool back) const;
    bool has(TextExtruder::Part part) const { return m_extruder.shown[part]; }

    const TextExtruder& m_extruder; // Not owned.
    float m_size;
    std::unordered_map<const Glyph*, Edges> m_borders;
    std::vector<SbVec3f> m_positions;
    std::vector<std::int32_t> m_faces;
    std::vector<SbVec2f> m_texCoords;
    std::vector<std::uint32_t> m_colors;
    std::vector<std::int32_t> m_lines; ///< of each face
    std::uint32_t m_front = 0;         ///< first point of the present letter's front
    std::uint32_t m_back = 0;
    int m_line = 0;
};

Letters::Corner Letters::corner(std::uint32_t point, bool back) const
{
    const std::uint32_t index = (back ? m_back : m_front) + point;
    const SbVec3f& p = m_positions[index];
    return {index, SbVec2f(back ? -p[0] : p[0], p[1]) / m_size};
}

void Letters::addFace(std::initializer_list<Corner> corners, TextExtruder::Part part)
{
    for (const Corner& c : corners) {
        m_faces.push_back(static_cast<std::int32_t>(c.index));
        m_texCoords.push_back(c.texCoord);
    }
    m_faces.push_back(-1);
    m_colors.push_back(m_extruder.colors[part]);
    m_lines.push_back(m_line);
}

void Letters::addLids(const Glyph& glyph)
{
    for (std::size_t i = 0; i + 2 < glyph.triangles.size(); i += 3) {
        const std::uint32_t* t = &glyph.triangles[i];
        if (has(TextExtruder::FRONT))
            addFace({corner(t[0], false), corner(t[1], false), corner(t[2], false)},
                    TextExtruder::FRONT);
        if (has(TextExtruder::BACK))
            addFace({corner(t[0], true), corner(t[2], true), corner(t[1], true)},
                    TextExtruder::BACK);
    }
}

void Letters::addSides(const Glyph& glyph)
{
    const auto [at, isNew] = m_borders.try_emplace(&glyph);
    if (isNew)
        at->second = borderOf(glyph);
    const float deep = m_extruder.depth / m_size;
    float passed = 0;
    for (const Edge& edge : at->second) {
        if (edge.isFirst)
            passed = 0;
        const float length =
            (m_positions[m_front + edge.to] - m_positions[m_front + edge.from]).length() / m_size;
        const float next = passed + length;
        addFace({{m_back + edge.from, {passed, 0}},
                 {m_back + edge.to, {next, 0}},
                 {m_front + edge.to, {next, deep}},
                 {m_front + edge.from, {passed, deep}}},
                TextExtruder::SIDES);
        passed = next;
    }
}

void Letters::add(const PlacedGlyph& placed)
{
    const std::vector<SbVec2f>& points = placed.glyph.points;
    m_line = placed.line;
    m_front = static_cast<std::uint32_t>(m_positions.size());
    m_back = m_front + static_cast<std::uint32_t>(points.size());
    for (const float z : {0.0f, -m_extruder.depth}) {
        for (const SbVec2f& p : points) {
            const SbVec2f at = placed.at(p);
            m_positions.emplace_back(at[0], at[1], z);
        }
    }
    addLids(placed.glyph);
    if (has(TextExtruder::SIDES) && m_extruder.depth > 0)
        addSides(placed.glyph);
}

void Letters::write(SoGeometry& geometry) const
{
    FaceInput input;
    input.positions = m_positions;
    input.coordIndex = m_faces;
    input.texCoords.values = m_texCoords;
    input.texCoords.binding = SoBinding::PER_VERTEX;
    input.creaseAngle = kCreaseAngle;
    input.solid = has(TextExtruder::FRONT) && has(TextExtruder::SIDES) && has(TextExtruder::BACK)
                  && m_extruder.depth > 0;
    if (m_extruder.hasColors) {
        input.colors.values = m_colors;
        input.colors.binding = SoBinding::PER_FACE;
    }
    FaceBuilder(input).build(geometry);
    if (geometry.triangleFaces.empty()) { // one triangle a face
        geometry.triangleFaces = m_lines;
        return;
    }
    for (std::int32_t& face : geometry.triangleFaces)
        face = m_lines[static_cast<std::size_t>(face)];
}

} // namespace

void TextExtruder::build(const TextLayout& text, SoGeometry& geometry) const
{
    Letters letters(*this, text.font.size);
    text.place([&](const PlacedGlyph& placed) { letters.add(placed); });
    letters.write(geometry);
}

} // namespace kalmyr::detail
